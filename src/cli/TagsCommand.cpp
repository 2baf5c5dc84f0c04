#include "cli/TagsCommand.h"

#include "audio/AudioEdits.h"
#include "audio/AudioRecord.h"
#include "cli/CliOutput.h"
#include "cli/CliValues.h"
#include "model/ItemPictureImage.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonObject>

namespace pelorin::cli {
namespace {

struct Option {
    const char* name;
    AudioField field;
};

const Option kOptions[] = {
    {"--title", AudioField::Title}, {"--subtitle", AudioField::Subtitle},
    {"--album", AudioField::Album}, {"--artist", AudioField::Artist},
    {"--track", AudioField::TrackNumber}, {"--composer", AudioField::Composer},
    {"--record-date", AudioField::RecordDate}, {"--year", AudioField::Year},
    {"--copyright", AudioField::Copyright}, {"--publisher", AudioField::Publisher},
    {"--band", AudioField::Band}, {"--comments", AudioField::Comments},
    {"--lyrics", AudioField::Lyrics},
};

QString recordText(const IKImageItem& r, AudioField field)
{
    switch (field) {
    case AudioField::Title: return r.fileTitle;
    case AudioField::Subtitle: return r.fileSubTitle;
    case AudioField::Album: return r.fileAblumName;
    case AudioField::Artist: return r.fileArist;
    case AudioField::TrackNumber: return r.fileAlbumArist;
    case AudioField::Composer: return r.fileComposer;
    case AudioField::RecordDate: return r.shootDateStr;
    case AudioField::Year: return r.fileReleasedYear;
    case AudioField::Copyright: return r.fileCopyright;
    case AudioField::Publisher: return r.filePublisher;
    case AudioField::Band: return r.fileBand;
    case AudioField::Comments: return r.fileComments;
    case AudioField::Lyrics: return r.fileLyricist;
    }
    return {};
}

// Free-text fields take any text; numbers and dates are checked before any file is written.
QString checkFieldValue(AudioField field, const QString& option, const QString& text)
{
    switch (field) {
    case AudioField::TrackNumber: return checkOptionValue(ValueKind::TrackNumber, option, text);
    case AudioField::Year: return checkOptionValue(ValueKind::Year, option, text);
    case AudioField::RecordDate:
        // A recording date is a date and time, a day or only a year.
        if (checkOptionValue(ValueKind::Year, option, text).isEmpty()
            || checkOptionValue(ValueKind::Date, option, text).isEmpty())
            return {};
        return checkOptionValue(ValueKind::DateTime, option, text);
    default: return {};
    }
}

QString itemText(const MediaMetadataItem& item)
{
    if (item.value.typeId() == QMetaType::QByteArray)
        return QStringLiteral("<%1 bytes %2>").arg(item.value.toByteArray().size()).arg(item.dataType);
    return item.value.toString();
}

// True when the song's artwork starts as a picture a reader knows (it is not decoded whole).
bool holdsPicture(const AudioReading& reading, const QString& file)
{
    QByteArray bytes = audioArtworkBytes(reading.items, audioReaderRoute(QFileInfo(file).suffix()));
    QBuffer buffer(&bytes);
    return !bytes.isEmpty() && buffer.open(QIODevice::ReadOnly) && QImageReader(&buffer).canRead();
}

}  // namespace

QString TagsCommand::summary() const
{
    return QStringLiteral("show, set or remove the tags of audio files");
}

QString TagsCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli tags show FILE...\n"
        "       pelorin-cli tags set [FIELD TEXT]... [--created-date DATE] [--artwork IMG] FILE...\n"
        "       pelorin-cli tags remove FILE...\n"
        "\n"
        "show    prints each file's record fields, its audio properties and every tag item\n"
        "        with its identifier (id3/TIT2, itsk/%A9nam, caaf/info-title, title, ...).\n"
        "set     writes a copy of each file into the output folder, in its own container, with\n"
        "        exactly the given fields changed; an empty TEXT removes the field. Every other\n"
        "        frame, atom, chunk and picture is kept. FIELD is one of --title --subtitle\n"
        "        --album --artist --track --composer --record-date --year --copyright\n"
        "        --publisher --band --comments --lyrics. --track takes N or N/TOTAL (1 to 65535);\n"
        "        a bare N keeps the total the file stores. --year takes YYYY or YYYY-MM-DD.\n"
        "        A value that is out of range is an error and nothing is written.\n"
        "        --created-date gives the copy that\n"
        "        date (yyyy:MM:dd HH:mm:ss or yyyy-MM-dd HH:mm:ss); --artwork sets the front\n"
        "        cover picture.\n"
        "remove  writes a copy of each file without any tag or picture; the audio is unchanged.");
}

int TagsCommand::run(CliInvocation& invocation)
{
    if (invocation.args.isEmpty())
        return usageError(invocation, name(), QStringLiteral("say show, set or remove"));
    const QString action = invocation.args.first();
    const QStringList rest = invocation.args.mid(1);
    if (action == QLatin1String("set"))
        return set(invocation, rest);
    if (rest.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));
    if (action == QLatin1String("show"))
        return show(invocation, rest);
    if (action == QLatin1String("remove"))
        return remove(invocation, rest);
    return usageError(invocation, name(), QStringLiteral("unknown action '%1'").arg(action));
}

int TagsCommand::show(CliInvocation& invocation, const QStringList& files)
{
    QJsonArray rows;
    bool failed = false;
    for (const QString& file : files) {
        QString problem;
        AudioReading reading;
        const IKImageItem record = readAudioRecord(file, &problem, &reading, RecordPicture::Skipped);
        failed = failed || !problem.isEmpty();
        QJsonObject fields;
        for (const AudioField field : allAudioFields())
            if (const QString text = recordText(record, field); !text.isEmpty())
                fields.insert(audioFieldName(field), text);
        QJsonArray items;
        for (const MediaMetadataItem& item : reading.items)
            items.append(QJsonObject{{QStringLiteral("identifier"), item.identifier},
                                     {QStringLiteral("value"), itemText(item)}});
        if (invocation.json) {
            QJsonObject row{{QStringLiteral("file"), file},
                            {QStringLiteral("container"), audioContainerName(reading.container)},
                            {QStringLiteral("fields"), fields},
                            {QStringLiteral("attributes"), QJsonObject::fromVariantMap(reading.indexAttributes)},
                            {QStringLiteral("hasArtwork"), holdsPicture(reading, file)},
                            {QStringLiteral("items"), items}};
            if (!problem.isEmpty())
                row.insert(QStringLiteral("problem"), problem);
            rows.append(row);
            continue;
        }
        printLine(invocation.out, QStringLiteral("%1 (%2)").arg(file, audioContainerName(reading.container)));
        if (!problem.isEmpty())
            printLine(invocation.err, QStringLiteral("%1: %2").arg(file, problem));
        for (auto it = fields.begin(); it != fields.end(); ++it)
            printLine(invocation.out, QStringLiteral("  %1: %2").arg(it.key(), it.value().toString()));
        for (auto it = reading.indexAttributes.begin(); it != reading.indexAttributes.end(); ++it)
            printLine(invocation.out, QStringLiteral("  %1: %2").arg(it.key(), it.value().toString()));
        if (!record.fileImage.isNull())
            printLine(invocation.out, QStringLiteral("  artwork: %1x%2").arg(record.fileImage.image()->width())
                                          .arg(record.fileImage.image()->height()));
        for (const MediaMetadataItem& item : reading.items)
            printLine(invocation.out, QStringLiteral("  [%1] %2").arg(item.identifier, itemText(item)));
    }
    if (invocation.json)
        printJson(invocation.out, rows);
    return failed ? ExitItemFailed : ExitSuccess;
}

int TagsCommand::set(CliInvocation& invocation, const QStringList& args)
{
    QMap<AudioField, QString> values;
    QString createdDate;
    bool createdGiven = false;
    QByteArray artwork;
    QStringList files;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& arg = args[i];
        if (!arg.startsWith(QLatin1String("--"))) {
            files << arg;
            continue;
        }
        if (i + 1 >= args.size())
            return usageError(invocation, name(), QStringLiteral("%1 needs a value").arg(arg));
        const QString value = args[++i];
        const auto option = std::find_if(std::begin(kOptions), std::end(kOptions),
                                         [&](const Option& o) { return arg == QLatin1String(o.name); });
        if (option != std::end(kOptions)) {
            if (const QString error = checkFieldValue(option->field, arg, value); !error.isEmpty())
                return usageError(invocation, name(), error);
            values.insert(option->field, value);
        } else if (arg == QLatin1String("--created-date")) {
            if (const QString error = checkOptionValue(ValueKind::DateTime, arg, value); !error.isEmpty())
                return usageError(invocation, name(), error);
            createdDate = value;
            createdGiven = true;
        } else if (arg == QLatin1String("--artwork")) {
            QFile image(value);
            if (!image.open(QIODevice::ReadOnly))
                return usageError(invocation, name(), QStringLiteral("cannot read %1").arg(value));
            artwork = image.readAll();
        } else {
            return usageError(invocation, name(), QStringLiteral("unknown option %1").arg(arg));
        }
    }
    if (files.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));
    QList<AudioEdit> edits;
    for (const QString& file : files) {
        const IKImageItem record = readAudioRecord(file, nullptr, nullptr, RecordPicture::Skipped);
        AudioEdit edit;
        edit.sourcePath = file;
        for (auto it = values.begin(); it != values.end(); ++it) {
            edit.opening.insert(it.key(), recordText(record, it.key()));
            edit.current.insert(it.key(), it.value());
            (isFirstGroupField(it.key()) ? edit.basicInfoChange : edit.cameraInfoChange) = true;
        }
        edit.artwork = artwork;
        edit.openingCreatedDate = record.fileCreateDateStr;
        edit.createdDate = createdGiven ? createdDate : record.fileCreateDateStr;
        edits.append(edit);
    }
    CliReporter reporter(invocation);
    return reporter.report(saveAudioEdits(edits, reporter.context()));
}

int TagsCommand::remove(CliInvocation& invocation, const QStringList& files)
{
    CliReporter reporter(invocation);
    return reporter.report(removeAudioTags(files, reporter.context()));
}

}  // namespace pelorin::cli

#include "cli/TagsCommand.h"

#include "audio/AudioTagChanges.h"
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

// Free-text fields take any text; numbers and dates are checked before any file is written.
QString checkFieldValue(AudioValue kind, const QString& option, const QString& text)
{
    switch (kind) {
    case AudioValue::TrackNumber: return checkOptionValue(ValueKind::TrackNumber, option, text);
    case AudioValue::Year: return checkOptionValue(ValueKind::Year, option, text);
    case AudioValue::RecordDate:
        // A recording date is a date and time, a day or only a year.
        if (checkOptionValue(ValueKind::Year, option, text).isEmpty()
            || checkOptionValue(ValueKind::Date, option, text).isEmpty())
            return {};
        return checkOptionValue(ValueKind::DateTime, option, text);
    case AudioValue::Text: return {};
    }
    return {};
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

// The field options, wrapped under the help's indent.
QString fieldOptions()
{
    QString text;
    qsizetype line = 8;
    for (const AudioFieldRow& row : audioFieldRows()) {
        const QString option = QString::fromLatin1(row.option);
        if (line + option.size() + 1 > 88) {
            text.chop(1);
            text += QStringLiteral("\n        ");
            line = 8;
        }
        text += option + QLatin1Char(' ');
        line += option.size() + 1;
    }
    return text.trimmed();
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
        "        with its identifier (id3/..., itsk/..., caaf/info-..., or the plain field name).\n"
        "set     writes a copy of each file into the output folder, in its own container, with\n"
        "        exactly the given fields changed; an empty TEXT removes the field. Every other\n"
        "        frame, atom, chunk and picture is kept. FIELD is one of\n"
        "        %1.\n"
        "        --track takes N or N/TOTAL (1 to 65535); a bare N keeps the total the file\n"
        "        stores. --year takes YYYY or YYYY-MM-DD. A value that is out of range is an\n"
        "        error and nothing is written. --created-date gives the copy that date\n"
        "        (yyyy:MM:dd HH:mm:ss or yyyy-MM-dd HH:mm:ss); --artwork sets the front cover.\n"
        "remove  writes a copy of each file without any tag or picture; the audio is unchanged.\n"
        "Ctrl-C stops a batch after the file in hand and reports the files done.")
        .arg(fieldOptions());
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
        for (const AudioFieldRow& row : audioFieldRows())
            if (const QString text = record.*row.member; !text.isEmpty())
                fields.insert(QString::fromLatin1(row.name), text);
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
    AudioTagChanges changes;
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
        if (const std::optional<AudioField> field = audioFieldOfOption(arg)) {
            if (const QString error = checkFieldValue(audioFieldRow(*field).value, arg, value); !error.isEmpty())
                return usageError(invocation, name(), error);
            changes.fields.insert(*field, value);
        } else if (arg == QLatin1String("--created-date")) {
            if (const QString error = checkOptionValue(ValueKind::DateTime, arg, value); !error.isEmpty())
                return usageError(invocation, name(), error);
            changes.createdDate = value;
        } else if (arg == QLatin1String("--artwork")) {
            if (!QFileInfo(value).isFile() || !QFileInfo(value).isReadable())
                return usageError(invocation, name(), QStringLiteral("cannot read %1").arg(value));
            changes.artworkPath = value;
        } else {
            return usageError(invocation, name(), QStringLiteral("unknown option %1").arg(arg));
        }
    }
    if (files.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));
    CliReporter reporter(invocation);
    return reporter.report(saveAudioTags(files, changes, reporter.context()));
}

int TagsCommand::remove(CliInvocation& invocation, const QStringList& files)
{
    CliReporter reporter(invocation);
    return reporter.report(removeAudioTags(files, reporter.context()));
}

}  // namespace pelorin::cli

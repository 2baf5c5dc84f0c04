#include "cli/VideoCommand.h"

#include "cli/CliOutput.h"
#include "cli/CliValues.h"
#include "model/ItemPictureImage.h"
#include "video/MovieDateCommands.h"
#include "video/MovieReader.h"
#include "video/MovieRemoval.h"
#include "video/MovieFields.h"
#include "video/MovieSave.h"

#include <QJsonArray>
#include <QJsonObject>

namespace pelorin::cli {
namespace {

QString valueText(const QVariant& value)
{
    if (value.typeId() == QMetaType::QByteArray)
        return QStringLiteral("<%1 bytes>").arg(value.toByteArray().size());
    return value.toString();
}

// The record's descriptive fields that a movie can fill, in display order.
QList<std::pair<QString, QString>> recordFields(const IKImageItem& item)
{
    QList<std::pair<QString, QString>> fields = {
        {"fileType", item.fileType},
        {"fileSize", item.fileSize},
        {"fileduratStr", item.fileduratStr},
        {"filePixWidth", item.filePixWidth ? QString::number(item.filePixWidth) : QString()},
        {"filepixHeigh", item.filepixHeigh ? QString::number(item.filepixHeigh) : QString()},
        {"fileBitRate", item.fileBitRate},
        {"fileSampleRate", item.fileSampleRate},
        {"fileChannels", item.fileChannels},
        {"fileTitle", item.fileTitle},
        {"fileArist", item.fileArist},
        {"fileAblumName", item.fileAblumName},
        {"fileMake", item.fileMake},
        {"fileModel", item.fileModel},
        {"filePublisher", item.filePublisher},
        {"fileCopyright", item.fileCopyright},
        {"fileKeyWords", item.fileKeyWords},
        {"fileDescription", item.fileDescription},
        {"fileDirector", item.fileDirector},
        {"fileActor", item.fileActor},
        {"fileproducer", item.fileproducer},
        {"fileComposer", item.fileComposer},
        {"fileReleasedYear", item.fileReleasedYear},
        {"shootDateStr", item.shootDateStr},
        {"fileCreateDateStr", item.fileCreateDateStr},
    };
    if (!item.latitudeFormat.isEmpty()) {
        fields.append({"latitude", item.latitudeFormat + QString::number(item.filelatitude)});
        fields.append({"longitude", item.longtitudeFormat + QString::number(item.filelongtitude)});
        fields.append({"altitude", item.AtitudeFormat + QString::number(item.fileAtitude)});
    }
    if (!item.fileImage.isNull())
        fields.append({"fileImage", QStringLiteral("%1x%2").arg(item.fileImage.image()->width()).arg(item.fileImage.image()->height())});
    fields.removeIf([](const auto& field) { return field.second.isEmpty(); });
    return fields;
}

int show(CliInvocation& invocation, const QStringList& files)
{
    QJsonArray rows;
    int status = ExitSuccess;
    for (const QString& file : files) {
        const MovieReading reading = readMovieFile(file);
        if (!reading.containerRead)
            status = ExitItemFailed;
        const auto fields = recordFields(reading.item);
        if (invocation.json) {
            QJsonArray items;
            for (const MediaMetadataItem& entry : reading.item.fileMetaArray) {
                items.append(QJsonObject{{"identifier", entry.identifier},
                                         {"keySpace", entry.keySpace},
                                         {"key", entry.key},
                                         {"dataType", entry.dataType},
                                         {"language", entry.extendedLanguageTag},
                                         {"value", valueText(entry.value)}});
            }
            QJsonObject fieldObject;
            for (const auto& [key, value] : fields)
                fieldObject.insert(key, value);
            rows.append(QJsonObject{{"file", file},
                                    {"read", reading.containerRead},
                                    {"items", items},
                                    {"fields", fieldObject},
                                    {"problems", QJsonArray::fromStringList(reading.problems)}});
            continue;
        }
        printLine(invocation.out, file);
        for (const MediaMetadataItem& entry : reading.item.fileMetaArray)
            printLine(invocation.out, QStringLiteral("  %1\t%2\t%3").arg(entry.identifier, entry.dataType, valueText(entry.value)));
        for (const auto& [key, value] : fields)
            printLine(invocation.out, QStringLiteral("  %1: %2").arg(key, value));
        for (const QString& problem : reading.problems)
            printLine(invocation.out, QStringLiteral("  problem: %1").arg(problem));
    }
    if (invocation.json)
        printJson(invocation.out, rows);
    return status;
}

// The field and input an option of `video set` gives a value to.
std::optional<std::pair<MovieField, int>> inputOfOption(const QString& option)
{
    for (const MovieFieldRow& row : movieFieldTable()) {
        for (qsizetype i = 0; i < row.inputs.size(); ++i) {
            if (option == QLatin1String(row.inputs[i].option))
                return std::pair(row.field, int(i));
        }
    }
    return std::nullopt;
}

// The check a value gets before any file is read; the recording date's is the save's own.
std::optional<ValueKind> valueKindOf(MovieField field, int input)
{
    if (field == MovieField::CreatedDate)
        return ValueKind::DateTime;
    if (field != MovieField::Location)
        return std::nullopt;
    return input == 0 ? ValueKind::Latitude : input == 1 ? ValueKind::Longitude : ValueKind::Altitude;
}

// "video set --title X ... FILE...": the options name the editor's fields.
int set(CliInvocation& invocation, const QString& command, const QStringList& args)
{
    MovieChanges changes;
    QStringList files;
    for (qsizetype i = 0; i < args.size(); ++i) {
        if (!args[i].startsWith(QLatin1String("--"))) {
            files.append(args[i]);
            continue;
        }
        const QString option = args[i];
        const std::optional<std::pair<MovieField, int>> input = inputOfOption(option);
        if (!input)
            return usageError(invocation, command, QStringLiteral("unknown option '%1'").arg(option));
        if (i + 1 >= args.size())
            return usageError(invocation, command, QStringLiteral("'%1' needs a value").arg(option));
        const QString value = args[++i];
        if (const std::optional<ValueKind> kind = valueKindOf(input->first, input->second)) {
            if (const QString error = checkOptionValue(*kind, option, value); !error.isEmpty())
                return usageError(invocation, command, error);
        }
        changes.take(input->first, input->second, value);
    }
    if (changes.isEmpty())
        return usageError(invocation, command, QStringLiteral("give at least one field to set"));
    if (files.isEmpty())
        return usageError(invocation, command, QStringLiteral("give at least one file"));
    CliReporter reporter(invocation);
    return reporter.report(saveMovieFields(files, changes, reporter.context()));
}

// One line per option of `video set`, from the field table.
QString setOptionLines()
{
    QString lines;
    for (const MovieFieldRow& row : movieFieldTable()) {
        for (const MovieFieldInput& input : row.inputs) {
            const QString what = isMovieTextField(row.field)
                                     ? QStringLiteral("the %1; new as %2").arg(QLatin1String(row.name), row.newIdentifier)
                                 : input.label ? QString::fromLatin1(input.label).toLower()
                                               : QString::fromLatin1(row.name);
            const QString usage = QStringLiteral("%1 %2").arg(QLatin1String(input.option), QLatin1String(input.valueName));
            lines += QStringLiteral("  %1 %2\n").arg(usage, -24).arg(what);
        }
    }
    return lines;
}

}  // namespace

QString VideoCommand::summary() const
{
    return QStringLiteral("show, set or remove the metadata of movies, or date them from their names");
}

QString VideoCommand::help() const
{
    return QStringLiteral(
               "Usage: pelorin-cli video show FILE...\n"
               "       pelorin-cli video set OPTION VALUE... FILE...\n"
               "       pelorin-cli video remove FILE...\n"
               "       pelorin-cli video date-from-name FILE...\n"
               "       pelorin-cli video date-to-file FILE...\n"
               "       pelorin-cli video created-to-date FILE...\n"
               "\n"
               "set writes a copy of each movie under its own name into the output folder with the\n"
               "given fields and every other item, box and media byte kept; the copy keeps the movie's\n"
               "container and file dates. A text goes into every form the movie already holds the\n"
               "field in (iTunes atom, QuickTime key, user data, 3GPP box), else under the identifier\n"
               "named below; an empty text removes the field. Matroska and WebM take the text fields\n"
               "as tags. Movies that cannot be rewritten (fragmented files, damaged boxes, containers\n"
               "outside the MP4 family) are skipped with the reason. --dry-run prints the planned\n"
               "changes.\n"
               "\n")
           + setOptionLines()
           + QStringLiteral(
               "\n"
               "--shoot-date (yyyy:MM:dd HH:mm:ss or yyyy-MM-dd HH:mm:ss, local time) goes into the ISO\n"
               "date, the QuickTime creation date and the movie and track headers; --lat/--lon/--alt\n"
               "into the 3GPP location, the QuickTime ISO 6709 key and the user-data location;\n"
               "--created-date sets the copy's file dates; --artwork stores a picture as cover art.\n"
               "\n"
               "remove writes such a copy without titles, people, texts, dates, artwork and every\n"
               "location item; encoder, camera make and model, software and the streams stay.\n"
               "\n"
               "date-from-name reads a date from each movie's file name (VID_20160501_123045,\n"
               "PXL_20210101_123456789, 2016-05-01 12.30.45, ...) and writes it, as local time, as the\n"
               "copy's recording date (ISO date, QuickTime creation date, movie and track headers)\n"
               "and file dates. Names without a date are skipped.\n"
               "\n"
               "date-to-file copies each movie unchanged and gives the copy its recording date as file\n"
               "dates. created-to-date writes each file's creation date as the copy's recording date.\n"
               "\n"
               "show prints, for each movie, its metadata items (identifier, data type, value;\n"
               "pictures as their size), the record fields they fill, and every problem met while\n"
               "reading.\n"
               "MP4, MOV, M4V, 3GP and 3G2 are read box by box; other containers through FFmpeg.\n"
               "Exits with 1 when some file's metadata could not be read.");
}

int VideoCommand::run(CliInvocation& invocation)
{
    if (invocation.args.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give a subcommand: show, set, remove, date-from-name, date-to-file or created-to-date"));
    const QString sub = invocation.args.first();
    const QStringList files = invocation.args.mid(1);
    using FileCommand = CommandResult (*)(const QStringList&, const CommandContext&);
    const std::pair<const char*, FileCommand> fileCommands[] = {
        {"remove", &removeMovieMetadata},
        {"date-from-name", &movieDatesFromFileNames},
        {"date-to-file", &movieShootDatesToFileDates},
        {"created-to-date", &movieCreationDatesToRecordingDates},
    };
    for (const auto& [word, command] : fileCommands) {
        if (sub != QLatin1String(word))
            continue;
        if (files.isEmpty())
            return usageError(invocation, name(), QStringLiteral("give at least one file"));
        CliReporter reporter(invocation);
        return reporter.report(command(files, reporter.context()));
    }
    if (sub == QLatin1String("set"))
        return set(invocation, name() + QStringLiteral(" set"), files);
    if (sub != QLatin1String("show"))
        return usageError(invocation, name(), QStringLiteral("unknown subcommand '%1'").arg(sub));
    if (files.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));
    return show(invocation, files);
}

}  // namespace pelorin::cli

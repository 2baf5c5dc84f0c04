#include "cli/ApplyCommand.h"

#include "cli/CliOutput.h"
#include "cli/CliValues.h"
#include "model/PhotoBatch.h"
#include "dates/EditorApply.h"
#include "model/SafeOutput.h"
#include "photo/PhotoInspection.h"


#include <optional>

namespace pelorin::cli {
namespace {

struct FieldOption {
    const char* name;
    QString PhotoEditorTexts::*field;
    const char* help;
    std::optional<ValueKind> kind = std::nullopt;  // free text when unset
};

const FieldOption kFieldOptions[] = {
    {"title", &PhotoEditorTexts::title, "title (IPTC object name)"},
    {"artist", &PhotoEditorTexts::artist, "artist"},
    {"description", &PhotoEditorTexts::imageDescription, "image description"},
    {"copyright", &PhotoEditorTexts::copyright, "copyright"},
    {"comment", &PhotoEditorTexts::comments, "EXIF user comment"},
    {"keywords", &PhotoEditorTexts::keywords, "IPTC keywords, separated by commas"},
    {"make", &PhotoEditorTexts::cameraMake, "camera make"},
    {"model", &PhotoEditorTexts::cameraModel, "camera model"},
    {"camera-date", &PhotoEditorTexts::cameraDate, "date digitized, YYYY:MM:DD HH:MM:SS or YYYY-MM-DD HH:MM:SS", ValueKind::DateTime},
    {"gps-date", &PhotoEditorTexts::gpsDate, "GPS date stamp, YYYY:MM:DD", ValueKind::Date},
    {"gps-time", &PhotoEditorTexts::gpsTime, "GPS time stamp, HH:MM:SS (UTC)", ValueKind::Time},
    {"altitude", &PhotoEditorTexts::gpsAltitude, "altitude in metres, negative below sea level", ValueKind::Altitude},
    {"lat", &PhotoEditorTexts::gpsLatitude, "latitude in degrees, negative south", ValueKind::Latitude},
    {"lon", &PhotoEditorTexts::gpsLongitude, "longitude in degrees, negative west", ValueKind::Longitude},
};

}  // namespace

bool takeEditorFieldOptions(const QStringList& args, QList<EditorFieldValue>* fields, QStringList* rest,
                            QString* error)
{
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& arg = args[i];
        const FieldOption* match = nullptr;
        QString value;
        bool inline_ = false;
        for (const FieldOption& option : kFieldOptions) {
            const QString name = QStringLiteral("--") + QLatin1String(option.name);
            if (arg == name) {
                match = &option;
            } else if (arg.startsWith(name + QLatin1Char('='))) {
                match = &option;
                value = arg.mid(name.size() + 1);
                inline_ = true;
            }
            if (match)
                break;
        }
        if (!match) {
            rest->append(arg);
            continue;
        }
        if (!inline_) {
            if (i + 1 >= args.size()) {
                *error = QStringLiteral("%1 needs a value").arg(arg);
                return false;
            }
            value = args[++i];
        }
        if (match->kind) {
            *error = checkOptionValue(*match->kind, QStringLiteral("--") + QLatin1String(match->name), value);
            if (!error->isEmpty())
                return false;
        }
        fields->append({match->field, value});
    }
    return true;
}

QString editorFieldOptionsHelp()
{
    QString text;
    for (const FieldOption& option : kFieldOptions)
        text += QStringLiteral("  --%1 TEXT  %2\n").arg(QLatin1String(option.name), -12).arg(QLatin1String(option.help));
    return text;
}

QString ApplyCommand::summary() const
{
    return QStringLiteral("write edited title, artist, keywords, dates or location into photos");
}

QString ApplyCommand::help() const
{
    return QStringLiteral(
               "Usage: pelorin-cli apply [FIELD OPTIONS] [--camera] FILE...\n"
               "\n"
               "Writes a copy of each photo into the output folder with the given fields changed,\n"
               "as the photo editor's Apply does; every other value is kept. An empty text removes\n"
               "that value; emptying every GPS field removes the location. A field given with the\n"
               "photo's own text is not written.\n"
               "\n"
               "Field options:\n")
           + editorFieldOptionsHelp()
           + QStringLiteral(
               "\n"
               "With --camera, each FILE names a camera photo already downloaded into the output\n"
               "folder, which is rewritten in place.");
}

int ApplyCommand::run(CliInvocation& invocation)
{
    QList<EditorFieldValue> given;
    QStringList rest;
    QString error;
    if (!takeEditorFieldOptions(invocation.args, &given, &rest, &error))
        return usageError(invocation, name(), error);
    if (given.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one field to change"));
    PhotoSource source = PhotoSource::Computer;
    QStringList files;
    for (const QString& arg : rest) {
        if (arg == QLatin1String("--camera"))
            source = PhotoSource::Camera;
        else if (arg.startsWith(QLatin1String("--")))
            return usageError(invocation, name(), QStringLiteral("unknown option '%1'").arg(arg));
        else
            files << arg;
    }
    if (files.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));

    CliReporter reporter(invocation);
    const CommandContext context = reporter.context();
    CommandResult result;
    // Each photo compares against its own fields, as if the editor showed it.
    for (const QString& file : files) {
        PhotoSelection one;
        one.source = source;
        const IKImageItem item = itemFromArgument(file);
        one.items << item;
        const QString input = photoInputPath(item, source, context.storageFolder);
        const PhotoInspection inspection = inspectPhoto(input, item.fileName);
        if (!inspection.photo.ok()) {
            result.skip(input, inspection.photo.error);
            continue;
        }
        const PhotoEditorFill& fill = inspection.fill;
        PhotoEditorTexts fields = fill.old;
        for (const auto& [field, value] : given)
            fields.*field = value;
        result.merge(applyPhotoEditorChanges(fields, fill.old, one, context));
    }
    return reporter.report(result);
}

}  // namespace pelorin::cli

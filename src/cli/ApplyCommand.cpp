#include "cli/ApplyCommand.h"

#include "cli/CliOutput.h"
#include "cli/CliValues.h"
#include "dates/EditorApply.h"

#include <optional>

namespace pelorin::cli {
namespace {

// The check of an option's value; free text and keywords take anything.
std::optional<ValueKind> valueKind(PhotoValue value)
{
    switch (value) {
    case PhotoValue::DateTime: return ValueKind::DateTime;
    case PhotoValue::Date: return ValueKind::Date;
    case PhotoValue::Time: return ValueKind::Time;
    case PhotoValue::Latitude: return ValueKind::Latitude;
    case PhotoValue::Longitude: return ValueKind::Longitude;
    case PhotoValue::Altitude: return ValueKind::Altitude;
    case PhotoValue::Text:
    case PhotoValue::Keywords: break;
    }
    return std::nullopt;
}

// The field an argument names ("--title" or "--title=T"), with the inline value if any.
std::optional<PhotoField> fieldOfArgument(const QString& arg, std::optional<QString>* inlineValue)
{
    if (!arg.startsWith(QLatin1String("--")))
        return std::nullopt;
    const qsizetype equals = arg.indexOf(QLatin1Char('='));
    const std::optional<PhotoField> field = photoFieldOfOption(arg.mid(2, equals < 0 ? -1 : equals - 2));
    if (field && equals >= 0)
        *inlineValue = arg.mid(equals + 1);
    return field;
}

}  // namespace

bool takeEditorFieldOptions(const QStringList& args, PhotoFieldChanges* changes, QStringList* rest,
                            QString* error)
{
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& arg = args[i];
        std::optional<QString> value;
        const std::optional<PhotoField> field = fieldOfArgument(arg, &value);
        if (!field) {
            rest->append(arg);
            continue;
        }
        if (!value) {
            if (i + 1 >= args.size()) {
                *error = QStringLiteral("%1 needs a value").arg(arg);
                return false;
            }
            value = args[++i];
        }
        const PhotoFieldRow& row = photoFieldRow(*field);
        if (const std::optional<ValueKind> kind = valueKind(row.value)) {
            *error = checkOptionValue(*kind, QStringLiteral("--") + QLatin1String(row.option), *value);
            if (!error->isEmpty())
                return false;
        }
        changes->fields.insert(*field, *value);
    }
    return true;
}

QString editorFieldOptionsHelp()
{
    QString text;
    for (const PhotoFieldRow& row : photoFieldRows())
        text += QStringLiteral("  --%1 TEXT  %2\n").arg(QLatin1String(row.option), -12).arg(QLatin1String(row.help));
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
               "that value; emptying every GPS field removes the location, and GPS fields not given\n"
               "keep the photo's own values. A field given with the photo's own text is not\n"
               "written, and a photo that already has every given text is not written at all.\n"
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
    PhotoFieldChanges changes;
    QStringList rest;
    QString error;
    if (!takeEditorFieldOptions(invocation.args, &changes, &rest, &error))
        return usageError(invocation, name(), error);
    if (changes.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one field to change"));
    PhotoSelection selection;
    if (!photoSelectionFromArguments(rest, selection, &error))
        return usageError(invocation, name(), error);

    // The changes are built from the options alone: each photo is read once, by the engine.
    CliReporter reporter(invocation);
    return reporter.report(applyPhotoFieldChanges(selection, changes, reporter.context()));
}

}  // namespace pelorin::cli

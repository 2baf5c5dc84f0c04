#include "cli/SetDateCommand.h"

#include "cli/CliOutput.h"
#include "cli/CliValues.h"
#include "dates/PhotoDateEdit.h"

#include <QFileInfo>

namespace pelorin::cli {

DateCommandArgs parseDateCommandArgs(const QStringList& args, const QStringList& valueOptions,
                                     const QStringList& flags)
{
    DateCommandArgs parsed;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& arg = args[i];
        if (!arg.startsWith(QLatin1String("--"))) {
            parsed.files << arg;
            continue;
        }
        const qsizetype equals = arg.indexOf(QLatin1Char('='));
        const QString name = equals < 0 ? arg : arg.left(equals);
        if (flags.contains(name) && equals < 0) {
            parsed.flags.insert(name);
        } else if (valueOptions.contains(name)) {
            if (equals >= 0) {
                parsed.values.insert(name, arg.mid(equals + 1));
            } else if (i + 1 < args.size()) {
                parsed.values.insert(name, args[++i]);
            } else {
                parsed.error = QStringLiteral("%1 needs a value").arg(name);
                return parsed;
            }
        } else {
            parsed.error = QStringLiteral("unknown option '%1'").arg(arg);
            return parsed;
        }
    }
    return parsed;
}

PhotoSelection dateCommandSelection(const DateCommandArgs& args)
{
    PhotoSelection selection;
    if (args.flags.contains(QStringLiteral("--camera")))
        selection.source = PhotoSource::Camera;
    for (const QString& file : args.files) {
        selection.items << itemFromArgument(file);
    }
    return selection;
}

QString SetDateCommand::summary() const
{
    return QStringLiteral("write copies of photos with new capture dates");
}

QString SetDateCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli set-date --original T [--digitized T] [--file-dates-only] [--camera] FILE...\n"
        "\n"
        "Writes a copy of each photo into the output folder with EXIF DateTimeOriginal and the\n"
        "TIFF DateTime set to --original and EXIF DateTimeDigitized set to --digitized (default:\n"
        "the same as --original). Dates are \"YYYY:MM:DD HH:MM:SS\" or \"YYYY-MM-DD HH:MM:SS\"\n"
        "(quote them) and are written in the first form. Both file dates of the copy become the\n"
        "original date in the local time zone.\n"
        "  --file-dates-only  copy the bytes unchanged and set only the file dates\n"
        "  --camera           each FILE names a camera photo downloaded into the output folder;\n"
        "                     that copy is changed in place\n"
        "RAW kinds that cannot be rewritten (RAF, RW2, CRW, MRW, ...) get a byte copy plus\n"
        "an XMP sidecar; HEIC, HEIF, AVIF and CR3 are rewritten themselves.");
}

int SetDateCommand::run(CliInvocation& invocation)
{
    const DateCommandArgs args = parseDateCommandArgs(
        invocation.args, {QStringLiteral("--original"), QStringLiteral("--digitized")},
        {QStringLiteral("--file-dates-only"), QStringLiteral("--camera")});
    if (!args.error.isEmpty())
        return usageError(invocation, name(), args.error);
    if (!args.has(QStringLiteral("--original")))
        return usageError(invocation, name(), QStringLiteral("give the date with --original"));
    for (const QString& option : {QStringLiteral("--original"), QStringLiteral("--digitized")})
        if (const QString error = checkOptionValue(ValueKind::DateTime, option, args.value(option)); !error.isEmpty())
            return usageError(invocation, name(), error);
    if (args.files.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));
    PhotoDateEdit edit;
    edit.original = args.value(QStringLiteral("--original"));
    edit.digitized = args.has(QStringLiteral("--digitized")) ? args.value(QStringLiteral("--digitized")) : edit.original;

    CliReporter reporter(invocation);
    const PhotoSelection selection = dateCommandSelection(args);
    return reporter.report(args.has(QStringLiteral("--file-dates-only"))
                               ? savePhotoFileDates(selection, edit, reporter.context())
                               : savePhotoDates(selection, edit, reporter.context()));
}

}  // namespace pelorin::cli

#include "cli/ShiftDatesCommand.h"

#include "cli/CliOutput.h"
#include "cli/CliValues.h"
#include "cli/SetDateCommand.h"
#include "dates/PhotoDateShift.h"

#include <QFileInfo>

namespace pelorin::cli {

QString ShiftDatesCommand::summary() const
{
    return QStringLiteral("write copies of photos with their dates moved or set");
}

QString ShiftDatesCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli shift-dates --by SPAN [--subtract] [--file-dates-only] [--camera] FILE...\n"
        "       pelorin-cli shift-dates --to T [--file-dates-only] [--camera] FILE...\n"
        "       pelorin-cli shift-dates --reference FILE --original-after T --digitized-after T\n"
        "                               [--file-dates-only] [--camera] FILE...\n"
        "\n"
        "Writes a copy of each photo into the output folder with its dates changed, and gives\n"
        "the copy matching file dates:\n"
        "  --by SPAN   move every date (EXIF original, digitized, TIFF DateTime, file dates) by\n"
        "              SPAN, such as \"1y 2mo 3d 4h 5m 6s\" (any of the units y, mo, d, h, m, s;\n"
        "              a year is 365 days and a month 30 days); --subtract moves back\n"
        "  --to T      give every photo the date T\n"
        "  --reference FILE with --original-after and --digitized-after: move every photo's\n"
        "              original and digitized dates by the differences between the reference\n"
        "              photo's dates and the dates given\n"
        "Dates are \"YYYY:MM:DD HH:MM:SS\" or \"YYYY-MM-DD HH:MM:SS\" (quote them). Metadata\n"
        "dates move on the clock face; file dates are local time. A photo without EXIF dates is\n"
        "copied as it is, with moved file dates.\n"
        "  --file-dates-only  copy the bytes unchanged and change only the file dates\n"
        "  --camera           each FILE names a camera photo downloaded into the output folder;\n"
        "                     that copy is changed in place");
}

int ShiftDatesCommand::run(CliInvocation& invocation)
{
    const QString by = QStringLiteral("--by");
    const QString to = QStringLiteral("--to");
    const QString reference = QStringLiteral("--reference");
    const QString originalAfter = QStringLiteral("--original-after");
    const QString digitizedAfter = QStringLiteral("--digitized-after");
    const DateCommandArgs args = parseDateCommandArgs(
        invocation.args, {by, to, reference, originalAfter, digitizedAfter},
        {QStringLiteral("--subtract"), QStringLiteral("--file-dates-only"), QStringLiteral("--camera")});
    if (!args.error.isEmpty())
        return usageError(invocation, name(), args.error);
    const int modes = int(args.has(by)) + int(args.has(to)) + int(args.has(reference));
    if (modes != 1)
        return usageError(invocation, name(), QStringLiteral("give exactly one of --by, --to and --reference"));
    for (const QString& option : {to, originalAfter, digitizedAfter})
        if (const QString error = checkOptionValue(ValueKind::DateTime, option, args.value(option)); !error.isEmpty())
            return usageError(invocation, name(), error);
    if (args.files.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));

    BatchDateRequest request;
    if (args.has(by)) {
        QString error;
        const auto span = parseDateSpan(args.value(by), &error);
        if (!span)
            return usageError(invocation, name(), QStringLiteral("--by: %1").arg(error));
        request.span = *span;
        request.add = !args.has(QStringLiteral("--subtract"));
    } else if (args.has(to)) {
        request.fixedDate = args.value(to);
        if (request.fixedDate.trimmed().isEmpty())
            return usageError(invocation, name(), QStringLiteral("--to needs a date"));
    } else {
        if (!args.has(originalAfter) || !args.has(digitizedAfter))
            return usageError(invocation, name(), QStringLiteral("--reference needs --original-after and --digitized-after"));
        request.referencePhoto = QFileInfo(args.value(reference)).absoluteFilePath();
        if (!QFileInfo(request.referencePhoto).isFile())
            return usageError(invocation, name(), QStringLiteral("the reference photo %1 does not exist").arg(args.value(reference)));
        request.afterOriginal = args.value(originalAfter);
        request.afterDigitized = args.value(digitizedAfter);
    }
    if (!args.has(reference) && (args.has(originalAfter) || args.has(digitizedAfter)))
        return usageError(invocation, name(), QStringLiteral("--original-after and --digitized-after go with --reference"));
    if (!args.has(by) && args.has(QStringLiteral("--subtract")))
        return usageError(invocation, name(), QStringLiteral("--subtract goes with --by"));

    CliReporter reporter(invocation);
    const PhotoSelection selection = dateCommandSelection(args);
    return reporter.report(args.has(QStringLiteral("--file-dates-only"))
                               ? shiftPhotoFileDates(selection, request, reporter.context())
                               : shiftPhotoDates(selection, request, reporter.context()));
}

}  // namespace pelorin::cli

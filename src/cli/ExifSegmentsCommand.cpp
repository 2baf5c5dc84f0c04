#include "cli/ExifSegmentsCommand.h"

#include "cli/CliOutput.h"
#include "photo/JpegExifSegmentReader.h"

#include <QJsonArray>
#include <QJsonObject>

namespace pelorin::cli {

QString ExifSegmentsCommand::summary() const
{
    return QStringLiteral("list the tags found in a JPEG's EXIF segments (diagnostic)");
}

QString ExifSegmentsCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli exif-segments FILE\n"
        "\n"
        "Scans FILE with the diagnostic EXIF segment reader and prints its log lines in the\n"
        "order met: the first two bytes as hex (twice, and nothing else, when the file does not\n"
        "start with ffd8), 457869660000 for each Exif marker followed by one line per known tag\n"
        "of IFD0, the Exif directory and the thumbnail directory (\"makeString====Apple\"),\n"
        "and 000c03010002 at each start-of-scan header. Numbers print as decimals, rationals\n"
        "as 72/1, several values joined by ', '; values of more than 256 elements are cut\n"
        "and end in '...'.\n"
        "\n"
        "With --json: {\"file\": ..., \"lines\": [...], \"hasThumbnail\": bool}, plus\n"
        "\"truncated\": true when the output limit was reached and \"error\" when the file\n"
        "could not be read.\n"
        "\n"
        "Exit status 1 when the file cannot be read (or is larger than 512 MiB).");
}

int ExifSegmentsCommand::run(CliInvocation& invocation)
{
    if (invocation.args.size() != 1)
        return usageError(invocation, name(), QStringLiteral("give exactly one file"));
    const QString& file = invocation.args.first();
    ExifSegmentReaderState state;
    const ExifSegmentReport report = ReadExifDataFromPiture(file, state);

    if (invocation.json) {
        QJsonObject object{{QStringLiteral("file"), file},
                           {QStringLiteral("lines"), QJsonArray::fromStringList(report.lines)},
                           {QStringLiteral("hasThumbnail"), state.bhasThumImage}};
        if (report.truncated)
            object.insert(QStringLiteral("truncated"), true);
        if (!report.error.isEmpty())
            object.insert(QStringLiteral("error"), report.error);
        printJson(invocation.out, object);
    } else {
        for (const QString& line : report.lines)
            printLine(invocation.out, line);
        if (report.truncated)
            printLine(invocation.err, QStringLiteral("note: output limit reached after %1 lines")
                                          .arg(report.lines.size()));
        if (!report.error.isEmpty())
            printLine(invocation.err,
                      QStringLiteral("pelorin-cli %1: %2").arg(name(), report.error));
    }
    return report.error.isEmpty() ? ExitSuccess : ExitItemFailed;
}

}  // namespace pelorin::cli

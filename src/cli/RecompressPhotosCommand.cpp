#include "cli/RecompressPhotosCommand.h"

#include "cli/CliOutput.h"
#include "photo/JpegRecompression.h"

#include <QFileInfo>

namespace pelorin::cli {

QString RecompressPhotosCommand::summary() const
{
    return QStringLiteral("write small upright JPEG copies of photos, metadata kept");
}

QString RecompressPhotosCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli recompress FILE...\n"
        "\n"
        "Writes a small JPEG copy of each photo into the output folder as <name>_date.<ext>\n"
        "(a PNG or other non-JPEG gives <name>_date.jpg): the picture turned upright, its EXIF,\n"
        "IPTC, XMP and colour profile kept with the orientation set to 1, and its file dates\n"
        "set to the capture date (EXIF or XMP).");
}

int RecompressPhotosCommand::run(CliInvocation& invocation)
{
    QStringList files;
    for (const QString& arg : invocation.args) {
        if (arg.startsWith(QLatin1String("--")))
            return usageError(invocation, name(), QStringLiteral("unknown option '%1'").arg(arg));
        files << QFileInfo(arg).absoluteFilePath();
    }
    if (files.isEmpty())
        return usageError(invocation, name(), QStringLiteral("give at least one file"));
    CliReporter reporter(invocation);
    return reporter.report(recompressPhotos(files, reporter.context()));
}

}  // namespace pelorin::cli

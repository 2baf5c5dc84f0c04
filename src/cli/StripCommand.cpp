#include "cli/StripCommand.h"

#include "cli/CliOutput.h"
#include "photo/PhotoRemoval.h"

#include <QFileInfo>

namespace pelorin::cli {

QString StripCommand::summary() const
{
    return QStringLiteral("write copies of photos without EXIF, GPS, IPTC or any metadata");
}

QString StripCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli strip exif|gps|iptc|exif-gps|all [--camera] FILE...\n"
        "\n"
        "Writes a copy of each photo into the output folder with the chosen metadata removed;\n"
        "the originals are never changed.\n"
        "  exif      the Exif directory with its maker notes, and the XMP copies of its values\n"
        "  gps       the location, from EXIF and from XMP\n"
        "  iptc      the IPTC record\n"
        "  exif-gps  both exif and gps\n"
        "  all       everything but the colour profile and the orientation, so the photo\n"
        "            still looks the same\n"
        "Copies keep the photo's name. With --camera, each FILE names a camera photo already\n"
        "downloaded into the output folder; its copy is named NoExif_, NoGPS_, NoIPTC_ or\n"
        "NoExifAndGPS_ plus its name. HEIC, HEIF, AVIF and CR3 are rewritten like JPEG (a CR3\n"
        "keeps its maker notes, and with all also its make and model, which raw developers\n"
        "need); files whose kind cannot be rewritten (RAF, RW2, CRW, MRW, ...) are skipped\n"
        "with the reason.");
}

int StripCommand::run(CliInvocation& invocation)
{
    if (invocation.args.isEmpty())
        return usageError(invocation, name(), QStringLiteral("say what to strip"));
    const QString what = invocation.args.first();
    MetadataRemoval removal;
    if (what == QLatin1String("exif"))
        removal = MetadataRemoval::Exif;
    else if (what == QLatin1String("gps"))
        removal = MetadataRemoval::Gps;
    else if (what == QLatin1String("iptc"))
        removal = MetadataRemoval::Iptc;
    else if (what == QLatin1String("exif-gps"))
        removal = MetadataRemoval::ExifAndGps;
    else if (what == QLatin1String("all"))
        removal = MetadataRemoval::All;
    else
        return usageError(invocation, name(), QStringLiteral("unknown metadata '%1'").arg(what));

    PhotoSelection selection;
    QString error;
    if (!photoSelectionFromArguments(invocation.args.mid(1), selection, &error))
        return usageError(invocation, name(), error);

    CliReporter reporter(invocation);
    return reporter.report(removePhotoMetadata(removal, selection, reporter.context()));
}

}  // namespace pelorin::cli

#include "cli/ImportPlistCommand.h"

#include "cli/CliOutput.h"
#include "dates/PlistImport.h"

#include <QFileInfo>

namespace pelorin::cli {

QString ImportPlistCommand::summary() const
{
    return QStringLiteral("apply metadata or a template from a property list to photos");
}

QString ImportPlistCommand::help() const
{
    return QStringLiteral(
        "Usage: pelorin-cli import-plist tiff|exif|exif-tiff|exif-gps|all|template PLIST [--camera] FILE...\n"
        "\n"
        "Writes a copy of each photo into the output folder with metadata from PLIST, an XML or\n"
        "binary property list as export-plist writes it. Of a file with several photos, the\n"
        "entry whose name sorts first is applied to every FILE.\n"
        "  tiff       the entry replaces the TIFF group\n"
        "  exif       the entry replaces the EXIF group\n"
        "  exif-tiff  its EXIF and TIFF groups, each when present, replace the photo's\n"
        "  exif-gps   its EXIF and GPS groups, each when present, replace the photo's\n"
        "  all        its TIFF, EXIF, GPS, IPTC and XMP groups and orientation replace the\n"
        "             photo's; groups it lacks are kept, image facts are ignored\n"
        "  template   every non-empty template value is set; the outputs get the template\n"
        "             file's modification date\n"
        "With --camera, each FILE names a camera photo already downloaded into the output\n"
        "folder, which is rewritten in place.");
}

int ImportPlistCommand::run(CliInvocation& invocation)
{
    if (invocation.args.size() < 2)
        return usageError(invocation, name(), QStringLiteral("give what to import and the property list"));
    const QString what = invocation.args[0];
    PlistImport import;
    if (what == QLatin1String("tiff"))
        import = PlistImport::Tiff;
    else if (what == QLatin1String("exif"))
        import = PlistImport::Exif;
    else if (what == QLatin1String("exif-tiff"))
        import = PlistImport::ExifAndTiff;
    else if (what == QLatin1String("exif-gps"))
        import = PlistImport::ExifAndGps;
    else if (what == QLatin1String("all"))
        import = PlistImport::AllMetadata;
    else if (what == QLatin1String("template"))
        import = PlistImport::Template;
    else
        return usageError(invocation, name(), QStringLiteral("unknown import '%1'").arg(what));
    const QString plist = QFileInfo(invocation.args[1]).absoluteFilePath();

    PhotoSelection selection;
    QString error;
    if (!photoSelectionFromArguments(invocation.args.mid(2), selection, &error))
        return usageError(invocation, name(), error);

    CliReporter reporter(invocation);
    return reporter.report(importPhotoPlist(import, plist, selection, reporter.context()));
}

}  // namespace pelorin::cli

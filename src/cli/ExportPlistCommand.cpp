#include "cli/ExportPlistCommand.h"

#include "cli/ApplyCommand.h"
#include "cli/CliOutput.h"
#include "dates/PlistExport.h"
#include "dates/TemplateExport.h"
#include "photo/PhotoProperties.h"

#include <QDir>
#include <QFileInfo>

#include <optional>

namespace pelorin::cli {
namespace {

std::optional<PlistExport> exportNamed(const QString& what)
{
    if (what == QLatin1String("tiff"))
        return PlistExport::Tiff;
    if (what == QLatin1String("exif"))
        return PlistExport::Exif;
    if (what == QLatin1String("exif-tiff"))
        return PlistExport::ExifAndTiff;
    if (what == QLatin1String("exif-gps"))
        return PlistExport::ExifAndGps;
    if (what == QLatin1String("all"))
        return PlistExport::AllMetadata;
    return std::nullopt;
}

}  // namespace

QString ExportPlistCommand::summary() const
{
    return QStringLiteral("save photo metadata or an editor template as a property list");
}

QString ExportPlistCommand::help() const
{
    return QStringLiteral(
               "Usage: pelorin-cli export-plist tiff|exif|exif-tiff|exif-gps|all [--camera] FILE...\n"
               "       pelorin-cli export-plist current [--camera] FILE\n"
               "       pelorin-cli export-plist template [FIELD OPTIONS]\n"
               "\n"
               "Writes an XML property list into the output folder, replacing one of the same name.\n"
               "  tiff       ExportTiffInfo.plist: each photo's TIFF group, keyed by its file name\n"
               "  exif       ExportExifInfo.plist: each photo's EXIF group\n"
               "  exif-tiff  ExportExifandTiffInfo.plist: each photo's EXIF and TIFF groups\n"
               "  exif-gps   ExportExifandGPSInfo.plist: each photo's EXIF and GPS groups\n"
               "  all        ExportAllMetadataInfo.plist: all of each photo's properties\n"
               "  current    NAME.plist: all properties of one photo, NAME being its name without\n"
               "             the extension\n"
               "  template   templatefile.plist: a template of editor fields, for import-plist\n"
               "             template\n"
               "\n"
               "Field options of template (each field not given is empty):\n")
           + editorFieldOptionsHelp()
           + QStringLiteral(
               "\n"
               "With --camera, each FILE names a camera photo already downloaded into the output\n"
               "folder.");
}

int ExportPlistCommand::run(CliInvocation& invocation)
{
    if (invocation.args.isEmpty())
        return usageError(invocation, name(), QStringLiteral("say what to export"));
    const QString what = invocation.args.first();
    const QStringList args = invocation.args.mid(1);

    if (what == QLatin1String("template")) {
        PhotoFieldChanges given;
        QStringList rest;
        QString error;
        if (!takeEditorFieldOptions(args, &given, &rest, &error))
            return usageError(invocation, name(), error);
        if (!rest.isEmpty())
            return usageError(invocation, name(), QStringLiteral("unexpected '%1'").arg(rest.first()));
        PhotoEditorTexts fields;
        for (auto it = given.fields.cbegin(); it != given.fields.cend(); ++it)
            fields.*photoFieldRow(it.key()).member = it.value();
        CliReporter reporter(invocation);
        return reporter.report(exportTemplatePlist(fields, reporter.context()));
    }

    const std::optional<PlistExport> selectionExport = exportNamed(what);
    if (!selectionExport && what != QLatin1String("current"))
        return usageError(invocation, name(), QStringLiteral("unknown export '%1'").arg(what));
    PhotoSelection selection;
    QString error;
    if (!photoSelectionFromArguments(args, selection, &error))
        return usageError(invocation, name(), error);

    CliReporter reporter(invocation);
    const CommandContext context = reporter.context();
    if (selectionExport)
        return reporter.report(exportPhotoPlist(*selectionExport, selection, context));

    if (selection.items.size() != 1)
        return usageError(invocation, name(), QStringLiteral("current takes exactly one file"));
    const IKImageItem& item = selection.items.first();
    const QString input = selection.source == PhotoSource::Camera
                              ? QDir(context.storageFolder).filePath(item.fileName)
                              : item.filePath;
    const PhotoProperties photo = readPhotoProperties(input);
    if (!photo.ok()) {
        CommandResult result;
        result.skip(input, photo.error);
        return reporter.report(result);
    }
    return reporter.report(exportCurrentPhotoPlist(photo.properties, item.fileName, context));
}

}  // namespace pelorin::cli

#include "dates/PlistExport.h"

#include "model/PhotoBatch.h"
#include "dates/PlistExportFile.h"
#include "model/ParallelFor.h"
#include "model/PropertyList.h"
#include "model/SafeOutput.h"
#include "photo/PhotoProperties.h"

#include <QFileInfo>

#include <vector>

namespace pelorin {
namespace {

const QString kExif = QStringLiteral("{Exif}");
const QString kTiff = QStringLiteral("{TIFF}");
const QString kGps = QStringLiteral("{GPS}");

QVariantMap groupsOf(const QVariantMap& properties, const QStringList& groups)
{
    QVariantMap entry;
    for (const QString& group : groups) {
        if (properties.contains(group))
            entry.insert(group, properties.value(group));
    }
    return entry;
}

}  // namespace

QString plistExportFileName(PlistExport what)
{
    switch (what) {
    case PlistExport::Tiff: return QStringLiteral("ExportTiffInfo.plist");
    case PlistExport::Exif: return QStringLiteral("ExportExifInfo.plist");
    case PlistExport::ExifAndTiff: return QStringLiteral("ExportExifandTiffInfo.plist");
    case PlistExport::ExifAndGps: return QStringLiteral("ExportExifandGPSInfo.plist");
    case PlistExport::AllMetadata: return QStringLiteral("ExportAllMetadataInfo.plist");
    }
    return {};
}

QVariantMap plistExportEntry(PlistExport what, const QVariantMap& properties)
{
    switch (what) {
    case PlistExport::Tiff: return properties.value(kTiff).toMap();
    case PlistExport::Exif: return properties.value(kExif).toMap();
    case PlistExport::ExifAndTiff: return groupsOf(properties, {kExif, kTiff});
    case PlistExport::ExifAndGps: return groupsOf(properties, {kExif, kGps});
    case PlistExport::AllMetadata: return properties;
    }
    return {};
}

CommandResult exportPhotoPlist(PlistExport what, const PhotoSelection& selection, const CommandContext& context)
{
    CommandResult result;
    if (selection.items.isEmpty()) {
        result.alert = Alerts::noSelection();
        return result;
    }
    const int total = int(selection.items.size());
    std::vector<PhotoProperties> read(static_cast<size_t>(total));
    std::vector<QString> paths(static_cast<size_t>(total));
    parallelFor(total, [&](int i) {
        const IKImageItem& item = selection.items[i];
        paths[size_t(i)] = photoInputPath(item, selection.source, context.storageFolder);
        read[size_t(i)] = readPhotoProperties(paths[size_t(i)]);
    });

    QVariantMap root;
    QMap<QString, QString> sourceOf;  // entry key -> the photo it came from
    for (int i = 0; i < total; ++i) {
        const PhotoProperties& photo = read[size_t(i)];
        if (!photo.ok()) {
            result.skip(paths[size_t(i)], photo.error);
            continue;
        }
        const QString key = selection.items[i].fileName;
        root.insert(key, plistExportEntry(what, photo.properties));
        sourceOf.insert(key, paths[size_t(i)]);
    }
    // One photo whose values a property list cannot hold must not cost the others their entries.
    if (!writePropertyListXml(root).xml) {
        for (const QString& key : root.keys()) {
            const PropertyListXml single = writePropertyListXml(root.value(key));
            if (!single.xml) {
                result.skip(sourceOf.value(key), QStringLiteral("cannot be written as a property list: %1").arg(single.error));
                root.remove(key);
            }
        }
    }
    writeExportPlist(root, plistExportFileName(what), context, result);
    return result;
}

CommandResult exportCurrentPhotoPlist(const QVariantMap& properties, const QString& fileName,
                                      const CommandContext& context)
{
    CommandResult result;
    if (fileName.isEmpty()) {
        result.alert = Alerts::noSelection();
        return result;
    }
    const QString base = QFileInfo(fileName).completeBaseName();
    writeExportPlist(properties, (base.isEmpty() ? fileName : base) + QStringLiteral(".plist"), context, result);
    return result;
}

}  // namespace pelorin

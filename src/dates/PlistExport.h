#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"

#include <QString>
#include <QVariantMap>

namespace pelorin {

// What a selection export holds for each photo.
enum class PlistExport {
    Tiff,         // the "{TIFF}" group ("ExportTiffInfo.plist")
    Exif,         // the "{Exif}" group ("ExportExifInfo.plist")
    ExifAndTiff,  // "{Exif}" and "{TIFF}" ("ExportExifandTiffInfo.plist")
    ExifAndGps,   // "{Exif}" and "{GPS}" ("ExportExifandGPSInfo.plist")
    AllMetadata,  // the whole property dictionary ("ExportAllMetadataInfo.plist")
};

QString plistExportFileName(PlistExport what);

// The entry one photo gets in that export, from its property dictionary.
QVariantMap plistExportEntry(PlistExport what, const QVariantMap& properties);

// Writes the export of the selected photos into the storage folder: one entry per photo keyed by
// its file name (a later photo of the same name replaces an earlier one). Photos that cannot be
// read are skipped with the reason.
CommandResult exportPhotoPlist(PlistExport what, const PhotoSelection& selection, const CommandContext& context);

// Writes the properties of the photo shown in the editor to "<storage>/<name>.plist", the name
// being its file name without the extension.
CommandResult exportCurrentPhotoPlist(const QVariantMap& properties, const QString& fileName,
                                      const CommandContext& context);

}  // namespace pelorin

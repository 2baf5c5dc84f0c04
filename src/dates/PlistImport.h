#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"

#include <QString>
#include <QVariantMap>

#include <optional>

namespace pelorin {

// What an import takes from a property list written by the exports.
enum class PlistImport {
    Tiff,         // the entry replaces "{TIFF}"
    Exif,         // the entry replaces "{Exif}"
    ExifAndTiff,  // its "{Exif}" and "{TIFF}", each when present, replace those groups
    ExifAndGps,   // its "{Exif}" and "{GPS}", each when present
    AllMetadata,  // its writable groups and orientation replace the photo's; others are kept
    Template,     // the flat template is merged into the photo's groups
};

// The entry of a per-photo export file that an import applies: the one whose key sorts first.
struct ImportEntry {
    std::optional<QVariantMap> value;
    QString error;  // why the file gives no entry
};
ImportEntry readImportEntry(const QString& plistPath);

// Applies the property list to every selected photo and writes the results into the storage
// folder. An unreadable or empty file, or one that holds nothing the import can apply, is
// skipped with the reason and nothing is written. After a template import both file dates of
// each output are the template file's modification date; other imports leave the time of
// writing.
CommandResult importPhotoPlist(PlistImport what, const QString& plistPath, const PhotoSelection& selection,
                               const CommandContext& context);

}  // namespace pelorin

#pragma once

// Names of the image-property model against exiv2's tag names: which tags each model group
// shows, under which key, and which of them may be written.

#include <QHash>
#include <QSet>
#include <QString>

namespace pelorin::exiv2_model::detail {

inline const QString kTiff = QStringLiteral("{TIFF}");
inline const QString kExif = QStringLiteral("{Exif}");
inline const QString kGps = QStringLiteral("{GPS}");
inline const QString kIptc = QStringLiteral("{IPTC}");
inline const QString kXmp = QStringLiteral("{XMP}");
inline const QString kExifAux = QStringLiteral("{ExifAux}");
inline const QString kOrientation = QStringLiteral("Orientation");

// Values larger than this are binary blobs nobody reads in an inspector or a template.
constexpr long kMaxValueBytes = 64 * 1024;

const QHash<QString, QString>& tiffRenames();
const QHash<QString, QString>& exifRenames();
const QHash<QString, QString>& iptcRenames();
const QHash<QString, QString>& auxProperties();
QString renamed(const QHash<QString, QString>& table, const QString& name);
QString exiv2Name(const QHash<QString, QString>& table, const QString& modelKey);
QString gpsModelKey(const QString& tagName);
QString gpsTagName(const QString& modelKey);
const QSet<QString>& writableTiffTags();
const QSet<QString>& hiddenTiffTags();
const QSet<QString>& alwaysArrays();
QString makerGroupFor(const QString& exiv2Group);
bool isMakerGroupKey(const QString& key);

}  // namespace pelorin::exiv2_model::detail

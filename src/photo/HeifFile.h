#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace pelorin {

// What the program reads from a HEIC/HEIF/AVIF file through libheif (exiv2 0.27 finds no Exif
// in these files).
struct HeifMetadata {
    int width = 0;  // of the primary image as displayed, after rotation, mirroring and cropping
    int height = 0;
    int imageCount = 0;  // top-level images; thumbnails and grid tiles do not count
    bool hasAlpha = false;
    int lumaBitDepth = 0;  // 0 when the file does not say
    QByteArray exif;        // a TIFF stream ("II*\0" or "MM\0*"), empty when there is none
    QByteArray xmp;         // the XMP packet as stored
    QByteArray iccProfile;  // empty when the file has none (or only nclx colour data)
};

// True when the first bytes of a file are an 'ftyp' box naming a HEIF or AVIF brand, so callers
// can route by content instead of by extension. 32 bytes are enough for most files.
bool looksLikeHeif(const QByteArray& head);

// The primary image's facts and metadata blocks; nullopt with the reason when the file cannot be
// read.
std::optional<HeifMetadata> readHeifMetadata(const QString& path, QString* error = nullptr);

}  // namespace pelorin

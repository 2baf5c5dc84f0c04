#pragma once

#include "photo/PhotoFormats.h"

#include <QByteArray>
#include <QString>
#include <QVariantMap>

namespace pelorin {

// A photo as the image-property model sees it: the container, the number of images, and the
// property dictionary of image 0 (top-level PixelWidth, PixelHeight, Orientation, DPIWidth,
// DPIHeight, Depth, ColorModel, ProfileName, HasAlpha, and the groups "{TIFF}", "{Exif}",
// "{GPS}", "{IPTC}", "{XMP}", "{ExifAux}", "{JFIF}", "{PNG}", "{GIF}" and the maker groups).
struct PhotoProperties {
    PhotoFormat format;
    int imageCount = 0;
    QVariantMap properties;
    QString error;  // why the photo could not be read; empty on success

    bool ok() const { return error.isEmpty(); }
};

// Files larger than this are not read into memory as photos.
constexpr qint64 kMaxPhotoFileSize = qint64(2) * 1024 * 1024 * 1024 - 1;

PhotoProperties readPhotoProperties(const QString& path);
// The same for bytes already in memory; the extension helps tell TIFF-based RAW kinds apart.
// HEIF and AVIF are read from their file only: for them this gives an error.
PhotoProperties readPhotoProperties(const QByteArray& bytes, const QString& extension);

}  // namespace pelorin

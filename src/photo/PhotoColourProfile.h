#pragma once

#include <QByteArray>
#include <QString>

namespace pelorin {

// The ICC profile a photo's pixels are meant to be seen through: libheif's for HEIF/AVIF,
// exiv2's for every other kind. Empty when the photo has none or cannot be read.
QByteArray readPhotoIccProfile(const QString& path, const QByteArray& bytes);

}  // namespace pelorin

#pragma once
// The pixels of a HEIC/HEIF/AVIF file, through libheif.
#include <QImage>
#include <QString>

namespace pelorin {

// The primary image as 8-bit RGB (RGBA when it has alpha), upright, and scaled down so that its
// longer side is at most maxSide when maxSide > 0. When the file carries a thumbnail of the
// primary image at least maxSide big, that is decoded instead, which is far cheaper. A null
// image with the reason on failure.
QImage decodeHeifImage(const QString& path, int maxSide, QString* error = nullptr);

}  // namespace pelorin

#pragma once

#include "photo/PhotoRewrite.h"

#include <QByteArray>

#include <optional>

namespace pelorin {

// Completes a removal on a PNG that exiv2 has rewritten. Converters and editors keep metadata in
// text chunks exiv2 leaves alone: ImageMagick one "exif:<tag>" chunk per EXIF value and the
// Photoshop resources as "Raw profile type 8bim", exiftool "Creation Time", "Author", "Make" and
// the like. Removing everything drops every text chunk (but the EXIF profile exiv2 wrote for
// the kept orientation) and the modification time; removing EXIF, GPS or IPTC drops the chunks
// that hold values of that group. Nullopt when the chunks are broken.
std::optional<QByteArray> removePngTextMetadata(const QByteArray& png, const PhotoChanges& changes);

}  // namespace pelorin

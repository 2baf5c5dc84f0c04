#pragma once

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace pelorin {

// The TIFF block of a JPEG's first Exif segment (what follows "Exif\0\0"); empty when it has none.
QByteArray jpegExifBlock(const QByteArray& jpeg);

// The JPEG with the maker note of sourceExif (a TIFF block) put back into its Exif segment as
// exifWithMakerNoteKept does; the JPEG as it is where that is not done or the block would not
// fit in one segment.
QByteArray jpegWithMakerNoteOf(const QByteArray& sourceExif, const QByteArray& jpeg,
                               const std::optional<QStringList>& sourceValues = std::nullopt);

// True when the JPEG's Exif block holds the maker note of sourceExif at the offset it has there,
// byte for byte, or sourceExif has none.
bool jpegKeepsMakerNoteOf(const QByteArray& sourceExif, const QByteArray& jpeg);

}  // namespace pelorin

#pragma once

#include <QByteArray>

#include <optional>

namespace pelorin {

// A JPEG whose EXIF goes on in the "Exif" APP1 segments right after the first (a block split
// over several segments, each one's data following on from the last, not a TIFF header of its
// own), with those segments joined into the first, so that a reader of one segment sees all of
// it. The JPEG as it is when its EXIF is in one segment; nothing when the joined block does not
// fit in one segment.
std::optional<QByteArray> jpegWithExifContinuationsJoined(const QByteArray& jpeg);

}  // namespace pelorin

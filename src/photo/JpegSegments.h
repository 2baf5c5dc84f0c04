#pragma once

#include <QByteArray>

namespace pelorin {

// Drops from a JPEG every marker segment that can carry metadata a privacy clean-up must remove
// (Photoshop resources, comments, extended XMP and the makers' application segments), keeping
// the JFIF header, the Exif segment, the ICC profile, the multi-picture index and Adobe's colour
// transform, which decoders need. The image data and anything after it are copied unchanged.
QByteArray dropMetadataSegments(const QByteArray& jpeg);

}  // namespace pelorin

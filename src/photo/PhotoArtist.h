#pragma once

#include <QString>

namespace pelorin {

// The photo's author as the media table shows it: EXIF Artist, else IPTC By-line, else XMP
// dc:creator; empty when it has none or cannot be read. Reads only the metadata blocks, not the
// whole file, so that it is cheap enough for an import of thousands of photos.
QString readPhotoArtist(const QString& path);

}  // namespace pelorin

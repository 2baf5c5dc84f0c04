#pragma once

#include "photo/PhotoFormats.h"

#include <QByteArray>
#include <QString>

namespace pelorin {

// The reason given for a photo whose image data is not all there.
QString damagedPhotoReason();

// True when every piece of image data the container points to lies inside the file: the strips
// and tiles of each TIFF directory (TIFF and the TIFF-based RAW kinds), a JPEG's scan up to its
// end marker, a PNG's chunks up to IEND, the top-level boxes of a HEIF file and a WebP's RIFF
// size. A truncated copy parses as metadata but writes out as an unreadable picture, so writers
// check this first. Kinds it cannot check count as complete. Bounded by the file's size.
bool photoDataComplete(const QByteArray& bytes, const PhotoFormat& format);

// The same for a file on disk, for commands that copy a photo without parsing it; false when
// the file cannot be read.
bool photoFileComplete(const QString& path);

}  // namespace pelorin

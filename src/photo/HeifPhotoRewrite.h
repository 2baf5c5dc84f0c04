#pragma once

#include "photo/PhotoFormats.h"
#include "photo/PhotoRewrite.h"

namespace pelorin {

// Writes a HEIC/HEIF/AVIF photo with its Exif and XMP items changed as a JPEG's segments would
// be; images, properties and every other item are kept byte for byte. The output is read back
// through libheif before it takes its name.
PhotoWriteResult rewriteHeifPhoto(const QString& sourcePath, const PhotoFormat& format, const PhotoChanges& changes,
                                  const QString& outputPath, const PhotoWriteOptions& options);

}  // namespace pelorin

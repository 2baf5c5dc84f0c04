#pragma once

#include "photo/PhotoFormats.h"
#include "photo/PhotoRewrite.h"

namespace pelorin {

// Writes a Canon CR3 raw with its CMT1 (IFD0), CMT2 (Exif) and CMT4 (GPS) directories and its
// XMP packet changed as a JPEG's segments would be; the maker notes, the previews and every
// track byte stay as they are. The output is read back before it takes its name.
PhotoWriteResult rewriteCr3Photo(const QString& sourcePath, const PhotoFormat& format, const PhotoChanges& changes,
                                 const QString& outputPath, const PhotoWriteOptions& options);

}  // namespace pelorin

#pragma once

#include "photo/Exiv2Model.h"
#include "photo/PhotoRewrite.h"

namespace pelorin {

// Applies a rewrite's changes to metadata held by exiv2: a removal of everything first, then
// each named group; XMP mirrors of EXIF dates and GPS follow unless the caller set XMP itself.
void applyPhotoChanges(exiv2_model::Metadata metadata, const PhotoChanges& changes, QStringList* warnings);

// Only the removals among the changes (null groups, removal of everything).
PhotoChanges removalsOf(const PhotoChanges& changes);

}  // namespace pelorin

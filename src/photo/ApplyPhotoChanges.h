#pragma once

#include "photo/Exiv2Model.h"
#include "photo/PhotoRewrite.h"

namespace pelorin {

// Applies a rewrite's changes to metadata held by exiv2: a removal of everything first, then
// each named group; XMP mirrors of EXIF dates and GPS follow unless the caller set XMP itself.
// holds says whether the EXIF directories describe the file's image too (TIFF-based files).
void applyPhotoChanges(exiv2_model::Metadata metadata, const PhotoChanges& changes, QStringList* warnings,
                       exiv2_model::ExifHolds holds = exiv2_model::ExifHolds::MetadataOnly);

// Only the removals among the changes (null groups, removal of everything).
PhotoChanges removalsOf(const PhotoChanges& changes);

// True when the changes leave the maker notes as the source has them: nothing removes them
// (all metadata, the Exif group) or names a maker group.
bool keepsMakerNotes(const PhotoChanges& changes);

}  // namespace pelorin

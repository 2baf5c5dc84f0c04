#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"

namespace pelorin {

enum class MetadataRemoval {
    Exif,        // the Exif directory, its maker notes, and the XMP exif/tiff/aux mirrors
    Gps,         // GPS in EXIF and in XMP
    Iptc,
    ExifAndGps,
    All,         // everything but the ICC profile and the orientation
};

// Writes a copy of every selected photo with the metadata removed into the storage folder:
// computer photos under their own names, camera photos (their downloaded copies) under
// "NoExif_", "NoGPS_", "NoIPTC_" or "NoExifAndGPS_" names. Reveals as each command always has.
CommandResult removePhotoMetadata(MetadataRemoval what, const PhotoSelection& selection,
                                  const CommandContext& context);

// The output name prefix of a camera photo for each removal.
QString cameraOutputPrefix(MetadataRemoval what);

}  // namespace pelorin

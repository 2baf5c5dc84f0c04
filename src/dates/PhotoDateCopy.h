#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"

namespace pelorin {

// The one-click commands that copy one date (or the file name) of each photo to another place.
enum class DateCopy {
    ExifToCreated,      // DateTimeOriginal -> file dates (a camera photo: its creation date only)
    NameToComment,      // file name without its extension -> {Exif}/UserComment
    CreatedToCamera,    // file creation date -> DateTimeOriginal, DateTimeDigitized, TIFF DateTime
    CreatedToModified,  // file creation date -> file modification date
    ModifiedToCreated,  // file modification date -> file creation date
};

// Writes each selected photo's output with the date copied. Dates read from files are taken
// on the local clock, as the metadata dates they meet are.
CommandResult copyPhotoDate(DateCopy what, const PhotoSelection& selection, const CommandContext& context);

}  // namespace pelorin

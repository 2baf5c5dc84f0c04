#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"

#include <QString>

namespace pelorin {

// The two fields of the date dialog, as typed (EXIF or dash form).
struct PhotoDateEdit {
    QString original;   // DateTimeOriginal and TIFF DateTime; also both file dates
    QString digitized;  // DateTimeDigitized
};

// Writes each selected photo with the new capture dates (in EXIF form) and gives the output
// both file dates from the original date as local time. Either text not a date: the
// "Invalid date format" alert and nothing written.
CommandResult savePhotoDates(const PhotoSelection& selection, const PhotoDateEdit& edit,
                             const CommandContext& context);

// Copies each selected photo unchanged and gives the copy both file dates from the original
// date as local time (a camera photo's own downloaded copy only gets the dates).
CommandResult savePhotoFileDates(const PhotoSelection& selection, const PhotoDateEdit& edit,
                                 const CommandContext& context);

}  // namespace pelorin

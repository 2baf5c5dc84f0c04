#pragma once

#include "dates/DateSpan.h"
#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"

#include <QString>

namespace pelorin {

// The fields of the batch date dialog. The mode follows from what is filled in: a reference
// photo -> every photo moves by the two differences between its before and after dates; else
// a fixed date -> every photo gets it; else every photo moves by the span.
struct BatchDateRequest {
    QString referencePhoto;
    QString beforeOriginal;   // empty: read from the reference photo
    QString beforeDigitized;  // empty: read from the reference photo
    QString afterOriginal;
    QString afterDigitized;
    QString fixedDate;
    DateSpan span;
    bool add = false;  // otherwise the span is subtracted
};

// Writes every selected photo with its dates changed and gives the outputs matching file
// dates. A photo with no EXIF date at all is copied as it is, with shifted file dates.
CommandResult shiftPhotoDates(const PhotoSelection& selection, const BatchDateRequest& request,
                              const CommandContext& context);

// Copies every selected photo unchanged and changes only the copies' file dates.
CommandResult shiftPhotoFileDates(const PhotoSelection& selection, const BatchDateRequest& request,
                                  const CommandContext& context);

}  // namespace pelorin

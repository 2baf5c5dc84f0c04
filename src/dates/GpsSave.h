#pragma once

#include "dates/GpsGroup.h"
#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"

namespace pelorin {

// Writes every selected photo with its whole GPS group replaced by the one the input gives.
// The outputs' file dates become "<date stamp> <time stamp>" as local time when that is a
// date, and are left alone otherwise. Invalid input: the "Vaule Error" alert, nothing written.
CommandResult savePhotoGps(const PhotoSelection& selection, const GpsInput& input,
                           const CommandContext& context);

}  // namespace pelorin

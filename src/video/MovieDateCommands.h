#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"

#include <QStringList>

namespace pelorin {

// For each movie, the date its file name gives becomes its recording date (every place, see
// writeMovieRecordingDate) in a copy under its own name in the storage folder; the copy's file
// dates are set to that date, taken as local time. Names without a date are skipped.
CommandResult movieDatesFromFileNames(const QStringList& files, const CommandContext& context);

// For each movie, a byte copy in the storage folder whose file dates are its recording date
// (its shooting date, or a date found in the shooting date text). Movies without one are skipped.
CommandResult movieShootDatesToFileDates(const QStringList& files, const CommandContext& context);

// For each movie, its file's creation date becomes its recording date (every place) in a copy
// whose file dates are that date too. Files whose creation date is unknown are skipped.
CommandResult movieCreationDatesToRecordingDates(const QStringList& files, const CommandContext& context);

}  // namespace pelorin

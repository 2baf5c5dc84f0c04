#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "video/MovieChanges.h"

#include <QStringList>

namespace pelorin {

// Writes, for each movie, a copy under its own name into the storage folder with the changes
// made and every other item, box and media byte kept: a text goes into each form the movie
// already holds the field in, or into the field's new identifier; the copy gets the movie's
// file dates, or the created date when one is given. A recording date and a location go into every
// place players and libraries read them. An invalid date or location raises the alert and
// writes nothing; movies that cannot be rewritten are skipped with the reason.
CommandResult saveMovieFields(const QStringList& files, const MovieChanges& changes, const CommandContext& context);

}  // namespace pelorin

#pragma once
#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/SafeOutput.h"

#include <QStringList>
#include <functional>

namespace pelorin {

// The work of a movie command for one movie: its output is "<storage>/<file name>".
using MovieWork = std::function<void(const QString& file, const QString& target, CommandResult& result)>;

// How the work writes its outputs: not forced to disk one by one, since forEachMovie flushes the
// storage folder's file system once after the last movie (one flush instead of one per movie).
inline constexpr Durability kMovieBatchDurability = Durability::Deferred;

// Runs the work for each movie in turn after making the storage folder (a folder that cannot be
// made skips every movie with the reason), until the user cancels, reporting progress after
// every movie, then flushes what was written.
CommandResult forEachMovie(const QStringList& files, const CommandContext& context, const MovieWork& work);

}  // namespace pelorin

#pragma once
#include "model/CommandContext.h"
#include "model/CommandResult.h"

#include <QStringList>
#include <functional>

namespace pelorin {

// The work of a movie command for one movie: its output is "<storage>/<file name>".
using MovieWork = std::function<void(const QString& file, const QString& target, CommandResult& result)>;

// Runs the work for each movie in turn after making the storage folder (a folder that cannot be
// made skips every movie with the reason), until the user cancels, reporting progress after
// every movie.
CommandResult forEachMovie(const QStringList& files, const CommandContext& context, const MovieWork& work);

}  // namespace pelorin

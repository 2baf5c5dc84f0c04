#pragma once
#include "model/CommandContext.h"
#include "model/CommandResult.h"

#include <QStringList>

namespace pelorin {

// Writes a copy of each song and movie without its metadata, each through its own kind's
// removal; photos and other files are passed over with the reason. Progress counts every file
// given, and the batch stops when cancelled.
CommandResult removeMediaMetadata(const QStringList& paths, const CommandContext& context);

}  // namespace pelorin

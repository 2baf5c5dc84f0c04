#pragma once
#include "model/CommandResult.h"

#include <QString>

namespace pelorin {

// The one line the window shows when a command ends: what was written and what was skipped (or,
// for a command that writes nothing, its first note).
QString resultHeadline(const CommandResult& result, bool cancelled);
// The reasons behind it, one line per skipped file, then the notes; empty when there are none.
QString resultDetails(const CommandResult& result);

}  // namespace pelorin

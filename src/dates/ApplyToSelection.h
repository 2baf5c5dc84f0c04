#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"
#include "photo/PhotoRewrite.h"

#include <QDateTime>
#include <QString>

#include <functional>
#include <optional>

namespace pelorin {

// The changes one photo gets, worked out from the photo at inputPath; nullopt with a reason
// skips that photo, nullopt without one passes over a photo that needs no change.
using PhotoChangesFor = std::function<std::optional<PhotoChanges>(const QString& inputPath, QString* reason)>;

// Writes every selected photo with its changes: computer photos to "<storage>/<fileName>",
// camera photos (their downloaded copies there) rewritten in place. Each output is revealed.
// A valid outputDate becomes both file dates of every output; otherwise an output carries the
// time it was written. Honours the dry run, progress and cancellation of the context.
CommandResult applyToSelection(const PhotoSelection& selection, const PhotoChangesFor& changesFor,
                               const CommandContext& context, const QDateTime& outputDate = {});

}  // namespace pelorin

#pragma once

#include "dates/ApplyGroupEdits.h"
#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"
#include "photo/PhotoFields.h"

#include <optional>

namespace pelorin {

// The alert for a value that can be judged without a photo: a camera date that is no date
// ("Invalid date format"), or a location whose latitude and longitude are not both given and
// valid ("Vaule Error"). None when every value may be written.
std::optional<Alert> photoFieldChangesAlert(const PhotoFieldChanges& changes);

// The edits that bring a photo with these properties to the changed texts: fields whose stored
// text already equals the new one are left out. Texts are written trimmed; keywords are split at
// commas; the camera date goes in EXIF form. A location edit rebuilds the whole GPS group from
// the photo's own location texts with the changed ones laid over them; emptying every location
// field removes the group. Nullopt with the reason when the location this gives is incomplete.
std::optional<GroupEdits> photoFieldEdits(const QVariantMap& properties, const PhotoFieldChanges& changes,
                                          QString* reason);

// Writes the changes into every selected photo (outputs as every photo command names them).
// Each photo is read once; one whose stored texts already hold every change is not written.
// Progress is reported per photo and the batch stops when cancelled. A bad value raises its
// alert before any photo is read; no changes: nothing written and no alert.
CommandResult applyPhotoFieldChanges(const PhotoSelection& selection, const PhotoFieldChanges& changes,
                                     const CommandContext& context);

}  // namespace pelorin

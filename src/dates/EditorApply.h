#pragma once

#include "dates/ApplyGroupEdits.h"
#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"
#include "photo/PhotoEditorFields.h"

#include <optional>

namespace pelorin {

struct EditorEdits {
    GroupEdits edits;            // empty when no field differs from its old text
    std::optional<Alert> alert;  // "Invalid date format" or "Vaule Error": nothing may be written
};

// The values the editor's apply writes: only the fields whose text differs from the old one.
// Title and keywords (split at commas) go to "{IPTC}" ObjectName and Keywords; artist,
// description, copyright, camera make and model to "{TIFF}"; comments and the camera date (in
// EXIF form) to "{Exif}" UserComment and DateTimeDigitized; the GPS fields, when any changed,
// through the GPS group builder. An emptied field removes its value; emptying every GPS field
// removes the location.
EditorEdits editorEdits(const PhotoEditorTexts& fields, const PhotoEditorTexts& old);

// Writes the changed fields into every selected photo (outputs as every photo command names
// them). Nothing changed: nothing written and no alert.
CommandResult applyPhotoEditorChanges(const PhotoEditorTexts& fields, const PhotoEditorTexts& old,
                                      const PhotoSelection& selection, const CommandContext& context);

}  // namespace pelorin

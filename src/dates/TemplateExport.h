#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "photo/PhotoEditorFields.h"

#include <QVariantMap>

#include <optional>

namespace pelorin {

struct TemplateDictionary {
    QVariantMap values;
    std::optional<Alert> alert;  // "Vaule Error" when a coordinate field holds no number
};

// The flat template of the editor's fields: every text field as text (the keywords as one
// text; the camera make and model also as the lens make and model), the coordinates as signed
// reals with their "N"/"S" and "E"/"W" references. An empty coordinate field gives neither the
// coordinate nor its reference, so that applying the template leaves the photo's location alone
// instead of moving it to 0, 0.
TemplateDictionary templateDictionary(const PhotoEditorTexts& fields);

// Writes the template to "<storage>/templatefile.plist" and reveals it.
CommandResult exportTemplatePlist(const PhotoEditorTexts& fields, const CommandContext& context);

}  // namespace pelorin

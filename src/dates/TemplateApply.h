#pragma once

#include "dates/ApplyGroupEdits.h"
#include "model/CommandResult.h"

#include <QVariantMap>

#include <optional>

namespace pelorin {

struct TemplateEdits {
    GroupEdits edits;
    bool hasTemplateKeys = false;  // false for a dictionary that is no template at all
    std::optional<Alert> alert;    // an invalid date or location: nothing may be written
};

// What a template dictionary does to a photo: each non-empty value is set in its group (lens
// make and model, digitized date in EXIF form and comment in "{Exif}"; artist, description,
// copyright, make and model in "{TIFF}"; keywords and title in "{IPTC}"), an empty one leaves
// the photo's value alone. The location is set through the GPS group builder when the template
// has both coordinates (a missing altitude counts as 0); otherwise "{GPS}" is left alone.
TemplateEdits templateEdits(const QVariantMap& templ);

}  // namespace pelorin

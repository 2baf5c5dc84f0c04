#pragma once

#include "photo/PhotoEditorFields.h"
#include "photo/PhotoProperties.h"

#include <QString>

namespace pelorin {

// Everything shown of one photo: its properties as read, and (when they could be read) the
// editor's fields filled from them and from the file's name, dates and size.
struct PhotoInspection {
    PhotoProperties photo;
    PhotoEditorFill fill;  // empty when the photo could not be read
};

// Inspects the photo at path. shownName is the name the fields show (a record's name, when path
// is its edited copy); empty: the file's own name.
PhotoInspection inspectPhoto(const QString& path, const QString& shownName = {});

}  // namespace pelorin

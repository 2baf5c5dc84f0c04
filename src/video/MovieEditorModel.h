#pragma once

#include "model/IKImageItem.h"
#include "video/MovieChanges.h"

#include <QString>
#include <QStringList>

namespace pelorin {

// The information lines of the video editor, in display order: "File Name: clip.mov", ...;
// a line whose value is missing shows its caption alone ("Record Date:").
QStringList movieInformationLines(const IKImageItem& item);

// The texts the editor's lines of a field show for a record, one per input of the field: the
// record's text, or for the location the signed "%lf" texts of its coordinates (empty when the
// record has none).
QStringList movieEditorTexts(const IKImageItem& item, MovieField field);

// Adds what the user changed in the lines of one field, given the texts they showed and hold
// now: nothing when they are unchanged; a text field emptied is removed; a changed location
// goes in whole when latitude and longitude are both given, and is left alone otherwise.
void addEditedField(MovieChanges& changes, MovieField field, const QStringList& shown, const QStringList& typed);

}  // namespace pelorin

#pragma once

#include <QImage>
#include <QPixmap>

namespace pelorin {

// The badge of a record whose edits live in its working copy: an orange disc with a pencil,
// drawn rather than taken from a font, so that it looks the same on every system.
QPixmap editedMark(int side);

// The thumbnail with the badge in its lower right corner.
QImage withEditedMark(const QImage& thumbnail);

}  // namespace pelorin

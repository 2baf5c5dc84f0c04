#pragma once

#include <QByteArray>

namespace pelorin {

// The ICC profile exiv2 finds in a photo whose other metadata it cannot carry into a new file
// (the read-only RAW kinds). Empty when the photo has none or cannot be read.
QByteArray readPhotoIccProfile(const QByteArray& bytes);

}  // namespace pelorin

#pragma once
// The read-back of an output that is an encoded picture of our own making (a re-encoded photo,
// a thumbnail, exported artwork): it must decode as the format it was written in, at the size
// it was made with.
#include <QByteArray>
#include <QSize>
#include <QString>

namespace pelorin {

// Why the picture at path is not the one that was written, or empty. format is the Qt image
// format name ("JPEG", "PNG"); an invalid expectedSize accepts any size.
QString encodedImageProblem(const QString& path, const QByteArray& format, QSize expectedSize);

}  // namespace pelorin

#pragma once

#include <QString>

namespace pelorin {

// Why the header object of an ASF (WMA) file does not hold together: an object smaller than
// its own header, one that runs past the header, or a count of objects that does not fill it.
// TagLib rewrites such a header in its own reading, which is not what other readers see.
// Empty when the header is sound.
QString asfHeaderProblem(const QString& path);

}  // namespace pelorin

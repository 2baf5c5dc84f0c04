#pragma once

#include <QString>

namespace pelorin {

// The read-back of a stream-copy remux: the output opens with FFmpeg and holds the source's
// streams with the same codec parameters, and per stream the same number of packets with the
// same data (a checksum over every packet, in order). Why not, or empty.
QString remuxReadBackProblem(const QString& sourcePath, const QString& outputPath);

}  // namespace pelorin

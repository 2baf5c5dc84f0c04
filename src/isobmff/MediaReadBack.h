#pragma once

#include "isobmff/BoxTree.h"

#include <QString>

namespace pelorin {

// Why a rewritten ISO base media file must not be kept, or empty: its boxes must read to the
// end of the file, and when the source has a movie box the output's chunk tables must hold as
// many chunks, each in the same media box as in the source and as far from its start (a chunk
// offset that missed a move points elsewhere), and a sample of chunks (every chunk outside a
// media box) must start with the bytes the source's start with. Only the heads of chunks are
// read: the media in between is copied by the kernel as whole ranges, or shared with the source
// where the file system clones, and reading it back would cost more than the write.
QString isoMediaReadBackProblem(FileByteSource& source, const BoxTree& sourceTree, const QString& pendingPath);

}  // namespace pelorin

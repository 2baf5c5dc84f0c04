#pragma once

#include "isobmff/BoxTree.h"

#include <QString>

namespace pelorin {

// Why a rewritten ISO base media file must not be kept, or empty: its boxes must read to the
// end of the file, and when the source has a movie box the output's chunk tables must hold as
// many chunks, each starting with the bytes the source's chunk starts with (a chunk offset that
// missed a move points at other bytes). Only the head of each chunk is compared: the media in
// between is copied by the kernel as whole ranges, and reading it back twice would cost more
// than the write.
QString isoMediaReadBackProblem(FileByteSource& source, const BoxTree& sourceTree, const QString& pendingPath);

}  // namespace pelorin

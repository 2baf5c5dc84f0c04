#pragma once

#include <functional>

#include "isobmff/BoxNode.h"
#include "isobmff/BoxTree.h"
#include "model/SafeOutput.h"

#include <QString>

#include <cstddef>
#include <vector>

namespace pelorin {

// A new version of one top-level box of the source ('moov', or a file-level 'meta').
struct TopLevelEdit {
    std::size_t index = 0;  // into BoxTree::boxes
    BoxNode replacement;
};

struct RewriteReport {
    bool written = false;
    QString error;                  // why nothing was written
    bool offsetsShifted = false;    // the media data moved and the chunk offsets followed
    bool paddingUsed = false;       // a 'free' box took up the change in size
};

// Writes target as the source with the edited boxes in place of the old ones. Every other box,
// the media data above all, is copied byte for byte in the kernel. When the size change moves
// the media data the chunk offsets follow; a following 'free' box absorbs the change where it
// can, and a shrunken box leaves a 'free' box behind, so the media stays where it was.
// Fragmented files and anything that cannot be rewritten safely are refused; nothing is left
// under the target's name then.
// A look at the finished output before it takes its name: the reason it must not, or empty.
using OutputCheck = std::function<QString(const QString& pendingPath)>;

RewriteReport rewriteTopLevelBoxes(const QString& sourcePath, const BoxTree& tree,
                                   std::vector<TopLevelEdit> edits, const QString& targetPath,
                                   Durability durability = Durability::FlushEach, const OutputCheck& check = {});

// Why the file cannot be rewritten at all, or empty when it can.
QString rewriteRefusal(const BoxTree& tree);

}  // namespace pelorin

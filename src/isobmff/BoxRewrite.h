#pragma once

#include <functional>

#include "isobmff/BoxNode.h"
#include "isobmff/BoxTree.h"
#include "model/SafeOutput.h"

#include <QString>

#include <cstddef>
#include <optional>
#include <vector>

namespace pelorin {

struct TopLevelEdit;
// Where each byte of the source lands in the output; nullopt when it does not survive.
// (The same as OffsetMap in ChunkOffsets.h.)
using PlaceEdit = std::function<bool(TopLevelEdit& edit, std::int64_t outputOffset,
                                     const std::function<std::optional<std::int64_t>(std::int64_t)>& map,
                                     QString* error)>;

// A new version of one top-level box of the source ('moov', or a file-level 'meta').
struct TopLevelEdit {
    std::size_t index = 0;  // into BoxTree::boxes
    BoxNode replacement;
    std::vector<BoxNode> inserted;  // new boxes written right after the replacement
    // Once the output's layout is known: moves the file offsets the replacement holds through
    // the map, and sets those that point into the inserted boxes, the replacement starting at
    // outputOffset. Without it the chunk offsets and item locations are moved for the edit. It
    // must not change any box's size.
    PlaceEdit place;
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
// Bytes of the source that go out as zeros: data no longer referenced that must not survive in
// the copy (a removed metadata item inside the media data, say). Each lies within one box that
// is copied.
struct SourceRange {
    std::int64_t offset = 0;
    std::int64_t length = 0;
};

struct RewriteOutput {
    Durability durability = Durability::FlushEach;
    OutputCheck check;
    bool mayReplaceSource = false;  // the target may be the source itself (our own earlier copy)
};

RewriteReport rewriteTopLevelBoxes(const QString& sourcePath, const BoxTree& tree,
                                   std::vector<TopLevelEdit> edits, const QString& targetPath,
                                   const RewriteOutput& output = {}, std::vector<SourceRange> blanked = {});

// Why the file cannot be rewritten at all, or empty when it can.
QString rewriteRefusal(const BoxTree& tree);

}  // namespace pelorin

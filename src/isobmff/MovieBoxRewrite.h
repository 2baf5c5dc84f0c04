#pragma once

#include "isobmff/BoxRewrite.h"

#include <functional>

namespace pelorin {

// The largest movie box loaded into memory for editing.
inline constexpr std::int64_t kMaxEditedMovieBox = std::int64_t(256) << 20;

// An edit of the movie box in memory; false with the reason.
using MovieBoxEditor = std::function<bool(BoxNode& moov, QString* error)>;
// Further edits of other top-level boxes of the file (appended to edits); false with the reason.
using FileLevelEditor = std::function<bool(const BoxTree& tree, std::vector<TopLevelEdit>& edits, QString* error)>;

// Writes target as the MP4-family source with its movie box edited; every other box and every
// media byte is kept (see rewriteTopLevelBoxes). Files that are no MP4-family movie, or that
// cannot be rewritten safely, are refused with the reason and nothing is written.
RewriteReport rewriteMovieBox(const QString& sourcePath, const QString& targetPath, const MovieBoxEditor& edit,
                              Durability durability = Durability::FlushEach, const FileLevelEditor& fileLevel = {},
                              const OutputCheck& check = {});

}  // namespace pelorin

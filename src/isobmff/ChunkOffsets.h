#pragma once

#include "isobmff/BoxNode.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace pelorin {

// Where a byte of the old file lands in the new one; nullopt when it does not survive.
using OffsetMap = std::function<std::optional<std::int64_t>(std::int64_t)>;

// Moves every chunk offset ('stco', 'co64') and item location ('iloc') below the node through
// the map. Fails, leaving the node unspecified, when an offset has no new place or no longer fits
// its field.
bool remapChunkOffsets(BoxNode& node, const OffsetMap& map, QString* error);

// Every chunk offset of the 'stco' and 'co64' tables below the node, in the order of the boxes.
std::vector<std::int64_t> chunkOffsetsOf(const BoxNode& node);

// True when some box below the node holds file offsets that remapChunkOffsets does not fix.
bool holdsOtherFileOffsets(const BoxNode& node, QString* which);

}  // namespace pelorin

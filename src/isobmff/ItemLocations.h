#pragma once

#include "isobmff/ChunkOffsets.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace pelorin {

// The item location table ('iloc') of a HEIF/AVIF 'meta' box: where each item's bytes are, as
// extents in the file (construction method 0), in the box's own 'idat' (method 1), or in other
// items (method 2).
struct ItemExtent {
    std::uint64_t index = 0;  // only meaningful for method 2
    std::uint64_t offset = 0;
    std::uint64_t length = 0;  // 0: to the end of the data
};

struct ItemLocation {
    std::uint32_t itemId = 0;
    int constructionMethod = 0;
    std::uint16_t dataReferenceIndex = 0;  // 0: this file
    std::uint64_t baseOffset = 0;
    std::vector<ItemExtent> extents;

    bool inThisFile() const { return constructionMethod == 0 && dataReferenceIndex == 0; }
    bool inItemData() const { return constructionMethod == 1; }
};

struct ItemLocationTable {
    int version = 1;
    int offsetSize = 4;  // field widths in bytes: 0, 4 or 8
    int lengthSize = 4;
    int baseOffsetSize = 0;
    int indexSize = 0;
    std::vector<ItemLocation> items;

    ItemLocation* find(std::uint32_t itemId);
    const ItemLocation* find(std::uint32_t itemId) const;
    // Makes the version and field widths large enough for every value in the table, with file
    // offsets up to maxFileOffset.
    void widenToFit(std::uint64_t maxFileOffset);
};

// Nullopt with the reason when the payload is not a whole table.
std::optional<ItemLocationTable> parseItemLocations(const QByteArray& payload, QString* error);

// The payload of the table with its present widths; a value too wide for its field is an error
// the caller prevents with widenToFit.
QByteArray serializeItemLocations(const ItemLocationTable& table);

// Moves the extents of one item held in this file (method 0) through the map, keeping the
// widths of the table. False with the reason when an extent has no new place or the new
// offsets do not fit.
bool remapItemLocation(ItemLocation& item, const ItemLocationTable& table, const OffsetMap& map, QString* error);

// True when every offset and length of the table fits its field.
bool valuesFitWidths(const ItemLocationTable& table);

// Moves every extent held in this file (method 0) through the map, keeping the table's size.
// Fails when an extent has no new place or no longer fits its field.
bool remapItemLocations(QByteArray& ilocPayload, const OffsetMap& map, QString* error);

}  // namespace pelorin

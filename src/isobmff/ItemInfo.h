#pragma once

#include "isobmff/BoxNode.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

namespace pelorin {

// One entry ('infe') of the item information box of a HEIF/AVIF 'meta'.
struct ItemInfoEntry {
    int version = 2;
    std::uint32_t itemId = 0;
    QByteArray itemType;     // "hvc1", "grid", "Exif", "mime", ...; empty before version 2
    QByteArray contentType;  // of 'mime' items: "application/rdf+xml" for XMP
    bool hidden = false;

    bool isExif() const { return itemType == "Exif"; }
    bool isXmp() const { return itemType == "mime" && contentType == "application/rdf+xml"; }
};

// Nullopt when the entry is damaged.
std::optional<ItemInfoEntry> parseItemInfoEntry(const QByteArray& infePayload);

// A new entry box: version 2 (3 for identifiers beyond 16 bits), no name.
BoxNode makeItemInfoEntry(std::uint32_t itemId, const QByteArray& itemType, const QByteArray& contentType = {});

// Sets the entry count of an 'iinf' to its number of 'infe' children.
void updateItemInfoCount(BoxNode& iinf);

// The primary item named by a 'pitm' payload; nullopt when damaged.
std::optional<std::uint32_t> primaryItemOf(const QByteArray& pitmPayload);

// Takes the item's entry out of a property association box ('ipma'); false when the box is
// damaged.
bool removeItemAssociations(QByteArray& ipmaPayload, std::uint32_t itemId);

}  // namespace pelorin

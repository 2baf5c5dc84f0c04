#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace pelorin {

// The item references ('iref') of a HEIF/AVIF 'meta': typed links from one item to others
// ('cdsc': describes, 'thmb': thumbnail of, 'dimg': derived from, 'auxl': auxiliary of, ...).
struct ItemReference {
    QByteArray type;
    std::uint32_t from = 0;
    std::vector<std::uint32_t> to;
};

struct ItemReferenceTable {
    int version = 0;
    std::vector<ItemReference> references;

    // Drops every link from or to the item; a reference left pointing nowhere goes too.
    void removeItem(std::uint32_t itemId);
    // The items this one refers to with that type.
    std::vector<std::uint32_t> targetsOf(const QByteArray& type, std::uint32_t from) const;
};

// Nullopt with the reason when the payload is damaged.
std::optional<ItemReferenceTable> parseItemReferences(const QByteArray& payload, QString* error);

// The payload; the version grows when an identifier needs 32 bits.
QByteArray serializeItemReferences(const ItemReferenceTable& table);

}  // namespace pelorin

#include "isobmff/ItemReferences.h"

#include "isobmff/BoxTree.h"

#include <algorithm>

namespace pelorin {

namespace {

void appendId(QByteArray& out, std::uint32_t id, bool wide)
{
    if (wide) {
        appendU32(out, id);
    } else {
        out.append(char(id >> 8));
        out.append(char(id));
    }
}

}  // namespace

void ItemReferenceTable::removeItem(std::uint32_t itemId)
{
    for (ItemReference& reference : references)
        std::erase(reference.to, itemId);
    std::erase_if(references, [&](const ItemReference& r) { return r.from == itemId || r.to.empty(); });
}

std::vector<std::uint32_t> ItemReferenceTable::targetsOf(const QByteArray& type, std::uint32_t from) const
{
    std::vector<std::uint32_t> out;
    for (const ItemReference& reference : references) {
        if (reference.type == type && reference.from == from)
            out.insert(out.end(), reference.to.begin(), reference.to.end());
    }
    return out;
}

std::optional<ItemReferenceTable> parseItemReferences(const QByteArray& payload, QString* error)
{
    auto fail = [&]() -> std::optional<ItemReferenceTable> {
        *error = QStringLiteral("the item reference table is damaged");
        return std::nullopt;
    };
    if (payload.size() < 4)
        return fail();
    ItemReferenceTable table;
    table.version = static_cast<unsigned char>(payload[0]);
    if (table.version > 1)
        return fail();
    const int idWidth = table.version == 0 ? 2 : 4;
    qsizetype pos = 4;
    while (pos < payload.size()) {
        const std::uint32_t size = readU32(payload, pos);
        if (size < 8 + std::uint32_t(idWidth + 2) || size > std::uint64_t(payload.size() - pos))
            return fail();
        const qsizetype end = pos + qsizetype(size);
        ItemReference reference;
        reference.type = payload.mid(pos + 4, 4);
        qsizetype at = pos + 8;
        reference.from = idWidth == 2 ? readU16(payload, at) : readU32(payload, at);
        at += idWidth;
        const std::uint16_t count = readU16(payload, at);
        at += 2;
        if (at + qsizetype(count) * idWidth > end)
            return fail();
        for (std::uint16_t i = 0; i < count; ++i, at += idWidth)
            reference.to.push_back(idWidth == 2 ? readU16(payload, at) : readU32(payload, at));
        table.references.push_back(std::move(reference));
        pos = end;
    }
    return table;
}

QByteArray serializeItemReferences(const ItemReferenceTable& table)
{
    bool wide = table.version >= 1;
    for (const ItemReference& reference : table.references) {
        wide = wide || reference.from > 0xffff;
        for (std::uint32_t id : reference.to)
            wide = wide || id > 0xffff;
    }
    QByteArray out;
    out.append(char(wide ? 1 : 0));
    out.append(3, '\0');
    for (const ItemReference& reference : table.references) {
        QByteArray box;
        appendId(box, reference.from, wide);
        box.append(char(reference.to.size() >> 8));
        box.append(char(reference.to.size()));
        for (std::uint32_t id : reference.to)
            appendId(box, id, wide);
        appendU32(out, std::uint32_t(8 + box.size()));
        out.append(reference.type);
        out.append(box);
    }
    return out;
}

}  // namespace pelorin

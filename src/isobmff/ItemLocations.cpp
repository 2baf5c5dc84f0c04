#include "isobmff/ItemLocations.h"

#include "isobmff/BoxTree.h"

namespace pelorin {

namespace {

class Reader {
public:
    explicit Reader(const QByteArray& bytes) : bytes_(bytes) {}

    bool has(qsizetype count) const { return pos_ + count <= bytes_.size(); }
    std::uint64_t take(int width)
    {
        std::uint64_t value = 0;
        for (int i = 0; i < width; ++i)
            value = (value << 8) | static_cast<unsigned char>(bytes_[pos_ + i]);
        pos_ += width;
        return value;
    }
    qsizetype left() const { return bytes_.size() - pos_; }

private:
    const QByteArray& bytes_;
    qsizetype pos_ = 0;
};

void put(QByteArray& out, std::uint64_t value, int width)
{
    for (int i = width - 1; i >= 0; --i)
        out.append(char(value >> (8 * i)));
}

bool fits(std::uint64_t value, int width)
{
    return width >= 8 || value < (std::uint64_t(1) << (8 * width));
}

int widthFor(std::uint64_t value, int current)
{
    if (fits(value, current))
        return current;
    return value <= 0xffffffffULL ? 4 : 8;
}

bool validWidth(int width)
{
    return width == 0 || width == 4 || width == 8;
}

}  // namespace

ItemLocation* ItemLocationTable::find(std::uint32_t itemId)
{
    for (ItemLocation& item : items) {
        if (item.itemId == itemId)
            return &item;
    }
    return nullptr;
}

const ItemLocation* ItemLocationTable::find(std::uint32_t itemId) const
{
    return const_cast<ItemLocationTable*>(this)->find(itemId);
}

void ItemLocationTable::widenToFit(std::uint64_t maxFileOffset)
{
    for (const ItemLocation& item : items) {
        if (item.constructionMethod != 0)
            version = std::max(version, 1);
        if (item.itemId > 0xffff)
            version = 2;
        baseOffsetSize = widthFor(item.baseOffset, baseOffsetSize);
        if (item.inThisFile() && !fits(maxFileOffset, offsetSize) && offsetSize > 0)
            offsetSize = 8;
        for (const ItemExtent& extent : item.extents) {
            offsetSize = widthFor(extent.offset, offsetSize);
            lengthSize = widthFor(extent.length, lengthSize);
            if (version >= 1)
                indexSize = widthFor(extent.index, indexSize);
        }
    }
}

std::optional<ItemLocationTable> parseItemLocations(const QByteArray& payload, QString* error)
{
    auto fail = [&](const QString& why) -> std::optional<ItemLocationTable> {
        *error = QStringLiteral("the item location table is damaged (%1)").arg(why);
        return std::nullopt;
    };
    Reader in(payload);
    if (!in.has(6))
        return fail(QStringLiteral("too short"));
    ItemLocationTable table;
    table.version = int(in.take(1));
    in.take(3);  // flags
    if (table.version > 2)
        return fail(QStringLiteral("version %1").arg(table.version));
    const std::uint64_t sizes = in.take(2);
    table.offsetSize = int(sizes >> 12);
    table.lengthSize = int((sizes >> 8) & 15);
    table.baseOffsetSize = int((sizes >> 4) & 15);
    table.indexSize = table.version >= 1 ? int(sizes & 15) : 0;
    if (!validWidth(table.offsetSize) || !validWidth(table.lengthSize) || !validWidth(table.baseOffsetSize)
        || !validWidth(table.indexSize))
        return fail(QStringLiteral("field width"));
    const int idWidth = table.version < 2 ? 2 : 4;
    if (!in.has(idWidth))
        return fail(QStringLiteral("no item count"));
    const std::uint64_t count = in.take(idWidth);
    const int extentWidth = table.indexSize + table.offsetSize + table.lengthSize;
    const int itemMinimum = idWidth + (table.version >= 1 ? 2 : 0) + 2 + table.baseOffsetSize + 2;
    if (count > std::uint64_t(in.left() / itemMinimum))
        return fail(QStringLiteral("more items than bytes"));
    table.items.reserve(count);
    for (std::uint64_t i = 0; i < count; ++i) {
        if (!in.has(itemMinimum))
            return fail(QStringLiteral("item %1 cut short").arg(i));
        ItemLocation item;
        item.itemId = std::uint32_t(in.take(idWidth));
        if (table.version >= 1)
            item.constructionMethod = int(in.take(2) & 15);
        item.dataReferenceIndex = std::uint16_t(in.take(2));
        item.baseOffset = in.take(table.baseOffsetSize);
        const std::uint64_t extents = in.take(2);
        if (extents > std::uint64_t(in.left()) / std::max(extentWidth, 1) || (extentWidth == 0 && extents > 1))
            return fail(QStringLiteral("item %1 has more extents than bytes").arg(item.itemId));
        item.extents.resize(extents);
        for (ItemExtent& extent : item.extents) {
            extent.index = in.take(table.indexSize);
            extent.offset = in.take(table.offsetSize);
            extent.length = in.take(table.lengthSize);
        }
        table.items.push_back(std::move(item));
    }
    return table;
}

QByteArray serializeItemLocations(const ItemLocationTable& table)
{
    QByteArray out;
    put(out, std::uint64_t(table.version), 1);
    put(out, 0, 3);
    put(out, (std::uint64_t(table.offsetSize) << 12) | (std::uint64_t(table.lengthSize) << 8)
                 | (std::uint64_t(table.baseOffsetSize) << 4) | std::uint64_t(table.version >= 1 ? table.indexSize : 0),
        2);
    const int idWidth = table.version < 2 ? 2 : 4;
    put(out, table.items.size(), idWidth);
    for (const ItemLocation& item : table.items) {
        put(out, item.itemId, idWidth);
        if (table.version >= 1)
            put(out, std::uint64_t(item.constructionMethod & 15), 2);
        put(out, item.dataReferenceIndex, 2);
        put(out, item.baseOffset, table.baseOffsetSize);
        put(out, item.extents.size(), 2);
        for (const ItemExtent& extent : item.extents) {
            if (table.version >= 1)
                put(out, extent.index, table.indexSize);
            put(out, extent.offset, table.offsetSize);
            put(out, extent.length, table.lengthSize);
        }
    }
    return out;
}

bool remapItemLocation(ItemLocation& item, const ItemLocationTable& table, const OffsetMap& map, QString* error)
{
    if (!item.inThisFile() || item.extents.empty())
        return true;
    const QString tooFar = QStringLiteral("the item data would move beyond what the item locations reach");
    std::vector<std::int64_t> moved;
    for (const ItemExtent& extent : item.extents) {
        const std::optional<std::int64_t> to = map(std::int64_t(item.baseOffset + extent.offset));
        if (!to) {
            *error = QStringLiteral("item %1 points outside the file's data").arg(item.itemId);
            return false;
        }
        moved.push_back(*to);
    }
    // A base offset moves with the first extent; the extents keep their distance from it.
    if (table.baseOffsetSize > 0) {
        const std::int64_t shift = moved.front() - std::int64_t(item.baseOffset + item.extents.front().offset);
        if (std::int64_t(item.baseOffset) + shift < 0) {
            *error = tooFar;
            return false;
        }
        item.baseOffset = std::uint64_t(std::int64_t(item.baseOffset) + shift);
    }
    for (std::size_t e = 0; e < item.extents.size(); ++e) {
        if (moved[e] < std::int64_t(item.baseOffset)) {
            *error = tooFar;
            return false;
        }
        item.extents[e].offset = std::uint64_t(moved[e]) - item.baseOffset;
        if (table.offsetSize == 0 && item.extents[e].offset != 0) {
            *error = tooFar;
            return false;
        }
    }
    return true;
}

bool valuesFitWidths(const ItemLocationTable& table)
{
    for (const ItemLocation& item : table.items) {
        bool ok = fits(item.baseOffset, table.baseOffsetSize) && (table.version >= 2 || item.itemId <= 0xffff);
        for (const ItemExtent& extent : item.extents)
            ok = ok && fits(extent.offset, table.offsetSize) && fits(extent.length, table.lengthSize);
        if (!ok)
            return false;
    }
    return true;
}

bool remapItemLocations(QByteArray& ilocPayload, const OffsetMap& map, QString* error)
{
    std::optional<ItemLocationTable> table = parseItemLocations(ilocPayload, error);
    if (!table)
        return false;
    for (ItemLocation& item : table->items) {
        if (!remapItemLocation(item, *table, map, error))
            return false;
    }
    const qsizetype before = ilocPayload.size();
    QByteArray rebuilt = serializeItemLocations(*table);
    // Whatever followed the table in its box stays.
    rebuilt.append(ilocPayload.mid(rebuilt.size()));
    if (!valuesFitWidths(*table) || rebuilt.size() != before) {
        *error = QStringLiteral("the item data would move beyond what the item locations reach");
        return false;
    }
    ilocPayload = rebuilt;
    return true;
}

}  // namespace pelorin

#include "isobmff/ItemInfo.h"

#include "isobmff/BoxTree.h"

namespace pelorin {

namespace {

// A zero-terminated string at pos; pos moves past it. Nullopt when the terminator is missing.
std::optional<QByteArray> takeString(const QByteArray& bytes, qsizetype& pos)
{
    const qsizetype end = bytes.indexOf('\0', pos);
    if (end < 0)
        return std::nullopt;
    QByteArray text = bytes.mid(pos, end - pos);
    pos = end + 1;
    return text;
}

}  // namespace

std::optional<ItemInfoEntry> parseItemInfoEntry(const QByteArray& payload)
{
    if (payload.size() < 4)
        return std::nullopt;
    ItemInfoEntry entry;
    entry.version = static_cast<unsigned char>(payload[0]);
    entry.hidden = (payload[3] & 1) != 0;
    qsizetype pos = 4;
    if (entry.version < 2) {
        if (payload.size() < 8)
            return std::nullopt;
        entry.itemId = readU16(payload, 4);
        return entry;
    }
    if (entry.version == 2) {
        entry.itemId = readU16(payload, pos);
        pos += 2;
    } else if (entry.version == 3) {
        entry.itemId = readU32(payload, pos);
        pos += 4;
    } else {
        return std::nullopt;
    }
    pos += 2;  // protection index
    if (pos + 4 > payload.size())
        return std::nullopt;
    entry.itemType = payload.mid(pos, 4);
    pos += 4;
    if (!takeString(payload, pos))  // the item name
        return std::nullopt;
    if (entry.itemType == "mime") {
        const std::optional<QByteArray> contentType = takeString(payload, pos);
        if (!contentType)
            return std::nullopt;
        entry.contentType = *contentType;
    }
    return entry;
}

BoxNode makeItemInfoEntry(std::uint32_t itemId, const QByteArray& itemType, const QByteArray& contentType)
{
    QByteArray payload;
    const bool wide = itemId > 0xffff;
    payload.append(char(wide ? 3 : 2));
    payload.append(3, '\0');
    if (wide) {
        appendU32(payload, itemId);
    } else {
        payload.append(char(itemId >> 8));
        payload.append(char(itemId));
    }
    payload.append(2, '\0');  // not protected
    payload.append(itemType.leftJustified(4, ' ', true));
    payload.append('\0');  // no name
    if (itemType == "mime") {
        payload.append(contentType);
        payload.append('\0');
    }
    return BoxNode::leaf("infe", payload);
}

void updateItemInfoCount(BoxNode& iinf)
{
    std::uint32_t count = 0;
    for (const BoxNode& child : iinf.children)
        count += child.type == "infe" ? 1 : 0;
    QByteArray prefix = iinf.payload.left(4);
    if (prefix.size() < 4)
        prefix = QByteArray(4, '\0');
    if (count > 0xffff)
        prefix[0] = 1;
    if (prefix[0] == 0) {
        prefix.append(char(count >> 8));
        prefix.append(char(count));
    } else {
        appendU32(prefix, count);
    }
    iinf.payload = prefix;
}

std::optional<std::uint32_t> primaryItemOf(const QByteArray& payload)
{
    if (payload.size() >= 6 && payload[0] == 0)
        return readU16(payload, 4);
    if (payload.size() >= 8 && payload[0] == 1)
        return readU32(payload, 4);
    return std::nullopt;
}

bool removeItemAssociations(QByteArray& payload, std::uint32_t itemId)
{
    if (payload.size() < 8)
        return false;
    const int version = static_cast<unsigned char>(payload[0]);
    const bool wideIndex = (payload[3] & 1) != 0;
    const int idWidth = version < 1 ? 2 : 4;
    const std::uint32_t count = readU32(payload, 4);
    qsizetype pos = 8;
    std::uint32_t kept = 0;
    QByteArray rebuilt = payload.left(8);
    for (std::uint32_t i = 0; i < count; ++i) {
        if (pos + idWidth + 1 > payload.size())
            return false;
        const std::uint32_t id = idWidth == 2 ? readU16(payload, pos) : readU32(payload, pos);
        const int associations = static_cast<unsigned char>(payload[pos + idWidth]);
        const qsizetype length = idWidth + 1 + qsizetype(associations) * (wideIndex ? 2 : 1);
        if (pos + length > payload.size())
            return false;
        if (id != itemId) {
            rebuilt.append(payload.mid(pos, length));
            ++kept;
        }
        pos += length;
    }
    rebuilt.append(payload.mid(pos));
    for (int i = 0; i < 4; ++i)
        rebuilt[4 + i] = char(kept >> (24 - 8 * i));
    payload = rebuilt;
    return true;
}

}  // namespace pelorin

#include "isobmff/ChunkOffsets.h"

#include "isobmff/ItemLocations.h"

namespace pelorin {

namespace {

void writeU32At(QByteArray& bytes, qsizetype at, std::uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        bytes[at + i] = char(value >> (24 - 8 * i));
}

bool remapTable(BoxNode& node, const OffsetMap& map, QString* error)
{
    const bool wide = node.type == "co64";
    const int width = wide ? 8 : 4;
    QByteArray& payload = node.payload;
    const std::uint32_t count = readU32(payload, 4);
    if (payload.size() < 8 || (payload.size() - 8) / width < count) {
        *error = QStringLiteral("the chunk offset table '%1' is shorter than its count")
                     .arg(QString::fromLatin1(node.type));
        return false;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        const qsizetype at = 8 + qsizetype(i) * width;
        const std::int64_t old = wide ? std::int64_t(readU64(payload, at)) : std::int64_t(readU32(payload, at));
        const std::optional<std::int64_t> moved = map(old);
        if (!moved) {
            *error = QStringLiteral("a chunk offset (%1) points outside the media data").arg(old);
            return false;
        }
        if (wide) {
            writeU32At(payload, at, std::uint32_t(std::uint64_t(*moved) >> 32));
            writeU32At(payload, at + 4, std::uint32_t(*moved));
        } else if (*moved > 0xffffffffLL) {
            *error = QStringLiteral("the media data would move beyond what 32-bit chunk offsets reach");
            return false;
        } else {
            writeU32At(payload, at, std::uint32_t(*moved));
        }
    }
    return true;
}

}  // namespace

bool remapChunkOffsets(BoxNode& node, const OffsetMap& map, QString* error)
{
    if (!node.container) {
        if (node.type == "iloc")
            return remapItemLocations(node.payload, map, error);
        return node.type == "stco" || node.type == "co64" ? remapTable(node, map, error) : true;
    }
    for (BoxNode& child : node.children) {
        if (!remapChunkOffsets(child, map, error))
            return false;
    }
    return true;
}

std::vector<std::int64_t> chunkOffsetsOf(const BoxNode& node)
{
    std::vector<std::int64_t> offsets;
    if (!node.container) {
        if (node.type == "stco" || node.type == "co64") {
            BoxNode table = node;
            QString ignored;
            remapTable(table, [&](std::int64_t offset) { offsets.push_back(offset); return std::optional<std::int64_t>(offset); },
                       &ignored);
        }
        return offsets;
    }
    for (const BoxNode& child : node.children) {
        const std::vector<std::int64_t> below = chunkOffsetsOf(child);
        offsets.insert(offsets.end(), below.begin(), below.end());
    }
    return offsets;
}

bool holdsOtherFileOffsets(const BoxNode& node, QString* which)
{
    if (node.type == "saio") {
        *which = QString::fromLatin1(node.type);
        return true;
    }
    for (const BoxNode& child : node.children) {
        if (holdsOtherFileOffsets(child, which))
            return true;
    }
    return false;
}

}  // namespace pelorin

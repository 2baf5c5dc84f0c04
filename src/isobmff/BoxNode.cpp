#include "isobmff/BoxNode.h"

#include <algorithm>

namespace pelorin {

namespace {

constexpr std::int64_t kMax32 = 0xffffffffLL;

int headerSizeFor(const BoxNode& node, std::int64_t bodySize)
{
    const int uuid = node.type == "uuid" ? 16 : 0;
    return bodySize + 8 + uuid > kMax32 ? 16 + uuid : 8 + uuid;
}

std::int64_t bodySize(const BoxNode& node)
{
    if (!node.container)
        return node.payload.size();
    std::int64_t total = node.payload.size() + node.trailer.size();
    for (const BoxNode& child : node.children)
        total += child.serializedSize();
    return total;
}

void serializeInto(const BoxNode& node, QByteArray& out)
{
    const std::int64_t body = bodySize(node);
    const int header = headerSizeFor(node, body);
    const std::int64_t size = body + header;
    const QByteArray type = node.type.leftJustified(4, ' ', true);
    const bool large = header - (node.type == "uuid" ? 16 : 0) == 16;
    appendU32(out, large ? 1u : std::uint32_t(size));
    out.append(type);
    if (large)
        appendU64(out, std::uint64_t(size));
    if (node.type == "uuid")
        out.append(node.userType.leftJustified(16, '\0', true));
    out.append(node.payload);
    if (node.container) {
        for (const BoxNode& child : node.children)
            serializeInto(child, out);
        out.append(node.trailer);
    }
}

bool loadInto(ByteSource& source, const Box& box, BoxNode& node)
{
    node.type = box.type;
    node.userType = box.userType;
    node.container = box.container;
    if (!box.container) {
        node.payload = source.read(box.payloadOffset(), box.payloadSize());
        return node.payload.size() == box.payloadSize();
    }
    node.payload = source.read(box.payloadOffset(), box.childrenStart);
    if (node.payload.size() != box.childrenStart)
        return false;
    node.children.resize(box.children.size());
    for (std::size_t i = 0; i < box.children.size(); ++i) {
        if (!loadInto(source, box.children[i], node.children[i]))
            return false;
    }
    const std::int64_t trailerSize = box.end() - box.childrenEnd;
    node.trailer = source.read(box.childrenEnd, trailerSize);
    return node.trailer.size() == trailerSize;
}

}  // namespace

BoxNode BoxNode::leaf(QByteArrayView type, QByteArray payload)
{
    BoxNode node;
    node.type = type.toByteArray();
    node.payload = std::move(payload);
    return node;
}

BoxNode BoxNode::parent(QByteArrayView type, std::vector<BoxNode> children, QByteArray prefix)
{
    BoxNode node;
    node.type = type.toByteArray();
    node.container = true;
    node.payload = std::move(prefix);
    node.children = std::move(children);
    return node;
}

BoxNode* BoxNode::child(QByteArrayView fourcc)
{
    for (BoxNode& node : children) {
        if (node.type == fourcc)
            return &node;
    }
    return nullptr;
}

const BoxNode* BoxNode::child(QByteArrayView fourcc) const
{
    return const_cast<BoxNode*>(this)->child(fourcc);
}

BoxNode* BoxNode::find(QByteArrayView path)
{
    BoxNode* node = this;
    for (qsizetype i = 0; node && i < path.size(); i += 5)
        node = node->child(path.sliced(i, std::min<qsizetype>(4, path.size() - i)));
    return node;
}

int BoxNode::removeChildren(QByteArrayView fourcc)
{
    const auto before = children.size();
    std::erase_if(children, [&](const BoxNode& node) { return node.type == fourcc; });
    return static_cast<int>(before - children.size());
}

void BoxNode::setChild(BoxNode node)
{
    if (BoxNode* existing = child(node.type))
        *existing = std::move(node);
    else
        children.push_back(std::move(node));
}

std::int64_t BoxNode::serializedSize() const
{
    const std::int64_t body = bodySize(*this);
    return body + headerSizeFor(*this, body);
}

QByteArray BoxNode::serialize() const
{
    QByteArray out;
    out.reserve(static_cast<qsizetype>(std::min<std::int64_t>(serializedSize(), 1 << 30)));
    serializeInto(*this, out);
    return out;
}

std::optional<BoxNode> loadBoxNode(ByteSource& source, const Box& box, std::int64_t limit)
{
    if (box.size > limit || box.size > source.size())
        return std::nullopt;
    BoxNode node;
    if (!loadInto(source, box, node))
        return std::nullopt;
    return node;
}

}  // namespace pelorin

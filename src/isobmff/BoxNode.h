#pragma once

#include "isobmff/BoxTree.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>
#include <vector>

namespace pelorin {

// A box held in memory for editing: a leaf keeps its payload, a container keeps the bytes before
// its children (version, flags, counts), the children, and whatever followed the last child.
struct BoxNode {
    QByteArray type;
    QByteArray userType;
    bool container = false;
    QByteArray payload;  // leaves: the whole payload; containers: the bytes before the children
    std::vector<BoxNode> children;
    QByteArray trailer;  // containers: bytes after the last child (a zero terminator, say)

    static BoxNode leaf(QByteArrayView type, QByteArray payload);
    static BoxNode parent(QByteArrayView type, std::vector<BoxNode> children, QByteArray prefix = {});

    BoxNode* child(QByteArrayView fourcc);
    const BoxNode* child(QByteArrayView fourcc) const;
    // The first node along a path such as "udta/meta/ilst", below this one.
    BoxNode* find(QByteArrayView path);
    // Removes every child of that type; answers how many went.
    int removeChildren(QByteArrayView fourcc);
    // Replaces the first child of the node's type, or appends it when there is none.
    void setChild(BoxNode node);

    std::int64_t serializedSize() const;
    QByteArray serialize() const;
};

// Loads a box and everything below it into memory. Null when the box is larger than limit bytes
// (the caller's bound), or the source cannot give its bytes.
std::optional<BoxNode> loadBoxNode(ByteSource& source, const Box& box, std::int64_t limit);

}  // namespace pelorin

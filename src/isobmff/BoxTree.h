#pragma once

#include "isobmff/ByteSource.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace pelorin {

// One box of an ISO base media file as found on disk. Containers carry their children; every
// other box is only a range whose payload the caller reads through the source.
struct Box {
    QByteArray type;          // the four type bytes as they are
    QByteArray userType;      // the 16-byte extended type of a 'uuid' box, else empty
    std::int64_t offset = 0;  // of the size field
    std::int64_t size = 0;    // the whole box, header included
    int headerSize = 8;       // 8, 16 with a 64-bit size, plus 16 for 'uuid'
    bool container = false;
    int childrenStart = 0;         // payload bytes before the first child (version, flags, count)
    std::int64_t childrenEnd = 0;  // file offset where the last readable child ends
    std::vector<Box> children;

    std::int64_t end() const { return offset + size; }
    std::int64_t payloadOffset() const { return offset + headerSize; }
    std::int64_t payloadSize() const { return size - headerSize; }
    bool is(QByteArrayView fourcc) const { return type == fourcc; }
    const Box* child(QByteArrayView fourcc) const;
    std::vector<const Box*> childrenOfType(QByteArrayView fourcc) const;
};

// The boxes of a whole file. Problems name everything the reader had to stop at (a size beyond
// its parent, a truncated file, too deep a nesting); the boxes before such a point stay usable.
struct BoxTree {
    std::int64_t fileSize = 0;
    std::vector<Box> boxes;
    QStringList problems;

    // The first box along a path of types such as "moov/udta/meta"; null when there is none.
    const Box* find(QByteArrayView path) const;
    const Box* top(QByteArrayView fourcc) const;
    bool clean() const { return problems.isEmpty(); }
};

// Nesting deeper than this is not followed; real files stay well below it.
inline constexpr int kMaxBoxDepth = 16;
// A file with more boxes than this is treated as hostile.
inline constexpr int kMaxBoxCount = 200000;

BoxTree readBoxTree(ByteSource& source);

// A box type for messages and identifiers: printable ASCII as is, other bytes as %XX.
QString boxTypeName(QByteArrayView type);

// Big-endian helpers over a byte buffer; out-of-range reads give 0.
std::uint32_t readU32(QByteArrayView bytes, qsizetype at);
std::uint64_t readU64(QByteArrayView bytes, qsizetype at);
std::uint16_t readU16(QByteArrayView bytes, qsizetype at);
void appendU32(QByteArray& out, std::uint32_t value);
void appendU64(QByteArray& out, std::uint64_t value);

}  // namespace pelorin

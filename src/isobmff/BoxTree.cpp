#include "isobmff/BoxTree.h"

#include <QString>

#include <algorithm>
#include <array>
#include <cstring>

namespace pelorin {

namespace {

// Types whose payload is a plain list of boxes.
constexpr std::array kPlainContainers = {
    "moov", "trak", "mdia", "minf", "stbl", "udta", "edts", "dinf", "mvex", "moof", "traf",
    "mfra", "tref", "iprp", "ipco", "sinf", "schi", "wave", "tapt", "gmhd", "clip", "matt",
    "ilst", "rmra", "rmda", "meco", "grpl", "trgr",
};

bool isPlainContainer(QByteArrayView type)
{
    for (const char* name : kPlainContainers) {
        if (type == QByteArrayView(name, 4))
            return true;
    }
    return false;
}

QString at(std::int64_t offset)
{
    return QStringLiteral(" at offset %1").arg(offset);
}

class Parser {
public:
    Parser(ByteSource& source, BoxTree& tree) : source_(source), tree_(tree) {}

    // Reads the boxes in [begin, end); children of containers up to the depth bound. Returns the
    // offset where reading stopped (end when every box fitted).
    std::int64_t readList(std::int64_t begin, std::int64_t end, int depth, bool topLevel,
                          std::vector<Box>& out, const QByteArray& parentType)
    {
        std::int64_t pos = begin;
        while (pos < end) {
            const std::int64_t left = end - pos;
            if (left < 8) {
                // QuickTime ends some lists with a zero 32-bit word; anything else is noted.
                if (!allZero(pos, left))
                    problem(QStringLiteral("%1 stray bytes in '%2'").arg(left).arg(boxTypeName(parentType)) + at(pos));
                return pos;
            }
            if (++count_ > kMaxBoxCount) {
                problem(QStringLiteral("more than %1 boxes").arg(kMaxBoxCount));
                return pos;
            }
            Box box;
            if (!readHeader(pos, end, topLevel, parentType, box))
                return pos;
            if (depth < kMaxBoxDepth)
                openContainer(box, parentType, depth);
            else if (isPlainContainer(box.type))
                problem(QStringLiteral("boxes nested too deeply") + at(box.offset));
            pos = box.end();
            out.push_back(std::move(box));
        }
        return pos;
    }

private:
    bool allZero(std::int64_t pos, std::int64_t length)
    {
        const QByteArray bytes = source_.read(pos, length);
        return bytes.count('\0') == bytes.size();
    }

    void problem(const QString& text) { tree_.problems.append(text); }

    bool readHeader(std::int64_t pos, std::int64_t end, bool topLevel, const QByteArray& parentType, Box& box)
    {
        const QByteArray head = source_.read(pos, 32);
        box.offset = pos;
        box.type = head.mid(4, 4);
        std::uint64_t size = readU32(head, 0);
        box.headerSize = 8;
        const std::int64_t room = end - pos;
        if (size == 1) {
            if (room < 16) {
                problem(QStringLiteral("box '%1' cut short").arg(boxTypeName(box.type)) + at(pos));
                return false;
            }
            size = readU64(head, 8);
            box.headerSize = 16;
        } else if (size == 0) {
            // Runs to the end of the file; only meaningful for the last top-level box.
            size = static_cast<std::uint64_t>(room);
        }
        if (box.type == "uuid") {
            box.userType = head.mid(box.headerSize, 16);
            box.headerSize += 16;
        }
        if (size < static_cast<std::uint64_t>(box.headerSize)) {
            problem(QStringLiteral("box '%1' has an impossible size %2").arg(boxTypeName(box.type)).arg(size) + at(pos));
            return false;
        }
        if (size > static_cast<std::uint64_t>(room)) {
            if (!topLevel) {
                problem(QStringLiteral("box '%1' is larger than its parent '%2'")
                            .arg(boxTypeName(box.type), boxTypeName(parentType))
                        + at(pos));
                return false;
            }
            problem(QStringLiteral("the file is truncated inside box '%1'").arg(boxTypeName(box.type)) + at(pos));
            size = static_cast<std::uint64_t>(room);
            if (size < static_cast<std::uint64_t>(box.headerSize))
                return false;
        }
        box.size = static_cast<std::int64_t>(size);
        return true;
    }

    // Decides whether and where the box holds children, then reads them.
    void openContainer(Box& box, const QByteArray& parentType, int depth)
    {
        int start = -1;
        if (isPlainContainer(box.type) || parentType == "ilst") {
            start = 0;
        } else if (box.type == "meta") {
            // ISO 'meta' is a full box; QuickTime's is not. Where 'hdlr' sits tells them apart.
            const QByteArray head = source_.read(box.payloadOffset(), 12);
            start = head.mid(4, 4) == "hdlr" ? 0 : 4;
        } else if (box.type == "iinf") {
            const QByteArray head = source_.read(box.payloadOffset(), 1);
            start = !head.isEmpty() && head[0] == 0 ? 6 : 8;
        }
        if (start < 0 || start > box.payloadSize()) {
            box.childrenEnd = box.payloadOffset();
            return;
        }
        box.container = true;
        box.childrenStart = start;
        box.childrenEnd = readList(box.payloadOffset() + start, box.end(), depth + 1, false,
                                   box.children, box.type);
    }

    ByteSource& source_;
    BoxTree& tree_;
    int count_ = 0;
};

const Box* findIn(const std::vector<Box>& boxes, QByteArrayView fourcc)
{
    for (const Box& box : boxes) {
        if (box.type == fourcc)
            return &box;
    }
    return nullptr;
}

}  // namespace

const Box* Box::child(QByteArrayView fourcc) const
{
    return findIn(children, fourcc);
}

std::vector<const Box*> Box::childrenOfType(QByteArrayView fourcc) const
{
    std::vector<const Box*> out;
    for (const Box& box : children) {
        if (box.type == fourcc)
            out.push_back(&box);
    }
    return out;
}

const Box* BoxTree::top(QByteArrayView fourcc) const
{
    return findIn(boxes, fourcc);
}

const Box* BoxTree::find(QByteArrayView path) const
{
    const std::vector<Box>* level = &boxes;
    const Box* found = nullptr;
    for (qsizetype i = 0; i < path.size(); i += 5) {
        found = findIn(*level, path.sliced(i, std::min<qsizetype>(4, path.size() - i)));
        if (!found)
            return nullptr;
        level = &found->children;
    }
    return found;
}

BoxTree readBoxTree(ByteSource& source)
{
    BoxTree tree;
    tree.fileSize = source.size();
    Parser parser(source, tree);
    parser.readList(0, tree.fileSize, 0, true, tree.boxes, QByteArray("file"));
    if (tree.boxes.empty() && tree.problems.isEmpty())
        tree.problems.append(QStringLiteral("the file holds no boxes"));
    return tree;
}

QString boxTypeName(QByteArrayView type)
{
    QString out;
    for (char c : type) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7f && byte != '%')
            out.append(QChar(byte));
        else
            out.append(QStringLiteral("%%1").arg(byte, 2, 16, QChar('0')).toUpper());
    }
    return out;
}

std::uint32_t readU32(QByteArrayView bytes, qsizetype at)
{
    if (at < 0 || at + 4 > bytes.size())
        return 0;
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data() + at);
    return (std::uint32_t(p[0]) << 24) | (std::uint32_t(p[1]) << 16) | (std::uint32_t(p[2]) << 8) | p[3];
}

std::uint64_t readU64(QByteArrayView bytes, qsizetype at)
{
    if (at < 0 || at + 8 > bytes.size())
        return 0;
    return (std::uint64_t(readU32(bytes, at)) << 32) | readU32(bytes, at + 4);
}

std::uint16_t readU16(QByteArrayView bytes, qsizetype at)
{
    if (at < 0 || at + 2 > bytes.size())
        return 0;
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data() + at);
    return static_cast<std::uint16_t>((p[0] << 8) | p[1]);
}

void appendU32(QByteArray& out, std::uint32_t value)
{
    const char bytes[4] = {char(value >> 24), char(value >> 16), char(value >> 8), char(value)};
    out.append(bytes, 4);
}

void appendU64(QByteArray& out, std::uint64_t value)
{
    appendU32(out, std::uint32_t(value >> 32));
    appendU32(out, std::uint32_t(value));
}

}  // namespace pelorin

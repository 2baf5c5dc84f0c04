#include "photo/ExifTiffTree.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>

namespace pelorin {
namespace {

constexpr quint16 kExifDirectory = 0x8769;
constexpr int kMaxDepth = 8;
constexpr int kMaxDirectories = 64;
constexpr int kMaxEntries = 1000;

quint32 typeSize(quint16 type)
{
    switch (type) {
    case 1: case 2: case 6: case 7: return 1;                 // bytes, ASCII, undefined
    case 3: case 8: return 2;                                 // shorts
    case 4: case 9: case 11: case 13: return 4;               // longs, float, IFD
    case 5: case 10: case 12: case 16: case 17: case 18: return 8;  // rationals, double, 64-bit
    default: return 0;
    }
}

bool pointsToDirectories(quint16 tag, quint16 type)
{
    const bool directoryTag = tag == kExifDirectory || tag == 0x8825 /* GPS */ || tag == 0xA005 /* interop */
                              || tag == 0x014A /* SubIFDs */;
    return directoryTag && (type == 4 || type == 13);
}

// The tag holding the byte counts of the data an offsets tag points to.
quint16 lengthsTagOf(quint16 tag)
{
    switch (tag) {
    case 0x0111: return 0x0117;  // strips
    case 0x0144: return 0x0145;  // tiles
    case 0x0201: return 0x0202;  // JPEG thumbnail
    default: return 0;
    }
}

struct Endian {
    bool big;
    quint16 u16(const char* p) const
    {
        return big ? qFromBigEndian<quint16>(p) : qFromLittleEndian<quint16>(p);
    }
    quint32 u32(const char* p) const
    {
        return big ? qFromBigEndian<quint32>(p) : qFromLittleEndian<quint32>(p);
    }
    void put16(char* p, quint16 v) const { big ? qToBigEndian(v, p) : qToLittleEndian(v, p); }
    void put32(char* p, quint32 v) const { big ? qToBigEndian(v, p) : qToLittleEndian(v, p); }
};

// The numbers of an offsets or lengths entry (shorts or longs); empty for another type.
QList<quint32> numbersOf(const Endian& e, quint16 type, quint32 count, const QByteArray& bytes)
{
    QList<quint32> numbers;
    const quint32 size = typeSize(type);
    if ((type != 3 && type != 4 && type != 13) || qsizetype(size) * count > bytes.size())
        return numbers;
    for (quint32 i = 0; i < count; ++i)
        numbers << (size == 2 ? e.u16(bytes.constData() + i * 2) : e.u32(bytes.constData() + i * 4));
    return numbers;
}

}  // namespace

std::optional<ExifTiffTree> ExifTiffTree::parse(const QByteArray& tiff, Parse mode)
{
    if (tiff.size() < 8)
        return std::nullopt;
    ExifTiffTree tree;
    tree.lenient_ = mode == Parse::Lenient;
    if (tiff.startsWith("MM\0*"))
        tree.bigEndian_ = true;
    else if (!tiff.startsWith(QByteArray("II*\0", 4)))
        return std::nullopt;
    const Endian e{tree.bigEndian_};
    tree.source_ = tiff;
    tree.root_ = tree.parseDirectory(tiff, e.u32(tiff.constData() + 4), 0);
    if (tree.root_ < 0)
        return std::nullopt;
    return tree;
}

int ExifTiffTree::parseDirectory(const QByteArray& tiff, quint32 offset, int depth)
{
    const Endian e{bigEndian_};
    if (depth > kMaxDepth || directories_.size() >= kMaxDirectories || seenDirectoryOffsets_.contains(offset)
        || offset < 8 || qsizetype(offset) + 2 > tiff.size())
        return -1;
    seenDirectoryOffsets_ << offset;
    const quint32 n = e.u16(tiff.constData() + offset);
    if (n > kMaxEntries || qsizetype(offset) + 2 + 12 * qsizetype(n) + 4 > tiff.size())
        return -1;
    Directory directory;
    QList<QByteArray> entryBytes;  // the whole value of each entry, for the pointers below
    for (quint32 i = 0; i < n; ++i) {
        const char* p = tiff.constData() + offset + 2 + 12 * i;
        Entry entry;
        entry.tag = e.u16(p);
        entry.type = e.u16(p + 2);
        entry.count = e.u32(p + 4);
        const quint64 size = quint64(typeSize(entry.type)) * entry.count;
        const quint64 at = e.u32(p + 8);
        if (typeSize(entry.type) == 0 || (size > 4 && at + size > quint64(tiff.size()))) {
            if (lenient_)
                continue;
            return -1;
        }
        QByteArray value;
        if (size <= 4) {
            entry.inlineValue = QByteArray(p + 8, 4);
            value = entry.inlineValue.left(qsizetype(size));
        } else {
            value = tiff.mid(qsizetype(at), qsizetype(size));
            entry.valuePiece = int(pieces_.size());
            pieces_ << value;
            pieceOffsets_ << quint32(at);
        }
        directory.entries << entry;
        entryBytes << value;
    }
    const quint32 next = e.u32(tiff.constData() + offset + 2 + 12 * n);
    for (qsizetype i = 0; i < directory.entries.size(); ++i) {
        Entry& entry = directory.entries[i];
        if (pointsToDirectories(entry.tag, entry.type)) {
            for (quint32 child : numbersOf(e, entry.type, entry.count, entryBytes[i])) {
                const int index = parseDirectory(tiff, child, depth + 1);
                if (index >= 0)
                    entry.directories << index;
                else if (!lenient_)
                    return -1;
            }
            continue;
        }
        const quint16 lengthsTag = lengthsTagOf(entry.tag);
        if (lengthsTag == 0)
            continue;
        const auto lengths = std::find_if(directory.entries.cbegin(), directory.entries.cend(),
                                          [&](const Entry& other) { return other.tag == lengthsTag; });
        const QList<quint32> offsets = numbersOf(e, entry.type, entry.count, entryBytes[i]);
        const QList<quint32> sizes = lengths == directory.entries.cend()
                                         ? QList<quint32>()
                                         : numbersOf(e, lengths->type, lengths->count,
                                                     entryBytes[lengths - directory.entries.cbegin()]);
        // Pieces that do not overlap add up to no more than the block: a hostile block that
        // points many strips at the same bytes is not copied over and over.
        bool inside = offsets.size() == qsizetype(entry.count) && sizes.size() == offsets.size();
        for (qsizetype k = 0; inside && k < offsets.size(); ++k) {
            dataBytes_ += sizes[k];
            inside = quint64(offsets[k]) + sizes[k] <= quint64(tiff.size()) && dataBytes_ <= quint64(tiff.size());
        }
        if (!inside) {
            if (lenient_)
                continue;
            return -1;
        }
        for (qsizetype k = 0; k < offsets.size(); ++k) {
            entry.dataPieces << int(pieces_.size());
            pieces_ << tiff.mid(offsets[k], sizes[k]);
            pieceOffsets_ << offsets[k];
        }
    }
    const int index = int(directories_.size());
    directories_ << directory;
    if (next != 0) {
        const int following = parseDirectory(tiff, next, depth + 1);
        if (following < 0 && !lenient_)
            return -1;
        directories_[index].next = following;
    }
    return index;
}

int ExifTiffTree::exifDirectory() const
{
    if (root_ < 0)
        return -1;
    for (const Entry& entry : directories_[root_].entries) {
        if (entry.tag == kExifDirectory && entry.directories.size() == 1)
            return entry.directories.first();
    }
    return -1;
}

std::optional<ExifTiffTree::OutOfLineValue> ExifTiffTree::exifDirectoryValue(quint16 tag) const
{
    const int exif = exifDirectory();
    if (exif < 0)
        return std::nullopt;
    for (const Entry& entry : directories_[exif].entries) {
        if (entry.tag != tag || entry.valuePiece < 0)
            continue;
        const QByteArray& bytes = pieces_[entry.valuePiece];
        const quint32 start = pieceOffsets_[entry.valuePiece];
        const quint32 end = start + quint32(bytes.size());
        quint32 next = quint32(source_.size());
        for (qsizetype i = 0; i < pieces_.size(); ++i) {
            if (pieceOffsets_[i] >= end && pieceOffsets_[i] < next)
                next = pieceOffsets_[i];
        }
        for (quint32 at : seenDirectoryOffsets_) {
            if (at >= end && at < next)
                next = at;
        }
        return OutOfLineValue{start, entry.type, entry.count, bytes, source_.mid(end, next - end)};
    }
    return std::nullopt;
}

QByteArray ExifTiffTree::pointerValues(const Entry& entry, const QList<quint32>& placed) const
{
    const Endian e{bigEndian_};
    const QList<int>& targets = entry.directories.isEmpty() ? entry.dataPieces : entry.directories;
    const quint32 size = typeSize(entry.type);
    QByteArray bytes(qsizetype(size) * targets.size(), '\0');
    for (qsizetype i = 0; i < targets.size(); ++i) {
        const quint32 at = placed[targets[i]];
        if (size == 2)
            e.put16(bytes.data() + i * 2, quint16(at));
        else
            e.put32(bytes.data() + i * 4, at);
    }
    return bytes;
}

std::optional<QByteArray> ExifTiffTree::withExifValuePinned(quint16 tag, const OutOfLineValue& value) const
{
    const int exif = exifDirectory();
    if (exif < 0 || value.offset < 8 || value.bytes.size() <= 4
        || quint64(typeSize(value.type)) * value.count != quint64(value.bytes.size()))
        return std::nullopt;
    ExifTiffTree tree = *this;
    const int pinned = int(tree.pieces_.size());
    tree.pieces_ << value.bytes + value.trailing;
    tree.pieceOffsets_ << value.offset;
    QList<Entry>& entries = tree.directories_[exif].entries;
    auto entry = std::find_if(entries.begin(), entries.end(), [tag](const Entry& e) { return e.tag >= tag; });
    if (entry == entries.end() || entry->tag != tag) {
        Entry added;
        added.tag = tag;
        entry = entries.insert(entry, added);
    }
    if (!entry->directories.isEmpty() || !entry->dataPieces.isEmpty())
        return std::nullopt;
    entry->type = value.type;
    entry->count = value.count;
    entry->valuePiece = pinned;

    // Every piece at the next free even offset that keeps clear of the pinned value.
    const quint64 pinStart = value.offset, pinEnd = pinStart + quint64(tree.pieces_[pinned].size());
    quint64 cursor = 8;
    const auto place = [&](quint64 size) {
        cursor += cursor & 1;
        if (cursor < pinEnd && cursor + size > pinStart)
            cursor = pinEnd + (pinEnd & 1);
        const quint64 at = cursor;
        cursor += size;
        return at;
    };
    QList<quint32> directoryAt(tree.directories_.size(), 0), pieceAt(tree.pieces_.size(), 0);
    pieceAt[pinned] = value.offset;
    std::function<void(int)> layOut = [&](int index) {
        const Directory& d = tree.directories_[index];
        directoryAt[index] = quint32(place(2 + 12 * quint64(d.entries.size()) + 4));
        for (const Entry& entry : d.entries) {
            if (entry.valuePiece >= 0 && entry.valuePiece != pinned)
                pieceAt[entry.valuePiece] = quint32(place(quint64(tree.pieces_[entry.valuePiece].size())));
        }
        for (const Entry& entry : d.entries) {
            for (int piece : entry.dataPieces)
                pieceAt[piece] = quint32(place(quint64(tree.pieces_[piece].size())));
            for (int child : entry.directories)
                layOut(child);
        }
        if (d.next >= 0)
            layOut(d.next);
    };
    layOut(tree.root_);
    const quint64 total = std::max(cursor, pinEnd);
    if (total > quint64(std::numeric_limits<int>::max() / 2))
        return std::nullopt;

    const Endian e{bigEndian_};
    QByteArray out(qsizetype(total), '\0');
    out.replace(0, 4, bigEndian_ ? QByteArray("MM\0*", 4) : QByteArray("II*\0", 4));
    e.put32(out.data() + 4, directoryAt[tree.root_]);
    // The value the pinned one replaces is referenced by nothing and stays out.
    for (qsizetype p = 0; p < tree.pieces_.size(); ++p) {
        if (pieceAt[p] != 0)
            out.replace(pieceAt[p], tree.pieces_[p].size(), tree.pieces_[p]);
    }
    for (qsizetype index = 0; index < tree.directories_.size(); ++index) {
        const Directory& d = tree.directories_[index];
        char* at = out.data() + directoryAt[index];
        e.put16(at, quint16(d.entries.size()));
        for (qsizetype i = 0; i < d.entries.size(); ++i) {
            const Entry& entry = d.entries[i];
            char* p = at + 2 + 12 * i;
            e.put16(p, entry.tag);
            e.put16(p + 2, entry.type);
            e.put32(p + 4, entry.count);
            QByteArray inlineValue = entry.inlineValue;
            if (!entry.directories.isEmpty() || !entry.dataPieces.isEmpty()) {
                const QByteArray offsets = pointerValues(entry, entry.directories.isEmpty() ? pieceAt : directoryAt);
                // Shorts cannot hold an offset past 64 KiB.
                if (typeSize(entry.type) == 2 && total > 0xFFFF)
                    return std::nullopt;
                if (entry.valuePiece >= 0)
                    out.replace(pieceAt[entry.valuePiece], offsets.size(), offsets);
                else
                    inlineValue = offsets.leftJustified(4, '\0');
            }
            if (entry.valuePiece >= 0)
                e.put32(p + 8, pieceAt[entry.valuePiece]);
            else
                memcpy(p + 8, inlineValue.constData(), 4);
        }
        e.put32(at + 2 + 12 * d.entries.size(), d.next >= 0 ? directoryAt[d.next] : 0);
    }
    return out;
}

}  // namespace pelorin

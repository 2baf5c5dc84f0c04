#include "photo/TiffSkeleton.h"

#include "model/SafeOutput.h"
#include "photo/TiffPieces.h"

#include <QFile>
#include <QScopeGuard>

#include <algorithm>
#include <cstring>

#include <sys/mman.h>

namespace pelorin {
namespace {

// Pieces this long are placed at the same place within a block as in the source, so that a
// file system that clones ranges can share their blocks.
constexpr qint64 kCloneWorthyPiece = 64 * 1024;

void putValue(char* at, int size, quint32 value, bool little)
{
    for (int i = 0; i < size; ++i) {
        const int shift = 8 * (little ? i : size - 1 - i);
        at[i] = char((value >> shift) & 0xff);
    }
}

bool fitsIn(int size, qint64 value) { return value >= 0 && (size == 4 ? value <= 0xffffffffLL : value <= 0xffff); }

// Zeroed memory of the given length that costs nothing until written: pages nobody touches
// stay the kernel's shared zero page.
std::shared_ptr<void> zeroPages(qint64 length)
{
    void* memory = ::mmap(nullptr, size_t(length), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return {};
    return std::shared_ptr<void>(memory, [length](void* m) { ::munmap(m, size_t(length)); });
}

QList<TiffPieceSlots> pieceSlots(const QByteArray& bytes, bool* ok)
{
    QList<TiffPieceSlots> found;
    *ok = walkTiffPieceSlots(bytes, [&found](const TiffPieceSlots& s) { found.append(s); });
    return found;
}

// The pieces by where they lie; false when two overlap.
bool inFileOrder(QList<CopiedRange>& ranges)
{
    std::sort(ranges.begin(), ranges.end(),
              [](const CopiedRange& a, const CopiedRange& b) { return a.sourceOffset < b.sourceOffset; });
    for (qsizetype i = 1; i < ranges.size(); ++i) {
        if (ranges[i].sourceOffset < ranges[i - 1].sourceOffset + ranges[i - 1].length)
            return false;
    }
    return true;
}

bool insideAny(const QList<CopiedRange>& sorted, qint64 from, qint64 length)
{
    auto next = std::upper_bound(sorted.begin(), sorted.end(), from,
                                 [](qint64 at, const CopiedRange& r) { return at < r.sourceOffset; });
    if (next != sorted.end() && next->sourceOffset < from + length)
        return true;
    if (next == sorted.begin())
        return false;
    --next;
    return from < next->sourceOffset + next->length;
}

}  // namespace

std::optional<TiffSkeleton> readTiffSkeleton(QFile& file, bool withCounts)
{
    const qint64 size = file.size();
    if (size < 8 || size > 0xffffffffLL)
        return std::nullopt;
    // Mapped to walk it: only the directories' pages are read.
    uchar* mapped = file.map(0, size);
    if (!mapped)
        return std::nullopt;
    const auto unmap = qScopeGuard([&] { file.unmap(mapped); });
    const char* source = reinterpret_cast<const char*>(mapped);
    bool ok = false;
    const QList<TiffPieceSlots> found = pieceSlots(QByteArray::fromRawData(source, size), &ok);
    if (!ok || found.isEmpty())
        return std::nullopt;
    QList<CopiedRange> pieces;
    for (const TiffPieceSlots& s : found)
        pieces.append({s.offset, s.length});
    QList<CopiedRange> sorted = pieces;
    if (!inFileOrder(sorted))
        return std::nullopt;
    for (const TiffPieceSlots& s : found) {
        if (insideAny(sorted, s.offsetAt, s.offsetSize) || insideAny(sorted, s.lengthAt, s.lengthSize))
            return std::nullopt;
    }
    TiffSkeleton skeleton;
    skeleton.storage = zeroPages(size);
    if (!skeleton.storage)
        return std::nullopt;
    char* bytes = static_cast<char*>(skeleton.storage.get());
    qint64 from = 0;
    for (const CopiedRange& piece : sorted) {
        std::memcpy(bytes + from, source + from, size_t(piece.sourceOffset - from));
        from = piece.sourceOffset + piece.length;
    }
    std::memcpy(bytes + from, source + from, size_t(size - from));
    const bool little = source[0] == 'I';
    for (const TiffPieceSlots& s : found) {
        if (s.length == 0 || withCounts)
            continue;
        bytes[s.offset] = source[s.offset];
        putValue(bytes + s.lengthAt, s.lengthSize, 1, little);
    }
    skeleton.bytes = QByteArray::fromRawData(bytes, size);
    skeleton.pieces = pieces;
    return skeleton;
}

std::optional<PiecesAroundRanges> tiffPiecesAround(const TiffSkeleton& skeleton, const QByteArray& rewritten)
{
    bool ok = false;
    const QList<TiffPieceSlots> found = pieceSlots(rewritten, &ok);
    if (!ok || found.size() != skeleton.pieces.size())
        return std::nullopt;
    for (qsizetype i = 0; i < found.size(); ++i) {
        if (found[i].length != (skeleton.pieces[i].length == 0 ? 0 : 1))
            return std::nullopt;
    }
    const bool little = rewritten.startsWith("II");
    const bool inPlace = rewritten.size() == skeleton.bytes.size()
        && std::equal(found.begin(), found.end(), skeleton.pieces.begin(),
                      [](const TiffPieceSlots& s, const CopiedRange& p) { return s.offset == p.sourceOffset; });
    PiecesAroundRanges around;
    if (inPlace) {
        // The rewrite kept the layout: the strips and tiles go back where they were, and the
        // bytes between them are the rewrite's, each byte count as the source has it.
        QList<CopiedRange> sorted = skeleton.pieces;
        inFileOrder(sorted);
        qint64 from = 0;
        for (const CopiedRange& piece : sorted) {
            around.pieces.append(rewritten.mid(from, piece.sourceOffset - from));
            from = piece.sourceOffset + piece.length;
        }
        around.pieces.append(rewritten.mid(from));
        around.ranges = sorted;
        for (qsizetype i = 0; i < found.size(); ++i) {
            // Which piece of bytes holds the count: the one before the first range that starts
            // after it.
            const qint64 at = found[i].lengthAt;
            const auto after = std::upper_bound(sorted.begin(), sorted.end(), at,
                                                [](qint64 a, const CopiedRange& r) { return a < r.sourceOffset; });
            const qsizetype k = after - sorted.begin();
            const qint64 start = k == 0 ? 0 : sorted[k - 1].sourceOffset + sorted[k - 1].length;
            if (at - start + found[i].lengthSize > around.pieces[k].size())
                return std::nullopt;
            putValue(around.pieces[k].data() + (at - start), found[i].lengthSize, quint32(skeleton.pieces[i].length), little);
        }
        return around;
    }
    // A new layout: the strips and tiles follow the rewritten metadata, in the order they have
    // in the source, and the offsets and counts say so.
    QByteArray head(rewritten.constData(), rewritten.size());
    QList<qsizetype> order(skeleton.pieces.size());
    for (qsizetype i = 0; i < order.size(); ++i)
        order[i] = i;
    std::stable_sort(order.begin(), order.end(), [&](qsizetype a, qsizetype b) {
        return skeleton.pieces[a].sourceOffset < skeleton.pieces[b].sourceOffset;
    });
    qint64 end = head.size();
    QList<qint64> padding;  // before each piece, in that order
    for (const qsizetype i : order) {
        const CopiedRange& piece = skeleton.pieces[i];
        qint64 place = end;
        if (piece.length >= kCloneWorthyPiece)
            place += (piece.sourceOffset - end) & (kCloneBlockSize - 1);
        const TiffPieceSlots& slot = found[i];
        if (!fitsIn(slot.offsetSize, place) || !fitsIn(slot.lengthSize, piece.length) || !fitsIn(4, place + piece.length))
            return std::nullopt;
        putValue(head.data() + slot.offsetAt, slot.offsetSize, quint32(place), little);
        putValue(head.data() + slot.lengthAt, slot.lengthSize, quint32(piece.length), little);
        padding.append(place - end);
        around.ranges.append(piece);
        end = place + piece.length;
    }
    head.append(QByteArray(padding.value(0), '\0'));
    around.pieces.append(head);
    for (qsizetype k = 1; k < padding.size(); ++k)
        around.pieces.append(QByteArray(padding[k], '\0'));
    around.pieces.append(QByteArray());
    return around;
}

}  // namespace pelorin

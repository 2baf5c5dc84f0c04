#include "photo/TiffPieces.h"

#include <QSet>

namespace pelorin {
namespace {

quint32 big32(const QByteArray& b, qsizetype at)
{
    return (quint32(quint8(b[at])) << 24) | (quint32(quint8(b[at + 1])) << 16) | (quint32(quint8(b[at + 2])) << 8)
           | quint32(quint8(b[at + 3]));
}

class TiffWalk {
public:
    TiffWalk(const QByteArray& bytes, const TiffPieceSlotVisitor& visit) : b_(bytes), little_(bytes.startsWith("II")), visit_(visit) {}

    bool complete()
    {
        if (b_.size() < 8)
            return false;
        QList<quint32> pending{u32(4)};
        bool first = true;
        while (!pending.isEmpty()) {
            const quint32 offset = pending.takeFirst();
            if (offset == 0 && !first)
                continue;
            first = false;
            // Directories beyond a sane number mean a loop or a hostile file; what was walked
            // so far decides.
            if (visited_.contains(offset) || visited_.size() >= kMaxDirectories)
                continue;
            visited_.insert(offset);
            directory_ = offset;
            if (!directory(offset, &pending))
                return false;
        }
        return true;
    }

private:
    static constexpr int kMaxDirectories = 256;

    quint16 u16(qsizetype at) const
    {
        const quint16 a = quint8(b_[at]), c = quint8(b_[at + 1]);
        return little_ ? quint16(a | (c << 8)) : quint16((a << 8) | c);
    }
    quint32 u32(qsizetype at) const
    {
        return little_ ? (quint32(quint8(b_[at])) | (quint32(quint8(b_[at + 1])) << 8) | (quint32(quint8(b_[at + 2])) << 16)
                          | (quint32(quint8(b_[at + 3])) << 24))
                       : big32(b_, at);
    }
    bool fits(quint64 offset, quint64 length) const { return offset <= quint64(b_.size()) && length <= quint64(b_.size()) - offset; }

    struct Entry {
        quint16 type = 0;
        quint32 count = 0;
        qsizetype valueAt = 0;  // where the values start (inline or at their offset)
        bool present = false;
    };

    static int typeSize(quint16 type)
    {
        switch (type) {
        case 1: case 2: case 6: case 7: return 1;  // BYTE, ASCII, SBYTE, UNDEFINED
        case 3: case 8: return 2;                  // SHORT, SSHORT
        case 4: case 9: case 11: case 13: return 4;  // LONG, SLONG, FLOAT, IFD
        case 5: case 10: case 12: return 8;        // RATIONAL, SRATIONAL, DOUBLE
        default: return 0;                         // unknown types are skipped, as readers do
        }
    }
    static int valueSize(const Entry& e) { return e.type == 3 ? 2 : e.type == 4 || e.type == 13 ? 4 : 0; }
    // A SHORT or LONG entry whose values all lie inside the file.
    bool readable(const Entry& e) const
    {
        return valueSize(e) != 0 && fits(quint64(e.valueAt), quint64(e.count) * valueSize(e));
    }
    quint32 value(const Entry& e, quint32 i) const
    {
        return valueSize(e) == 2 ? u16(e.valueAt + 2 * qsizetype(i)) : u32(e.valueAt + 4 * qsizetype(i));
    }

    bool pieces(const Entry& offsets, const Entry& counts) const
    {
        if (!offsets.present && !counts.present)
            return true;
        if (!offsets.present || !counts.present || offsets.count != counts.count || !readable(offsets) || !readable(counts))
            return false;
        for (quint32 i = 0; i < offsets.count; ++i) {
            if (!fits(value(offsets, i), value(counts, i)))
                return false;
            if (visit_)
                visit_({directory_, value(offsets, i), value(counts, i), offsets.valueAt + valueSize(offsets) * qsizetype(i),
                        valueSize(offsets), counts.valueAt + valueSize(counts) * qsizetype(i), valueSize(counts)});
        }
        return true;
    }

    bool directory(quint32 offset, QList<quint32>* pending)
    {
        if (!fits(offset, 2))
            return false;
        const quint16 n = u16(offset);
        if (!fits(quint64(offset) + 2, quint64(n) * 12 + 4))
            return false;
        Entry stripOffsets, stripCounts, tileOffsets, tileCounts, subDirectories;
        for (quint16 i = 0; i < n; ++i) {
            const qsizetype at = qsizetype(offset) + 2 + 12 * qsizetype(i);
            Entry e;
            e.type = u16(at + 2);
            e.count = u32(at + 4);
            const int size = typeSize(e.type);
            e.valueAt = quint64(e.count) * size <= 4 ? at + 8 : qsizetype(u32(at + 8));
            e.present = true;
            // Every value of the directory must be there, not only the pixels: a cut after
            // the strips takes the values stored behind the directory.
            if (size > 0 && !fits(quint64(e.valueAt), quint64(e.count) * size))
                return false;
            switch (u16(at)) {
            case 273: stripOffsets = e; break;
            case 279: stripCounts = e; break;
            case 324: tileOffsets = e; break;
            case 325: tileCounts = e; break;
            case 330: subDirectories = e; break;
            default: break;
            }
        }
        if (!pieces(stripOffsets, stripCounts) || !pieces(tileOffsets, tileCounts))
            return false;
        if (subDirectories.present) {
            if (!readable(subDirectories))
                return false;
            for (quint32 i = 0; i < qMin<quint32>(subDirectories.count, kMaxDirectories); ++i)
                pending->append(value(subDirectories, i));
        }
        pending->append(u32(qsizetype(offset) + 2 + 12 * qsizetype(n)));
        return true;
    }

    const QByteArray& b_;
    const bool little_;
    const TiffPieceSlotVisitor& visit_;
    QSet<quint32> visited_;
    quint32 directory_ = 0;
};

}  // namespace

bool walkTiffPieces(const QByteArray& bytes, const TiffPieceVisitor& visit)
{
    if (!visit)
        return TiffWalk(bytes, {}).complete();
    return TiffWalk(bytes, [&visit](const TiffPieceSlots& s) { visit(s.directory, s.offset, s.length); }).complete();
}

bool walkTiffPieceSlots(const QByteArray& bytes, const TiffPieceSlotVisitor& visit)
{
    return TiffWalk(bytes, visit).complete();
}

}  // namespace pelorin

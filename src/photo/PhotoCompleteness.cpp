#include "photo/PhotoCompleteness.h"

#include <QFile>
#include <QFileInfo>
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
    explicit TiffWalk(const QByteArray& bytes) : b_(bytes), little_(bytes.startsWith("II")) {}

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
    QSet<quint32> visited_;
};

bool jpegComplete(const QByteArray& b)
{
    qsizetype pos = 2;
    while (pos + 4 <= b.size()) {
        if (quint8(b[pos]) != 0xFF)
            return false;
        const quint8 marker = quint8(b[pos + 1]);
        if (marker == 0xFF || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7)) {
            pos += marker == 0xFF ? 1 : 2;
            continue;
        }
        const qsizetype length = (quint8(b[pos + 2]) << 8) | quint8(b[pos + 3]);
        if (length < 2 || pos + 2 + length > b.size())
            return false;
        if (marker == 0xDA)  // the scans run to the end marker, which must be there
            return b.indexOf("\xFF\xD9", pos + 2 + length) >= 0;
        pos += 2 + length;
    }
    return false;
}

bool pngComplete(const QByteArray& b)
{
    // The header chunk comes first in every PNG. exiv2 inserts metadata after it; without it
    // exiv2 writes a file that keeps none of the metadata, old or new.
    if (b.mid(12, 4) != "IHDR")
        return false;
    qsizetype pos = 8;
    while (pos + 12 <= b.size()) {
        const quint32 length = big32(b, pos);
        if (length > quint32(b.size() - pos - 12))
            return false;
        if (b.mid(pos + 4, 4) == "IEND")
            return true;
        pos += 12 + qsizetype(length);
    }
    return false;
}

bool boxesComplete(const QByteArray& b)
{
    qsizetype pos = 0;
    while (pos < b.size()) {
        if (pos + 8 > b.size())
            return false;
        quint64 size = big32(b, pos);
        if (size == 0)
            return true;  // the last box runs to the end of the file
        if (size == 1) {
            if (pos + 16 > b.size())
                return false;
            size = (quint64(big32(b, pos + 8)) << 32) | big32(b, pos + 12);
            if (size < 16)
                return false;
        } else if (size < 8) {
            return false;
        }
        if (size > quint64(b.size() - pos))
            return false;
        pos += qsizetype(size);
    }
    return true;
}

}  // namespace

QString damagedPhotoReason() { return QStringLiteral("the file is damaged or incomplete"); }

bool photoDataComplete(const QByteArray& bytes, const PhotoFormat& format)
{
    switch (format.container) {
    case PhotoContainer::Tiff:
        return TiffWalk(bytes).complete();
    case PhotoContainer::Jpeg:
        return jpegComplete(bytes);
    case PhotoContainer::Png:
        return pngComplete(bytes);
    case PhotoContainer::Heif:
    case PhotoContainer::Cr3:
        return boxesComplete(bytes);
    case PhotoContainer::WebP: {
        if (bytes.size() < 12)
            return false;
        const quint32 riffSize = quint32(quint8(bytes[4])) | (quint32(quint8(bytes[5])) << 8)
                                 | (quint32(quint8(bytes[6])) << 16) | (quint32(quint8(bytes[7])) << 24);
        return quint64(riffSize) + 8 <= quint64(bytes.size());
    }
    default:
        return true;
    }
}

bool photoFileComplete(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const qint64 size = file.size();
    if (size == 0)
        return false;
    // Mapped rather than read: only the directories and the pieces' ends are touched.
    const uchar* mapped = file.map(0, size);
    if (!mapped)
        return false;
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(mapped), qsizetype(size));
    return photoDataComplete(bytes, detectPhotoFormat(bytes.left(64), QFileInfo(path).suffix()));
}

}  // namespace pelorin

#include "photo/PhotoCompleteness.h"
#include "photo/TiffPieces.h"

#include <QFile>
#include <QFileInfo>

namespace pelorin {
namespace {

quint32 big32(const QByteArray& b, qsizetype at)
{
    return (quint32(quint8(b[at])) << 24) | (quint32(quint8(b[at + 1])) << 16) | (quint32(quint8(b[at + 2])) << 8)
           | quint32(quint8(b[at + 3]));
}

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
        if (marker == 0xDA) {  // the scans run to an end marker, which must be there
            // Searched from the end, where a whole file has it (after any trailing pictures
            // that end the same way): megabytes of scan data are not walked byte by byte.
            for (qsizetype at = b.size() - 2; at >= pos + 2 + length; --at) {
                if (quint8(b[at]) == 0xFF && quint8(b[at + 1]) == 0xD9)
                    return true;
            }
            return false;
        }
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

quint32 little32(const QByteArray& b, qsizetype pos)
{
    return quint32(quint8(b[pos])) | (quint32(quint8(b[pos + 1])) << 8) | (quint32(quint8(b[pos + 2])) << 16)
           | (quint32(quint8(b[pos + 3])) << 24);
}

// The RIFF container holds whole chunks, the first of them the picture's header (VP8, VP8L or
// VP8X): a chunk that runs past the end, or a file that starts with something else, is damaged,
// and a writer would take garbage for the frame.
bool webpComplete(const QByteArray& b)
{
    if (b.size() < 20)
        return false;
    const quint64 end = quint64(little32(b, 4)) + 8;
    if (end > quint64(b.size()))
        return false;
    const QByteArray first = b.mid(12, 4);
    if (first != "VP8 " && first != "VP8L" && first != "VP8X")
        return false;
    quint64 pos = 12;
    while (pos + 8 <= end) {
        const quint64 size = little32(b, qsizetype(pos) + 4);
        pos += 8 + size + (size & 1);
        if (pos > end + 1)  // a last odd-sized chunk may go without its pad byte
            return false;
    }
    return pos >= end;
}

}  // namespace

QString damagedPhotoReason() { return QStringLiteral("the file is damaged or incomplete"); }

bool photoDataComplete(const QByteArray& bytes, const PhotoFormat& format)
{
    switch (format.container) {
    case PhotoContainer::Tiff:
        return walkTiffPieces(bytes);
    case PhotoContainer::Jpeg:
        return jpegComplete(bytes);
    case PhotoContainer::Png:
        return pngComplete(bytes);
    case PhotoContainer::Heif:
    case PhotoContainer::Cr3:
        return boxesComplete(bytes);
    case PhotoContainer::WebP:
        return webpComplete(bytes);
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

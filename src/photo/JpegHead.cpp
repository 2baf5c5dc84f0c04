#include "photo/JpegHead.h"

#include <QFile>

namespace pelorin {
namespace {

// Most heads (a camera's EXIF with its maker note and thumbnail) fit in the first read; a larger
// one is read on, doubling.
constexpr qint64 kFirstRead = 64 * 1024;
// A whole file ends with its end marker, so the first look at the end is small; trailing data
// after it (a phone's depth map) is searched in larger steps.
constexpr qint64 kFirstEndSearch = 4 * 1024;
constexpr qint64 kEndSearchChunk = 64 * 1024;

// Makes at least `needed` bytes of the file's start available in `buffer`; false at the end.
bool ensureBuffered(QFile& file, QByteArray& buffer, qint64 needed)
{
    if (needed <= buffer.size())
        return true;
    if (needed > file.size())
        return false;
    const qint64 want = qMin(file.size(), qMax(needed, qint64(buffer.size()) * 2));
    if (!file.seek(buffer.size()))
        return false;
    const QByteArray more = file.read(want - buffer.size());
    buffer.append(more);
    return buffer.size() >= needed;
}

// True when an end-of-image marker lies in the file at or after `from`; searched from the end,
// where a whole file has it (after any trailing pictures, which end the same way).
bool hasEndMarkerAfter(QFile& file, qint64 from)
{
    qint64 end = file.size();
    qint64 step = kFirstEndSearch;
    while (end - from >= 2) {
        const qint64 start = qMax(from, end - step);
        step = kEndSearchChunk;
        if (!file.seek(start))
            return false;
        const QByteArray chunk = file.read(end - start);
        if (chunk.size() != end - start)
            return false;
        for (qsizetype at = chunk.size() - 2; at >= 0; --at) {
            if (quint8(chunk[at]) == 0xFF && quint8(chunk[at + 1]) == 0xD9)
                return true;
        }
        end = start + 1;  // the next chunk overlaps by one byte: a marker split between two
    }
    return false;
}

}  // namespace

std::optional<JpegHead> readJpegHead(QFile& file)
{
    const qint64 size = file.size();
    if (size < 4 || !file.seek(0))
        return std::nullopt;
    QByteArray buffer = file.read(qMin(size, kFirstRead));
    if (buffer.size() < 4 || quint8(buffer[0]) != 0xFF || quint8(buffer[1]) != 0xD8)
        return std::nullopt;
    qint64 pos = 2;
    for (;;) {
        if (!ensureBuffered(file, buffer, pos + 4) || quint8(buffer[pos]) != 0xFF)
            return std::nullopt;
        const quint8 marker = quint8(buffer[pos + 1]);
        if (marker == 0xFF || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7)) {
            pos += marker == 0xFF ? 1 : 2;
            continue;
        }
        if (marker == 0xD9)  // the image ends before any scan
            return std::nullopt;
        const qint64 length = (quint8(buffer[pos + 2]) << 8) | quint8(buffer[pos + 3]);
        if (length < 2 || !ensureBuffered(file, buffer, pos + 2 + length))
            return std::nullopt;
        if (marker == 0xDA) {
            JpegHead head;
            head.scanHeaderStart = qsizetype(pos);
            head.imageDataStart = pos + 2 + length;
            head.fileSize = size;
            if (!hasEndMarkerAfter(file, head.imageDataStart))
                return std::nullopt;
            head.bytes = buffer.left(qsizetype(head.imageDataStart));
            head.bytes.append("\xFF\xD9", 2);
            return head;
        }
        pos += 2 + length;
    }
}

std::optional<JpegHead> readJpegHead(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return readJpegHead(file);
}

std::optional<QByteArray> rewrittenHeadBeforeImageData(const QByteArray& rewrittenHead, const JpegHead& source)
{
    const QByteArrayView ending = QByteArrayView(source.bytes).sliced(source.scanHeaderStart);
    if (!QByteArrayView(rewrittenHead).endsWith(ending) || rewrittenHead.size() < ending.size() + 2)
        return std::nullopt;
    return rewrittenHead.chopped(2);
}

}  // namespace pelorin

#include "audio/Id3EmptyFrames.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <optional>

namespace pelorin {
namespace {

constexpr qint64 kHeader = 10;
// A tag is read whole; larger ones (pictures of many megabytes) are left alone.
constexpr qint64 kMaxTag = qint64(64) << 20;

quint32 syncSafe(const char* b)
{
    return (quint32(quint8(b[0]) & 0x7F) << 21) | (quint32(quint8(b[1]) & 0x7F) << 14)
           | (quint32(quint8(b[2]) & 0x7F) << 7) | quint32(quint8(b[3]) & 0x7F);
}

bool isFrameId(const QByteArray& id)
{
    return std::all_of(id.begin(), id.end(), [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
}

// The frames of a tag body less the empty ones, padded to the body's size; nothing when no
// frame is empty or the frames cannot be followed.
std::optional<QByteArray> withoutEmptyFrames(const QByteArray& body, int version)
{
    const int idSize = version == 2 ? 3 : 4;
    const int headerSize = version == 2 ? 6 : 10;
    QByteArray kept;
    bool dropped = false;
    qint64 pos = 0;
    while (pos + headerSize <= body.size() && body[pos] != '\0') {
        const char* h = body.constData() + pos;
        if (!isFrameId(QByteArray(h, idSize)))
            return std::nullopt;
        const qint64 size = version == 2   ? (qint64(quint8(h[3])) << 16) | (quint8(h[4]) << 8) | quint8(h[5])
                            : version == 3 ? qint64(qFromBigEndian<quint32>(h + 4))
                                           : qint64(syncSafe(h + 4));
        if (size > body.size() - pos - headerSize)
            return std::nullopt;
        if (size == 0)
            dropped = true;
        else
            kept += body.mid(pos, headerSize + size);
        pos += headerSize + size;
    }
    if (!dropped)
        return std::nullopt;
    kept.append(body.size() - kept.size(), '\0');
    return kept;
}

bool repairTagAt(QFile& file, qint64 offset, qint64 available)
{
    if (!file.seek(offset))
        return false;
    const QByteArray header = file.read(kHeader);
    if (header.size() < kHeader || !header.startsWith("ID3"))
        return true;
    const int version = quint8(header[3]);
    const quint8 flags = quint8(header[5]);
    const bool unsynchronised = (flags & 0x80) && version < 4;
    if (version < 2 || version > 4 || unsynchronised || (flags & 0x40))
        return true;
    const qint64 size = qMin<qint64>(syncSafe(header.constData() + 6), available - kHeader);
    if (size <= 0 || size > kMaxTag)
        return true;
    const QByteArray body = file.read(size);
    if (body.size() != size)
        return true;
    const std::optional<QByteArray> repaired = withoutEmptyFrames(body, version);
    if (!repaired)
        return true;
    return file.seek(offset + kHeader) && file.write(*repaired) == repaired->size();
}

// The data of the first "ID3 " or "id3 " chunk among a RIFF (little-endian) or FORM
// (big-endian) file's chunks.
std::optional<std::pair<qint64, qint64>> id3Chunk(QFile& file, bool bigEndian)
{
    qint64 pos = 12;
    for (int n = 0; n < (1 << 16) && pos + 8 <= file.size(); ++n) {
        if (!file.seek(pos))
            return std::nullopt;
        const QByteArray header = file.read(8);
        if (header.size() < 8)
            return std::nullopt;
        const quint32 size = bigEndian ? qFromBigEndian<quint32>(header.constData() + 4)
                                       : qFromLittleEndian<quint32>(header.constData() + 4);
        if (header.startsWith("ID3 ") || header.startsWith("id3 "))
            return std::make_pair(pos + 8, qMin<qint64>(size, file.size() - pos - 8));
        pos += 8 + qint64(size) + (size & 1);
    }
    return std::nullopt;
}

}  // namespace

bool dropEmptyId3Frames(const QString& path, AudioContainer container)
{
    if (container != AudioContainer::Mpeg && container != AudioContainer::Wav && container != AudioContainer::Aiff)
        return true;
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite))
        return false;
    if (container == AudioContainer::Mpeg)
        return repairTagAt(file, 0, file.size());
    const auto chunk = id3Chunk(file, container == AudioContainer::Aiff);
    return !chunk || repairTagAt(file, chunk->first, chunk->second);
}

}  // namespace pelorin

#include "photo/WebPSkeleton.h"

#include "model/PositionalRead.h"

#include <QFile>

namespace pelorin {
namespace {

constexpr qint64 kRiffHeader = 12;  // "RIFF", size, "WEBP"
constexpr qint64 kChunkHeader = 8;
// What a shortened image chunk keeps: the frame header of an animation frame and the start of
// its bitstream, the bitstream header of a still (exiv2 reads up to its twelfth byte). Even, so
// the shortened chunk needs no pad byte.
constexpr quint32 kKeptImageBytes = 64;

quint32 little32(const char* b)
{
    return quint32(quint8(b[0])) | (quint32(quint8(b[1])) << 8) | (quint32(quint8(b[2])) << 16)
           | (quint32(quint8(b[3])) << 24);
}

void putLittle32(QByteArray& b, qsizetype at, quint32 v)
{
    for (int i = 0; i < 4; ++i)
        b[at + i] = char((v >> (8 * i)) & 0xFF);
}

bool isImageChunk(QByteArrayView type) { return type == "VP8 " || type == "VP8L" || type == "ALPH" || type == "ANMF"; }

// The whole chunks of a RIFF body in memory, as (offset, length with pad); empty when they do not
// fill it exactly.
std::optional<QList<std::pair<qsizetype, qsizetype>>> chunksOf(const QByteArray& riff)
{
    QList<std::pair<qsizetype, qsizetype>> chunks;
    qsizetype pos = kRiffHeader;
    while (pos + kChunkHeader <= riff.size()) {
        const quint32 size = little32(riff.constData() + pos + 4);
        const qint64 whole = kChunkHeader + qint64(size) + (size & 1);
        if (whole > riff.size() - pos)
            return std::nullopt;
        chunks.append({pos, qsizetype(whole)});
        pos += qsizetype(whole);
    }
    if (pos != riff.size())
        return std::nullopt;
    return chunks;
}

}  // namespace

std::optional<WebPSkeleton> readWebPSkeleton(QFile& file)
{
    const int fd = file.handle();
    const qint64 size = file.size();
    if (fd < 0 || size < kRiffHeader + kChunkHeader)
        return std::nullopt;
    WebPSkeleton skeleton;
    skeleton.fileSize = size;
    skeleton.bytes = readExactlyAt(fd, 0, kRiffHeader);
    if (!skeleton.bytes.startsWith("RIFF") || skeleton.bytes.mid(8, 4) != "WEBP"
        || qint64(little32(skeleton.bytes.constData() + 4)) + 8 != size)
        return std::nullopt;
    qint64 pos = kRiffHeader;
    while (pos + kChunkHeader <= size) {
        const QByteArray header = readExactlyAt(fd, pos, kChunkHeader);
        if (header.size() != kChunkHeader)
            return std::nullopt;
        const QByteArrayView type = QByteArrayView(header).first(4);
        if (pos == kRiffHeader && type != "VP8 " && type != "VP8L" && type != "VP8X")
            return std::nullopt;
        const quint32 chunkSize = little32(header.constData() + 4);
        const qint64 whole = kChunkHeader + qint64(chunkSize) + (chunkSize & 1);
        if (whole > size - pos)
            return std::nullopt;
        if (isImageChunk(type)) {
            const quint32 kept = qMin(chunkSize, kKeptImageBytes);
            QByteArray shortened = header + readExactlyAt(fd, pos + kChunkHeader, kept + (kept & 1));
            if (shortened.size() != kChunkHeader + kept + (kept & 1))
                return std::nullopt;
            putLittle32(shortened, 4, kept);
            skeleton.bytes += shortened;
            skeleton.imageChunks.append({pos, whole});
        } else {
            const QByteArray chunk = readExactlyAt(fd, pos, whole);
            if (chunk.size() != whole)
                return std::nullopt;
            skeleton.bytes += chunk;
        }
        pos += whole;
    }
    if (pos != size || skeleton.imageChunks.isEmpty())
        return std::nullopt;
    putLittle32(skeleton.bytes, 4, quint32(skeleton.bytes.size() - 8));
    return skeleton;
}

std::optional<WebPSkeleton> readWebPSkeleton(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return readWebPSkeleton(file);
}

std::optional<QList<QByteArray>> piecesAroundShortenedChunks(const QByteArray& rewritten, const WebPSkeleton& skeleton)
{
    if (rewritten.size() < kRiffHeader || !rewritten.startsWith("RIFF")
        || qint64(little32(rewritten.constData() + 4)) + 8 != rewritten.size())
        return std::nullopt;
    const auto before = chunksOf(skeleton.bytes);
    const auto after = chunksOf(rewritten);
    if (!before || !after)
        return std::nullopt;
    QList<QByteArrayView> expected;
    for (const auto& [at, length] : *before) {
        if (isImageChunk(QByteArrayView(skeleton.bytes).sliced(at, 4)))
            expected.append(QByteArrayView(skeleton.bytes).sliced(at, length));
    }
    if (expected.size() != skeleton.imageChunks.size())
        return std::nullopt;
    QList<QByteArray> pieces;
    qsizetype pieceStart = 0;
    qint64 total = 0;
    for (const auto& [at, length] : *after) {
        const QByteArrayView chunk = QByteArrayView(rewritten).sliced(at, length);
        if (!isImageChunk(chunk.first(4)))
            continue;
        const qsizetype i = pieces.size();
        if (i >= expected.size() || chunk != expected[i])
            return std::nullopt;
        pieces.append(rewritten.mid(pieceStart, at - pieceStart));
        total += pieces.last().size() + skeleton.imageChunks[i].length;
        pieceStart = at + length;
    }
    if (pieces.size() != expected.size())
        return std::nullopt;
    pieces.append(rewritten.mid(pieceStart));
    total += pieces.last().size();
    if (total - 8 > qint64(0xFFFFFFFF))
        return std::nullopt;
    putLittle32(pieces.first(), 4, quint32(total - 8));
    return pieces;
}

}  // namespace pelorin

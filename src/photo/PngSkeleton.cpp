#include "photo/PngSkeleton.h"

#include "model/PositionalRead.h"

#include <QFile>

namespace pelorin {
namespace {

constexpr qint64 kSignatureSize = 8;
constexpr qint64 kChunkOverhead = 12;  // length, type, checksum
constexpr quint32 kMaxChunkLength = 0x7FFFFFFF;  // the largest length PNG allows
// The frame-control chunk of an animation is small; one is read in case its run has no frame data.
constexpr quint32 kMaxKeptFrameControl = 1024;

quint32 big32(const char* b)
{
    return (quint32(quint8(b[0])) << 24) | (quint32(quint8(b[1])) << 16) | (quint32(quint8(b[2])) << 8)
           | quint32(quint8(b[3]));
}

bool isImageData(const QByteArray& type) { return type == "IDAT" || type == "fdAT"; }
bool isInRun(const QByteArray& type) { return isImageData(type) || type == "fcTL"; }

}  // namespace

QByteArray pngImageDataStandIn() { return QByteArray("\0\0\0\0IDAT\xAE\x42\x60\x82", 12); }

std::optional<PngSkeleton> readPngSkeleton(QFile& file)
{
    const int fd = file.handle();
    const qint64 size = file.size();
    if (fd < 0 || size < kSignatureSize + 2 * kChunkOverhead)
        return std::nullopt;
    PngSkeleton skeleton;
    skeleton.fileSize = size;
    skeleton.bytes = readExactlyAt(fd, 0, kSignatureSize);
    if (skeleton.bytes != QByteArray("\x89PNG\r\n\x1a\n", 8))
        return std::nullopt;
    // The run being walked: where it starts, and its chunks as read while it might hold no
    // image data (a lone frame control, kept as it is).
    qint64 runStart = -1;
    bool runHasImageData = false;
    QByteArray runChunks;
    const auto endRun = [&](qint64 at) {
        if (runStart < 0)
            return;
        if (runHasImageData) {
            skeleton.bytes += pngImageDataStandIn();
            skeleton.runs.append({runStart, at - runStart});
        } else {
            skeleton.bytes += runChunks;
        }
        runStart = -1;
        runHasImageData = false;
        runChunks.clear();
    };
    qint64 pos = kSignatureSize;
    while (pos + kChunkOverhead <= size) {
        const QByteArray header = readExactlyAt(fd, pos, 8);
        if (header.size() != 8)
            return std::nullopt;
        const quint32 length = big32(header.constData());
        const QByteArray type = header.mid(4, 4);
        if (length > kMaxChunkLength || qint64(length) > size - pos - kChunkOverhead)
            return std::nullopt;
        if (pos == kSignatureSize && type != "IHDR")
            return std::nullopt;
        const qint64 whole = kChunkOverhead + qint64(length);
        if (isInRun(type)) {
            if (runStart < 0)
                runStart = pos;
            if (isImageData(type)) {
                runHasImageData = true;
                runChunks.clear();
            } else if (!runHasImageData) {
                if (length > kMaxKeptFrameControl)
                    return std::nullopt;
                const QByteArray chunk = readExactlyAt(fd, pos, whole);
                if (chunk.isEmpty())
                    return std::nullopt;
                runChunks += chunk;
            }
            pos += whole;
            continue;
        }
        endRun(pos);
        const QByteArray chunk = readExactlyAt(fd, pos, whole);
        if (chunk.isEmpty())
            return std::nullopt;
        skeleton.bytes += chunk;
        pos += whole;
        if (type == "IEND") {
            // Bytes after the end are not a chunk exiv2 would keep; the whole file decides.
            if (pos != size || skeleton.runs.isEmpty())
                return std::nullopt;
            return skeleton;
        }
    }
    return std::nullopt;
}

std::optional<PngSkeleton> readPngSkeleton(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return readPngSkeleton(file);
}

std::optional<QList<QByteArray>> piecesAroundStandIns(const QByteArray& rewritten, qsizetype standIns)
{
    const QByteArray standIn = pngImageDataStandIn();
    if (rewritten.size() < kSignatureSize || !rewritten.startsWith("\x89PNG\r\n\x1a\n"))
        return std::nullopt;
    QList<QByteArray> pieces;
    qsizetype pieceStart = 0;
    qsizetype pos = kSignatureSize;
    while (pos + kChunkOverhead <= rewritten.size()) {
        const quint32 length = big32(rewritten.constData() + pos);
        if (qint64(length) > rewritten.size() - pos - kChunkOverhead)
            return std::nullopt;
        const QByteArray type = rewritten.mid(pos + 4, 4);
        const qsizetype whole = kChunkOverhead + qsizetype(length);
        if (isImageData(type)) {
            // Every image-data chunk of a skeleton is a stand-in; anything else is not ours.
            if (QByteArrayView(rewritten).sliced(pos, whole) != standIn)
                return std::nullopt;
            pieces.append(rewritten.mid(pieceStart, pos - pieceStart));
            pieceStart = pos + whole;
        }
        pos += whole;
        if (type == "IEND") {
            if (pos != rewritten.size() || pieces.size() != standIns)
                return std::nullopt;
            pieces.append(rewritten.mid(pieceStart));
            return pieces;
        }
    }
    return std::nullopt;
}

}  // namespace pelorin

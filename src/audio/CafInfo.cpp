#include "audio/CafInfo.h"

#include "model/SafeOutput.h"

#include <QFile>
#include <QIODevice>
#include <QtEndian>

#include <algorithm>
#include <cmath>


namespace pelorin {
namespace {

constexpr std::int64_t kHeaderSize = 8;
constexpr std::int64_t kChunkHeaderSize = 12;
// An info chunk holds a few short texts; anything larger is not one we read.
constexpr std::int64_t kMaxInfoSize = 16 * 1024 * 1024;
constexpr int kMaxChunks = 100000;

bool readExactly(QIODevice& device, std::int64_t offset, char* out, std::int64_t size)
{
    return device.seek(offset) && device.read(out, size) == size;
}

QByteArray bigEndian64(std::int64_t value)
{
    QByteArray bytes(8, '\0');
    qToBigEndian<qint64>(value, bytes.data());
    return bytes;
}

}  // namespace

CafLayout readCafLayout(QIODevice& device)
{
    CafLayout layout;
    const std::int64_t fileSize = device.size();
    char header[kHeaderSize];
    if (!readExactly(device, 0, header, kHeaderSize) || QByteArray(header, 4) != "caff") {
        layout.problem = QStringLiteral("not a CAF file");
        return layout;
    }
    if (qFromBigEndian<quint16>(header + 4) != 1) {
        layout.problem = QStringLiteral("unsupported CAF version");
        return layout;
    }
    std::int64_t offset = kHeaderSize;
    while (offset < fileSize) {
        char chunkHeader[kChunkHeaderSize];
        if (fileSize - offset < kChunkHeaderSize
            || !readExactly(device, offset, chunkHeader, kChunkHeaderSize)) {
            layout.problem = QStringLiteral("truncated chunk header at offset %1").arg(offset);
            return layout;
        }
        CafChunk chunk{QByteArray(chunkHeader, 4), offset, qFromBigEndian<qint64>(chunkHeader + 4)};
        const std::int64_t room = fileSize - offset - kChunkHeaderSize;
        if (chunk.size == -1 && chunk.type == "data") {
            layout.chunks.append(chunk);
            return layout;  // runs to the end of the file
        }
        if (chunk.size < 0 || chunk.size > room) {
            layout.problem = QStringLiteral("chunk '%1' at offset %2 runs past the end of the file")
                                 .arg(QString::fromLatin1(chunk.type.toHex()), QString::number(offset));
            return layout;
        }
        layout.chunks.append(chunk);
        if (layout.chunks.size() > kMaxChunks) {
            layout.problem = QStringLiteral("too many chunks");
            return layout;
        }
        offset += kChunkHeaderSize + chunk.size;
    }
    if (layout.chunks.isEmpty() || layout.chunks.first().type != "desc")
        layout.problem = QStringLiteral("the CAF file has no audio description chunk");
    return layout;
}

CafInfoEntries parseCafInfoBody(const QByteArray& body, QString* problem)
{
    CafInfoEntries entries;
    if (body.size() < 4) {
        if (problem)
            *problem = QStringLiteral("info chunk too short");
        return entries;
    }
    const quint32 count = qFromBigEndian<quint32>(body.constData());
    qsizetype pos = 4;
    auto nextString = [&](QString* out) {
        const qsizetype end = body.indexOf('\0', pos);
        if (end < 0)
            return false;
        *out = QString::fromUtf8(body.constData() + pos, end - pos);
        pos = end + 1;
        return true;
    };
    // The count is only trusted as far as the strings go.
    for (quint32 i = 0; i < count && pos < body.size(); ++i) {
        CafInfoEntry entry;
        if (!nextString(&entry.key) || !nextString(&entry.value)) {
            if (problem)
                *problem = QStringLiteral("info chunk entry %1 is cut off").arg(i);
            break;
        }
        entries.append(entry);
    }
    return entries;
}

CafInfoEntries readCafInfo(QIODevice& device, QString* problem)
{
    const CafLayout layout = readCafLayout(device);
    if (!layout.ok() && problem)
        *problem = layout.problem;
    for (const CafChunk& chunk : layout.chunks) {
        if (chunk.type != "info")
            continue;
        if (chunk.size > kMaxInfoSize) {
            if (problem)
                *problem = QStringLiteral("info chunk too large");
            return {};
        }
        QByteArray body(static_cast<qsizetype>(chunk.size), '\0');
        if (!readExactly(device, chunk.offset + kChunkHeaderSize, body.data(), chunk.size))
            return {};
        return parseCafInfoBody(body, problem);
    }
    return {};
}

std::optional<CafAudioFormat> readCafAudioFormat(QIODevice& device)
{
    const CafLayout layout = readCafLayout(device);
    if (layout.chunks.isEmpty() || layout.chunks.first().type != "desc" || layout.chunks.first().size < 32)
        return std::nullopt;
    char desc[32];
    if (!readExactly(device, layout.chunks.first().offset + kChunkHeaderSize, desc, 32))
        return std::nullopt;
    CafAudioFormat format;
    format.sampleRate = qFromBigEndian<double>(desc);
    const quint32 bytesPerPacket = qFromBigEndian<quint32>(desc + 16);
    const quint32 framesPerPacket = qFromBigEndian<quint32>(desc + 20);
    format.channels = static_cast<int>(qFromBigEndian<quint32>(desc + 24));
    std::int64_t frames = 0;
    for (const CafChunk& chunk : layout.chunks) {
        if (chunk.type == "data") {
            // The data starts with a 4-byte edit count.
            const std::int64_t size = chunk.size < 0 ? device.size() - chunk.offset - kChunkHeaderSize : chunk.size;
            format.audioBytes = std::max<std::int64_t>(0, size - 4);
        } else if (chunk.type == "pakt" && chunk.size >= 16) {
            char pakt[16];
            if (readExactly(device, chunk.offset + kChunkHeaderSize, pakt, 16))
                frames = qFromBigEndian<qint64>(pakt + 8);  // valid frames
        }
    }
    if (frames <= 0 && bytesPerPacket > 0 && framesPerPacket > 0)
        frames = format.audioBytes / bytesPerPacket * framesPerPacket;
    if (frames > 0 && format.sampleRate > 0 && std::isfinite(format.sampleRate))
        format.durationSeconds = static_cast<double>(frames) / format.sampleRate;
    return format;
}

QByteArray renderCafInfoBody(const CafInfoEntries& entries)
{
    QByteArray body(4, '\0');
    qToBigEndian<quint32>(static_cast<quint32>(entries.size()), body.data());
    for (const CafInfoEntry& entry : entries) {
        body += entry.key.toUtf8();
        body += '\0';
        body += entry.value.toUtf8();
        body += '\0';
    }
    return body;
}

bool writeCafWithInfo(const QString& sourcePath, const CafInfoEntries& entries,
                      AtomicFileWriter& writer, QString* problem)
{
    QFile source(sourcePath);
    if (!source.open(QIODevice::ReadOnly)) {
        *problem = source.errorString();
        return false;
    }
    const CafLayout layout = readCafLayout(source);
    if (!layout.ok()) {
        *problem = layout.problem;
        return false;
    }
    const int fd = source.handle();
    if (!writer.appendFrom(fd, 0, kHeaderSize)) {
        *problem = writer.error();
        return false;
    }
    bool infoWritten = entries.isEmpty();
    for (const CafChunk& chunk : layout.chunks) {
        if (chunk.type == "info")
            continue;
        const std::int64_t length = chunk.size < 0 ? source.size() - chunk.offset
                                                   : kChunkHeaderSize + chunk.size;
        if (!writer.appendFrom(fd, chunk.offset, length)) {
            *problem = writer.error();
            return false;
        }
        // The description chunk must stay first; the new info chunk follows it.
        if (!infoWritten && chunk.type == "desc") {
            const QByteArray body = renderCafInfoBody(entries);
            if (!writer.write(QByteArray("info") + bigEndian64(body.size()) + body)) {
                *problem = writer.error();
                return false;
            }
            infoWritten = true;
        }
    }
    return true;
}

}  // namespace pelorin

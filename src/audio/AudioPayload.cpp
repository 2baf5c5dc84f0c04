#include "audio/AudioPayload.h"

#include "model/SafeOutput.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <optional>
#include <vector>

namespace pelorin {
namespace {

struct Range {
    qint64 offset = 0;
    qint64 length = 0;
};
using Ranges = std::vector<Range>;

// A file is walked through at most this many chunks, boxes or pages of headers.
constexpr int kMaxPieces = 1 << 22;

QByteArray readAt(QFile& file, qint64 offset, qint64 length)
{
    if (offset < 0 || length < 0 || !file.seek(offset))
        return {};
    return file.read(length);
}

quint32 syncSafe(const QByteArray& b, int at)
{
    return (quint32(quint8(b[at]) & 0x7F) << 21) | (quint32(quint8(b[at + 1]) & 0x7F) << 14)
           | (quint32(quint8(b[at + 2]) & 0x7F) << 7) | quint32(quint8(b[at + 3]) & 0x7F);
}

// Past every ID3v2 tag at offset (some files carry two).
qint64 afterId3v2(QFile& file, qint64 offset)
{
    for (int n = 0; n < 16; ++n) {
        const QByteArray header = readAt(file, offset, 10);
        if (header.size() < 10 || !header.startsWith("ID3"))
            break;
        offset += 10 + qint64(syncSafe(header, 6)) + ((quint8(header[5]) & 0x10) ? 10 : 0);
    }
    return offset;
}

// Before the ID3v1 and APE tags at the end.
qint64 beforeTrailingTags(QFile& file, qint64 start, qint64 end)
{
    for (int n = 0; n < 4 && end > start; ++n) {
        if (end - start >= 128 && readAt(file, end - 128, 3) == "TAG") {
            end -= 128;
            continue;
        }
        const QByteArray footer = end - start >= 32 ? readAt(file, end - 32, 32) : QByteArray();
        if (footer.startsWith("APETAGEX")) {
            const qint64 size = qFromLittleEndian<quint32>(footer.constData() + 12);
            const bool header = qFromLittleEndian<quint32>(footer.constData() + 20) & 0x80000000u;
            end -= size + (header ? 32 : 0);
            continue;
        }
        break;
    }
    return end;
}

std::optional<Ranges> mpegAudio(QFile& file)
{
    const qint64 start = afterId3v2(file, 0);
    const qint64 end = beforeTrailingTags(file, start, file.size());
    if (end < start)
        return std::nullopt;
    return Ranges{{start, end - start}};
}

std::optional<Ranges> flacAudio(QFile& file)
{
    qint64 pos = afterId3v2(file, 0);
    if (readAt(file, pos, 4) != "fLaC")
        return std::nullopt;
    pos += 4;
    for (int n = 0; n < kMaxPieces; ++n) {
        const QByteArray header = readAt(file, pos, 4);
        if (header.size() < 4)
            return std::nullopt;
        pos += 4 + ((qint64(quint8(header[1])) << 16) | (quint8(header[2]) << 8) | quint8(header[3]));
        if (quint8(header[0]) & 0x80)
            break;
    }
    const qint64 end = beforeTrailingTags(file, pos, file.size());
    if (pos > end)
        return std::nullopt;
    return Ranges{{pos, end - pos}};
}

// The payload of the first chunk of the given type among the chunks of a RIFF or FORM file.
std::optional<Ranges> soundChunk(QFile& file, const QByteArray& type, bool bigEndian)
{
    qint64 pos = 12;
    for (int n = 0; n < kMaxPieces && pos + 8 <= file.size(); ++n) {
        const QByteArray header = readAt(file, pos, 8);
        const quint32 size = bigEndian ? qFromBigEndian<quint32>(header.constData() + 4)
                                       : qFromLittleEndian<quint32>(header.constData() + 4);
        if (header.startsWith(type))
            return Ranges{{pos + 8, qMin<qint64>(size, file.size() - pos - 8)}};
        pos += 8 + qint64(size) + (size & 1);
    }
    return std::nullopt;
}

std::optional<Ranges> cafAudio(QFile& file)
{
    qint64 pos = 8;
    for (int n = 0; n < kMaxPieces && pos + 12 <= file.size(); ++n) {
        const QByteArray header = readAt(file, pos, 12);
        const qint64 size = qFromBigEndian<qint64>(header.constData() + 4);
        if (header.startsWith("data"))
            return Ranges{{pos + 12, size < 0 ? file.size() - pos - 12 : qMin(size, file.size() - pos - 12)}};
        if (size < 0)
            return std::nullopt;
        pos += 12 + size;
    }
    return std::nullopt;
}

std::optional<Ranges> mp4MediaData(QFile& file)
{
    Ranges ranges;
    qint64 pos = 0;
    for (int n = 0; n < kMaxPieces && pos + 8 <= file.size(); ++n) {
        const QByteArray header = readAt(file, pos, 16);
        qint64 size = qFromBigEndian<quint32>(header.constData());
        qint64 headerSize = 8;
        if (size == 1 && header.size() == 16) {
            size = qFromBigEndian<qint64>(header.constData() + 8);
            headerSize = 16;
        } else if (size == 0) {
            size = file.size() - pos;
        }
        if (size < headerSize || size > file.size() - pos)
            return std::nullopt;
        if (header.mid(4, 4) == "mdat")
            ranges.push_back({pos + headerSize, size - headerSize});
        pos += size;
    }
    return ranges;
}

// The page bodies of an Ogg stream once its header pages (granule position 0) are behind.
std::optional<Ranges> oggAudioPages(QFile& file)
{
    Ranges ranges;
    qint64 pos = 0;
    for (int n = 0; n < kMaxPieces && pos + 27 <= file.size(); ++n) {
        const QByteArray header = readAt(file, pos, 27);
        if (!header.startsWith("OggS"))
            return std::nullopt;
        const int segments = quint8(header[26]);
        const QByteArray lacing = readAt(file, pos + 27, segments);
        if (lacing.size() != segments)
            return std::nullopt;
        qint64 body = 0;
        for (const char lace : lacing)
            body += quint8(lace);
        const qint64 granule = qFromLittleEndian<qint64>(header.constData() + 6);
        const qint64 bodyAt = pos + 27 + segments;
        if (granule != 0)
            ranges.push_back({bodyAt, qMin(body, file.size() - bodyAt)});
        pos = bodyAt + body;
    }
    return ranges;
}

std::optional<Ranges> audioRanges(QFile& file, AudioContainer container)
{
    switch (container) {
    case AudioContainer::Mpeg: return mpegAudio(file);
    case AudioContainer::Flac: return flacAudio(file);
    case AudioContainer::Wav: return soundChunk(file, "data", false);
    case AudioContainer::Aiff: return soundChunk(file, "SSND", true);
    case AudioContainer::Caf: return cafAudio(file);
    case AudioContainer::Mp4: return mp4MediaData(file);
    case AudioContainer::OggVorbis:
    case AudioContainer::OggOpus:
    case AudioContainer::OggFlac:
    case AudioContainer::OggSpeex: return oggAudioPages(file);
    default: return std::nullopt;
    }
}

qint64 total(const Ranges& ranges)
{
    qint64 sum = 0;
    for (const Range& r : ranges)
        sum += r.length;
    return sum;
}

// Reads the ranges one after another as one stream, into one buffer that is kept between reads
// (a fresh buffer of a megabyte per read is mapped and faulted in anew each time).
class RangeStream {
public:
    RangeStream(QFile& file, const Ranges& ranges) : file_(file), ranges_(ranges) {}
    // The next length bytes of the stream (fewer at its end), or empty on a read error.
    QByteArrayView next(qint64 length)
    {
        buffer_.resize(qsizetype(length));
        qint64 filled = 0;
        while (filled < length && index_ < ranges_.size()) {
            const Range& r = ranges_[index_];
            const qint64 take = qMin(length - filled, r.length - within_);
            if (!file_.seek(r.offset + within_) || file_.read(buffer_.data() + filled, take) != take)
                return {};
            filled += take;
            within_ += take;
            if (within_ == r.length) {
                ++index_;
                within_ = 0;
            }
        }
        return QByteArrayView(buffer_).first(qsizetype(filled));
    }
    // Moves on by length bytes without reading them.
    void skip(qint64 length)
    {
        while (length > 0 && index_ < ranges_.size()) {
            const qint64 take = qMin(length, ranges_[index_].length - within_);
            length -= take;
            within_ += take;
            if (within_ == ranges_[index_].length) {
                ++index_;
                within_ = 0;
            }
        }
    }

private:
    QFile& file_;
    const Ranges& ranges_;
    std::size_t index_ = 0;
    qint64 within_ = 0;
    QByteArray buffer_;
};

bool sameRanges(const Ranges& a, const Ranges& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const Range& x, const Range& y) { return x.offset == y.offset && x.length == y.length; });
}

}  // namespace

QString audioPayloadDifference(const QString& sourcePath, const QString& outputPath, AudioContainer container)
{
    QFile source(sourcePath), output(outputPath);
    if (!source.open(QIODevice::ReadOnly) || !output.open(QIODevice::ReadOnly))
        return QStringLiteral("the output cannot be read back");
    const auto before = audioRanges(source, container);
    if (!before)
        return {};  // a layout this check does not follow; the reader's checks still apply
    const auto after = audioRanges(output, container);
    if (!after)
        return QStringLiteral("the output's audio cannot be found");
    if (total(*after) != total(*before))
        return QStringLiteral("the output holds %1 bytes of audio, the source %2").arg(total(*after)).arg(total(*before));
    const QString differs = QStringLiteral("the output's audio differs from the source's");
    RangeStream a(source, *before), b(output, *after);
    const qint64 length = total(*before);
    // Audio left where it lies in the copy was never in a writer's buffer (the copy is made in
    // the kernel, the tags are written around it): its ends are compared, as for any copy. Audio
    // that a writer moved has passed through its buffers and is compared whole.
    if (sameRanges(*before, *after) && length > 2 * kComparedCopyEnds) {
        const auto endsDiffer = [&] {
            const QByteArrayView x = a.next(kComparedCopyEnds);
            return x.size() != kComparedCopyEnds || x != b.next(kComparedCopyEnds);
        };
        if (endsDiffer())
            return differs;
        a.skip(length - 2 * kComparedCopyEnds);
        b.skip(length - 2 * kComparedCopyEnds);
        return endsDiffer() ? differs : QString();
    }
    constexpr qint64 kBlock = 1 << 20;
    for (qint64 done = 0; done < length; done += kBlock) {
        const QByteArrayView x = a.next(qMin(kBlock, length - done));
        if (x.isEmpty() || x != b.next(qMin(kBlock, length - done)))
            return differs;
    }
    return {};
}

}  // namespace pelorin

#include "audio/AudioContainer.h"

#include <QFile>

namespace pelorin {
namespace {

bool at(const QByteArray& bytes, qsizetype offset, const char* magic)
{
    const qsizetype length = static_cast<qsizetype>(qstrlen(magic));
    return bytes.size() >= offset + length && bytes.mid(offset, length) == QByteArray(magic, length);
}

// Size of an ID3v2 tag at the start (header, synchsafe size, optional footer), or 0.
qsizetype leadingId3Size(const QByteArray& bytes)
{
    if (!at(bytes, 0, "ID3") || bytes.size() < 10)
        return 0;
    qsizetype size = 0;
    for (int i = 6; i < 10; ++i) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        if (b & 0x80)
            return 0;
        size = (size << 7) | b;
    }
    const bool footer = (static_cast<unsigned char>(bytes[5]) & 0x10) != 0;
    return 10 + size + (footer ? 10 : 0);
}

bool isMpegFrameSync(const QByteArray& bytes, qsizetype offset)
{
    if (bytes.size() < offset + 2)
        return false;
    const auto b0 = static_cast<unsigned char>(bytes[offset]);
    const auto b1 = static_cast<unsigned char>(bytes[offset + 1]);
    // Sync bits, a valid version and a valid layer.
    return b0 == 0xFF && (b1 & 0xE0) == 0xE0 && (b1 & 0x18) != 0x08 && (b1 & 0x06) != 0;
}

// A full MPEG audio frame header: sync, version, layer, a real bit rate and sample rate.
bool isMpegFrameHeader(const QByteArray& bytes, qsizetype offset)
{
    if (!isMpegFrameSync(bytes, offset) || bytes.size() < offset + 4)
        return false;
    const auto b2 = static_cast<unsigned char>(bytes[offset + 2]);
    return (b2 >> 4) != 0x0F && (b2 >> 4) != 0 && ((b2 >> 2) & 0x03) != 0x03;
}

// Length of a Layer III frame from its header, 0 for other layers.
qsizetype layer3FrameLength(const QByteArray& bytes, qsizetype offset)
{
    static const int mpeg1[] = {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320};
    static const int mpeg2[] = {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160};
    static const int rates[] = {44100, 48000, 32000};
    const auto b1 = static_cast<unsigned char>(bytes[offset + 1]);
    const auto b2 = static_cast<unsigned char>(bytes[offset + 2]);
    if (((b1 >> 1) & 0x03) != 0x01)
        return 0;
    const int version = (b1 >> 3) & 0x03;  // 3: MPEG-1, 2: MPEG-2, 0: MPEG-2.5
    const bool one = version == 3;
    const int bitrate = (one ? mpeg1 : mpeg2)[b2 >> 4] * 1000;
    const int rate = rates[(b2 >> 2) & 0x03] / (one ? 1 : version == 2 ? 2 : 4);
    return (one ? 144 : 72) * bitrate / rate + ((b2 >> 1) & 0x01);
}

// Some encoders leave junk before the first frame, which TagLib skips as well. Away from the
// start a frame only counts when a second one follows it, so that stray bytes of another
// container are not taken for MPEG audio.
bool findsMpegFrame(const QByteArray& bytes)
{
    for (qsizetype i = 0; i + 4 <= bytes.size(); ++i) {
        if (!isMpegFrameHeader(bytes, i))
            continue;
        const qsizetype length = layer3FrameLength(bytes, i);
        if (length > 0 && isMpegFrameHeader(bytes, i + length))
            return true;
    }
    return false;
}

AudioContainer detectOgg(const QByteArray& bytes)
{
    // The first packet starts after the page header and its segment table.
    if (bytes.size() < 27)
        return AudioContainer::Unknown;
    const int segments = static_cast<unsigned char>(bytes[26]);
    const qsizetype packet = 27 + segments;
    if (at(bytes, packet, "\x01vorbis"))
        return AudioContainer::OggVorbis;
    if (at(bytes, packet, "OpusHead"))
        return AudioContainer::OggOpus;
    if (at(bytes, packet, "\x7F" "FLAC"))
        return AudioContainer::OggFlac;
    if (at(bytes, packet, "Speex   "))
        return AudioContainer::OggSpeex;
    return AudioContainer::Unknown;
}

// Audio containers whose tags no writer here can store. Named so that such a file is refused
// with its name instead of being searched for MPEG frames: PCM samples can look like two
// frame headers in a row, and an ID3v2 tag put in front of the file would turn it into an MP3.
QString unwritableContainerName(const QByteArray& header)
{
    if (at(header, 0, "RIFX"))
        return QStringLiteral("big-endian RIFX WAVE");
    if ((at(header, 0, "RF64") || at(header, 0, "BW64")) && at(header, 8, "WAVE"))
        return QStringLiteral("RF64 WAVE");
    if (at(header, 0, "riff\x2E\x91\xCF\x11"))
        return QStringLiteral("Wave64");
    if (at(header, 0, "DSD "))
        return QStringLiteral("DSF");
    if (at(header, 0, "FRM8"))
        return QStringLiteral("DSDIFF");
    return {};
}

}  // namespace

namespace {

// What lies behind a leading ID3v2 tag.
AudioContainer detectBehindId3(const QByteArray& behind)
{
    if (at(behind, 0, "fLaC"))
        return AudioContainer::Flac;
    if (at(behind, 0, "TTA1"))
        return AudioContainer::TrueAudio;
    if (at(behind, 0, "MAC "))
        return AudioContainer::Ape;
    // A tag alone is taken as an MP3 without frames; TagLib then reports the missing audio.
    if (behind.isEmpty() || findsMpegFrame(behind))
        return AudioContainer::Mpeg;
    // The tag already says MP3; one frame header anywhere near is enough.
    for (qsizetype i = 0; i + 4 <= behind.size(); ++i)
        if (isMpegFrameHeader(behind, i))
            return AudioContainer::Mpeg;
    return AudioContainer::Unknown;
}

}  // namespace

AudioContainer detectAudioContainer(const QByteArray& header)
{
    if (!unwritableContainerName(header).isEmpty())
        return AudioContainer::Unknown;
    if (at(header, 0, "RIFF") && at(header, 8, "WAVE"))
        return AudioContainer::Wav;
    if (at(header, 0, "FORM") && (at(header, 8, "AIFF") || at(header, 8, "AIFC")))
        return AudioContainer::Aiff;
    if (at(header, 0, "caff"))
        return AudioContainer::Caf;
    if (at(header, 0, "fLaC"))
        return AudioContainer::Flac;
    if (at(header, 0, "OggS"))
        return detectOgg(header);
    if (at(header, 4, "ftyp"))
        return AudioContainer::Mp4;
    if (at(header, 0, "\x30\x26\xB2\x75\x8E\x66\xCF\x11"))
        return AudioContainer::Asf;
    if (at(header, 0, "MAC "))
        return AudioContainer::Ape;
    if (at(header, 0, "wvpk"))
        return AudioContainer::WavPack;
    if (at(header, 0, "MPCK") || at(header, 0, "MP+"))
        return AudioContainer::Mpc;
    if (at(header, 0, "TTA1"))
        return AudioContainer::TrueAudio;
    if (const qsizetype skip = leadingId3Size(header))
        return detectBehindId3(header.mid(skip));
    if (isMpegFrameSync(header, 0) || findsMpegFrame(header))
        return AudioContainer::Mpeg;
    return AudioContainer::Unknown;
}

AudioContainer detectAudioContainerOfFile(const QString& path, QString* problem)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (problem)
            *problem = QStringLiteral("cannot open the file: %1").arg(file.errorString());
        return AudioContainer::Unknown;
    }
    const QByteArray header = file.read(4096);
    AudioContainer container = AudioContainer::Unknown;
    const qsizetype skip = leadingId3Size(header);
    if (skip > 0 && skip + 64 > header.size())
        container = file.seek(skip) ? detectBehindId3(file.read(4096)) : AudioContainer::Mpeg;
    else
        container = detectAudioContainer(header);
    if (container != AudioContainer::Unknown || !problem)
        return container;
    if (header.isEmpty())
        *problem = QStringLiteral("the file is empty");
    else if (const QString name = unwritableContainerName(header); !name.isEmpty())
        *problem = QStringLiteral("a %1 file, whose tags this program neither reads nor writes").arg(name);
    else
        *problem = QStringLiteral("not an audio container this program knows");
    return container;
}

QString audioContainerName(AudioContainer container)
{
    switch (container) {
    case AudioContainer::Mpeg: return QStringLiteral("MPEG audio");
    case AudioContainer::Flac: return QStringLiteral("FLAC");
    case AudioContainer::Wav: return QStringLiteral("RIFF/WAVE");
    case AudioContainer::Aiff: return QStringLiteral("AIFF");
    case AudioContainer::Caf: return QStringLiteral("CAF");
    case AudioContainer::Mp4: return QStringLiteral("MP4");
    case AudioContainer::OggVorbis: return QStringLiteral("Ogg Vorbis");
    case AudioContainer::OggOpus: return QStringLiteral("Ogg Opus");
    case AudioContainer::OggFlac: return QStringLiteral("Ogg FLAC");
    case AudioContainer::OggSpeex: return QStringLiteral("Ogg Speex");
    case AudioContainer::Asf: return QStringLiteral("ASF");
    case AudioContainer::Ape: return QStringLiteral("Monkey's Audio");
    case AudioContainer::WavPack: return QStringLiteral("WavPack");
    case AudioContainer::Mpc: return QStringLiteral("Musepack");
    case AudioContainer::TrueAudio: return QStringLiteral("TrueAudio");
    case AudioContainer::Unknown: break;
    }
    return QStringLiteral("unknown");
}

AudioReaderRoute audioReaderRoute(const QString& extension)
{
    const QString e = extension.toLower();
    if (e == QLatin1String("wav") || e == QLatin1String("flac") || e == QLatin1String("au"))
        return AudioReaderRoute::Wav;
    // CAF's info chunk speaks the same "caaf" identifiers as AIFF's text chunks; through the
    // MP3 table its title and artist would never reach the record.
    if (e == QLatin1String("aiff") || e == QLatin1String("aif") || e == QLatin1String("caf"))
        return AudioReaderRoute::Aiff;
    return AudioReaderRoute::Mp3;
}

AudioCapabilities audioCapabilities(AudioContainer container)
{
    switch (container) {
    case AudioContainer::Unknown:
        return {false, false};
    case AudioContainer::Caf:  // CAF has no standard picture chunk
    case AudioContainer::Ape:
    case AudioContainer::WavPack:
    case AudioContainer::Mpc:
    case AudioContainer::TrueAudio:
    case AudioContainer::OggSpeex:
        return {true, false};
    default:
        return {true, true};
    }
}

QString audioArtworkRefusal(AudioContainer container)
{
    if (container == AudioContainer::Unknown || audioCapabilities(container).writeArtwork)
        return {};
    return QStringLiteral("%1 files cannot hold artwork here").arg(audioContainerName(container));
}

}  // namespace pelorin

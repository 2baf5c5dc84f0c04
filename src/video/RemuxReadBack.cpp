#include "video/RemuxReadBack.h"

#include "video/FfmpegInput.h"

#include <QCryptographicHash>

#include <memory>
#include <vector>

namespace pelorin {
namespace {

struct StreamDigest {
    qint64 packets = 0;
    QByteArray hash;
};

// Every packet of every stream, as the demuxer hands it out (Matroska's header-stripping
// compression undone), hashed in order per stream.
bool digestPackets(AVFormatContext* input, std::vector<StreamDigest>& digests, QString* error)
{
    std::vector<std::unique_ptr<QCryptographicHash>> hashes;
    for (unsigned i = 0; i < input->nb_streams; ++i)
        hashes.push_back(std::make_unique<QCryptographicHash>(QCryptographicHash::Sha256));
    digests.assign(input->nb_streams, {});
    std::unique_ptr<AVPacket, PacketFreer> packet(ffmpeg().av_packet_alloc());
    int status = 0;
    while ((status = ffmpeg().av_read_frame(input, packet.get())) >= 0) {
        const unsigned index = unsigned(packet->stream_index);
        if (index < input->nb_streams) {
            ++digests[index].packets;
            hashes[index]->addData(QByteArrayView(reinterpret_cast<const char*>(packet->data), packet->size));
        }
        ffmpeg().av_packet_unref(packet.get());
    }
    if (status != AVERROR_EOF) {
        *error = ffmpegError(status);
        return false;
    }
    for (unsigned i = 0; i < input->nb_streams; ++i)
        digests[i].hash = hashes[i]->result();
    return true;
}

QByteArray extradata(const AVCodecParameters* p)
{
    return QByteArray(reinterpret_cast<const char*>(p->extradata), p->extradata_size);
}

// The parameters a decoder needs; a difference means the stream cannot decode as before.
QString parameterDifference(const AVCodecParameters* a, const AVCodecParameters* b)
{
    if (a->codec_type != b->codec_type)
        return QStringLiteral("its kind");
    if (a->codec_id != b->codec_id)
        return QStringLiteral("its codec (%1, not %2)").arg(ffmpeg().avcodec_get_name(b->codec_id), ffmpeg().avcodec_get_name(a->codec_id));
    if (extradata(a) != extradata(b))
        return QStringLiteral("its codec setup (extradata)");
    if (a->width != b->width || a->height != b->height)
        return QStringLiteral("its size (%1x%2, not %3x%4)").arg(b->width).arg(b->height).arg(a->width).arg(a->height);
    if (a->sample_rate != b->sample_rate || a->ch_layout.nb_channels != b->ch_layout.nb_channels)
        return QStringLiteral("its sample rate or channels");
    return {};
}

}  // namespace

QString remuxReadBackProblem(const QString& sourcePath, const QString& outputPath)
{
    QString error;
    const MovieInput source = openMovieInput(sourcePath, &error);
    if (!source)
        return QStringLiteral("the source does not read again: %1").arg(error);
    const MovieInput output = openMovieInput(outputPath, &error);
    if (!output)
        return QStringLiteral("the output does not read back: %1").arg(error);
    if (output->nb_streams != source->nb_streams)
        return QStringLiteral("the output holds %1 streams, the source %2").arg(output->nb_streams).arg(source->nb_streams);
    for (unsigned i = 0; i < source->nb_streams; ++i) {
        const QString difference = parameterDifference(source->streams[i]->codecpar, output->streams[i]->codecpar);
        if (!difference.isEmpty())
            return QStringLiteral("stream %1 differs in %2").arg(i).arg(difference);
    }
    std::vector<StreamDigest> before, after;
    if (!digestPackets(source.get(), before, &error))
        return QStringLiteral("the source's packets do not read again: %1").arg(error);
    if (!digestPackets(output.get(), after, &error))
        return QStringLiteral("the output's packets do not read back: %1").arg(error);
    for (unsigned i = 0; i < source->nb_streams; ++i) {
        if (after[i].packets != before[i].packets)
            return QStringLiteral("stream %1 has %2 packets, the source %3").arg(i).arg(after[i].packets).arg(before[i].packets);
        if (after[i].hash != before[i].hash)
            return QStringLiteral("the packet data of stream %1 differs from the source's").arg(i);
    }
    return {};
}

}  // namespace pelorin

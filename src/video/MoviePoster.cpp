#include "video/MoviePoster.h"


#include "video/FfmpegInput.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <memory>

namespace pelorin {

namespace {

// A broken or hostile file must not keep the decoder reading for ever.
constexpr int kMaxPackets = 400;

QImage fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return {};
}

QImage toImage(const AVFrame* frame, int maxSide)
{
    if (frame->width <= 0 || frame->height <= 0)
        return {};
    const double scale = std::min(1.0, double(maxSide) / std::max(frame->width, frame->height));
    const int width = std::max(1, int(frame->width * scale));
    const int height = std::max(1, int(frame->height * scale));
    SwsContext* sws = ffmpeg().sws_getContext(frame->width, frame->height, AVPixelFormat(frame->format), width, height,
                                     AV_PIX_FMT_RGB32, SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (!sws)
        return {};
    QImage image(width, height, QImage::Format_RGB32);
    uint8_t* planes[4] = {image.bits(), nullptr, nullptr, nullptr};
    int strides[4] = {int(image.bytesPerLine()), 0, 0, 0};
    ffmpeg().sws_scale(sws, frame->data, frame->linesize, 0, frame->height, planes, strides);
    ffmpeg().sws_freeContext(sws);
    return image;
}

}  // namespace

QImage moviePosterFrame(const QString& path, int maxSide, QString* error)
{
    QString openError;
    const MovieInput format = openMovieInput(path, &openError);
    if (!format)
        return fail(error, openError);

    // A cover picture stored with the movie is what a person expects to see.
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        const AVStream* stream = format->streams[i];
        if ((stream->disposition & AV_DISPOSITION_ATTACHED_PIC) && stream->attached_pic.size > 0) {
            QImage cover = QImage::fromData(stream->attached_pic.data, stream->attached_pic.size);
            if (!cover.isNull())
                return cover.scaled(maxSide, maxSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        }
    }

    const AVCodec* decoder = nullptr;
    const int streamIndex = ffmpeg().av_find_best_stream(format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (streamIndex < 0 || !decoder)
        return fail(error, QStringLiteral("the movie has no video that can be decoded"));
    std::unique_ptr<AVCodecContext, CodecFreer> codec(ffmpeg().avcodec_alloc_context3(decoder));
    if (!codec || ffmpeg().avcodec_parameters_to_context(codec.get(), format->streams[streamIndex]->codecpar) < 0)
        return fail(error, QStringLiteral("the video decoder cannot be set up"));
    codec->thread_count = 1;
    if (ffmpeg().avcodec_open2(codec.get(), decoder, nullptr) < 0)
        return fail(error, QStringLiteral("the video decoder cannot be opened"));

    std::unique_ptr<AVPacket, PacketFreer> packet(ffmpeg().av_packet_alloc());
    std::unique_ptr<AVFrame, FrameFreer> frame(ffmpeg().av_frame_alloc());
    if (!packet || !frame)
        return fail(error, QStringLiteral("out of memory"));
    bool flushing = false;
    for (int packets = 0; packets < kMaxPackets;) {
        if (!flushing) {
            const int read = ffmpeg().av_read_frame(format.get(), packet.get());
            if (read < 0) {
                flushing = true;
                ffmpeg().avcodec_send_packet(codec.get(), nullptr);
            } else {
                if (packet->stream_index == streamIndex) {
                    ++packets;
                    ffmpeg().avcodec_send_packet(codec.get(), packet.get());
                }
                ffmpeg().av_packet_unref(packet.get());
            }
        }
        const int received = ffmpeg().avcodec_receive_frame(codec.get(), frame.get());
        if (received == 0) {
            QImage image = toImage(frame.get(), maxSide);
            if (!image.isNull())
                return image;
            return fail(error, QStringLiteral("the first picture cannot be converted"));
        }
        if (received == AVERROR_EOF || (flushing && received != AVERROR(EAGAIN)))
            break;
        if (flushing && received == AVERROR(EAGAIN))
            break;
    }
    return fail(error, QStringLiteral("no picture in the first %1 packets").arg(kMaxPackets));
}

}  // namespace pelorin

#pragma once
// FFmpeg handles shared by the movie readers and writers of this folder. FFmpeg's headers stay
// inside src/video.
#include <QString>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <memory>

namespace pelorin {

struct InputCloser {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct CodecFreer {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameFreer {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketFreer {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using MovieInput = std::unique_ptr<AVFormatContext, InputCloser>;

// FFmpeg's text for an error code.
QString ffmpegError(int code);

// Opens a file for reading with its streams found; null with "FFmpeg cannot open the file: …"
// or "FFmpeg finds no streams: …" otherwise. FFmpeg's own log is silenced.
MovieInput openMovieInput(const QString& path, QString* error);

// Opens a file with its streams as the container describes them, without FFmpeg's probing
// decode (which fills in field order, aspect, frame rate and sample format from the codec's
// own data): what a stream copy carries over, nothing the source's container did not say.
MovieInput openContainerInput(const QString& path, QString* error);

}  // namespace pelorin

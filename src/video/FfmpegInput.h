#pragma once
// FFmpeg handles shared by the movie readers and writers of this folder. FFmpeg's headers stay
// inside src/video.
#include <QString>

#include "video/FfmpegLibrary.h"

#include <memory>

namespace pelorin {

struct InputCloser {
    void operator()(AVFormatContext* context) const { ffmpeg().avformat_close_input(&context); }
};
struct CodecFreer {
    void operator()(AVCodecContext* context) const { ffmpeg().avcodec_free_context(&context); }
};
struct FrameFreer {
    void operator()(AVFrame* frame) const { ffmpeg().av_frame_free(&frame); }
};
struct PacketFreer {
    void operator()(AVPacket* packet) const { ffmpeg().av_packet_free(&packet); }
};
using MovieInput = std::unique_ptr<AVFormatContext, InputCloser>;

// FFmpeg's text for an error code.
QString ffmpegError(int code);

// Opens a file for reading with its streams found; null with "FFmpeg cannot open the file: …",
// "FFmpeg finds no streams: …" or why FFmpeg cannot be loaded otherwise. FFmpeg's own log is
// silenced.
MovieInput openMovieInput(const QString& path, QString* error);

// Opens a file with its streams as the container describes them, without FFmpeg's probing
// decode (which fills in field order, aspect, frame rate and sample format from the codec's
// own data): what a stream copy carries over, nothing the source's container did not say.
MovieInput openContainerInput(const QString& path, QString* error);

}  // namespace pelorin

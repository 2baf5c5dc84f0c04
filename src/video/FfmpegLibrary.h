#pragma once
// The FFmpeg functions the movie readers and writers call. FFmpeg's libraries bring some 130
// others with them (codecs, network protocols, disc and share access), which a command on
// songs, or on an MP4 written by the box engine, never needs; they are opened the first time a
// movie goes through FFmpeg, not when the program starts.
#include <QString>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace pelorin {

#define PELORIN_FFMPEG_FUNCTIONS(F)                                                                                  \
    F(av_calloc) F(av_dict_copy) F(av_dict_free) F(av_dict_get) F(av_dict_set) F(av_find_best_stream)               \
    F(av_frame_alloc) F(av_frame_free) F(av_interleaved_write_frame) F(av_log_set_level) F(av_mallocz)               \
    F(av_packet_alloc) F(av_packet_free) F(av_packet_rescale_ts) F(av_packet_unref) F(av_read_frame) F(av_strerror)  \
    F(av_write_trailer) F(avcodec_alloc_context3) F(avcodec_free_context) F(avcodec_get_name) F(avcodec_open2)       \
    F(avcodec_parameters_copy) F(avcodec_parameters_to_context) F(avcodec_receive_frame) F(avcodec_send_packet)      \
    F(avformat_alloc_output_context2) F(avformat_close_input) F(avformat_find_stream_info)                          \
    F(avformat_free_context) F(avformat_new_stream) F(avformat_open_input) F(avformat_write_header) F(avio_closep)   \
    F(avio_open)
#define PELORIN_SWSCALE_FUNCTIONS(F) F(sws_freeContext) F(sws_getContext) F(sws_scale)

struct FfmpegLibrary {
#define PELORIN_FFMPEG_MEMBER(name) decltype(&::name) name = nullptr;
    PELORIN_FFMPEG_FUNCTIONS(PELORIN_FFMPEG_MEMBER)
    PELORIN_SWSCALE_FUNCTIONS(PELORIN_FFMPEG_MEMBER)
#undef PELORIN_FFMPEG_MEMBER
};

// FFmpeg, opened on the first call (from any thread) with its own log silenced; null with the
// reason when it cannot be opened or lacks a function. Later calls give the same answer.
const FfmpegLibrary* ffmpegLibrary(QString* error = nullptr);

// The opened library, for code that runs on what an opening function handed out (a context, a
// packet), which only exists once ffmpegLibrary() has succeeded.
inline const FfmpegLibrary& ffmpeg() { return *ffmpegLibrary(); }

}  // namespace pelorin

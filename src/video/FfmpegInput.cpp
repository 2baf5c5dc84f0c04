#include "video/FfmpegInput.h"

#include "model/SafeOutput.h"

#include <QFile>

#include <cerrno>

extern "C" {
#include <libavutil/error.h>
#include <libavutil/log.h>
}

namespace pelorin {

QString ffmpegError(int code)
{
    // Lack of space is worded as every other writer words it.
    if (code == AVERROR(ENOSPC) || code == AVERROR(EDQUOT) || code == AVERROR(EFBIG))
        return writeErrorText(AVUNERROR(code));
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromUtf8(text);
}

MovieInput openContainerInput(const QString& path, QString* error)
{
    av_log_set_level(AV_LOG_QUIET);
    AVFormatContext* raw = nullptr;
    const int status = avformat_open_input(&raw, QFile::encodeName(path).constData(), nullptr, nullptr);
    if (status < 0) {
        if (error)
            *error = QStringLiteral("FFmpeg cannot open the file: %1").arg(ffmpegError(status));
        return nullptr;
    }
    return MovieInput(raw);
}

MovieInput openMovieInput(const QString& path, QString* error)
{
    MovieInput input = openContainerInput(path, error);
    if (!input)
        return nullptr;
    if (const int status = avformat_find_stream_info(input.get(), nullptr); status < 0) {
        if (error)
            *error = QStringLiteral("FFmpeg finds no streams: %1").arg(ffmpegError(status));
        return nullptr;
    }
    return input;
}

}  // namespace pelorin

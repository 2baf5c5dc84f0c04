#include "video/FfmpegInput.h"

#include "isobmff/BoxTree.h"
#include "model/SafeOutput.h"

#include <QFile>
#include <QtEndian>

#include <cerrno>

extern "C" {
#include <libavutil/error.h>
}

namespace pelorin {

QString ffmpegError(int code)
{
    // Lack of space is worded as every other writer words it.
    if (code == AVERROR(ENOSPC) || code == AVERROR(EDQUOT) || code == AVERROR(EFBIG))
        return writeErrorText(AVUNERROR(code));
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    ffmpeg().av_strerror(code, text, sizeof text);
    return QString::fromUtf8(text);
}

namespace {

// FFmpeg allocates a 'keys' table for the count the box states before it reads the entries, so
// a damaged count (up to four billion) costs it gigabytes of zeroed memory. Every entry takes at
// least 8 bytes; a table that counts more than its box holds would fail in FFmpeg anyway.
bool keyCountsFit(ByteSource& source, const std::vector<Box>& boxes)
{
    for (const Box& box : boxes) {
        if (box.is("keys")) {
            const QByteArray head = source.read(box.payloadOffset(), 8);
            if (head.size() < 8 || qFromBigEndian<quint32>(head.constData() + 4) > (box.payloadSize() - 8) / 8)
                return false;
        }
        if (box.container && !keyCountsFit(source, box.children))
            return false;
    }
    return true;
}

}  // namespace

MovieInput openContainerInput(const QString& path, QString* error)
{
    if (!ffmpegLibrary(error))
        return nullptr;
    FileByteSource source(path);
    if (source.open(nullptr)) {
        const BoxTree tree = readBoxTree(source);
        if (tree.top("moov") && !keyCountsFit(source, tree.boxes)) {
            if (error)
                *error = QStringLiteral("the movie's metadata key table counts more keys than it holds");
            return nullptr;
        }
    }
    AVFormatContext* raw = nullptr;
    const int status = ffmpeg().avformat_open_input(&raw, QFile::encodeName(path).constData(), nullptr, nullptr);
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
    if (const int status = ffmpeg().avformat_find_stream_info(input.get(), nullptr); status < 0) {
        if (error)
            *error = QStringLiteral("FFmpeg finds no streams: %1").arg(ffmpegError(status));
        return nullptr;
    }
    return input;
}

}  // namespace pelorin

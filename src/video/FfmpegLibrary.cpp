#include "video/FfmpegLibrary.h"

#include "model/LibraryByName.h"

namespace pelorin {
namespace {

OpenedLibrary<FfmpegLibrary> openLibraries()
{
    OpenedLibrary<FfmpegLibrary> opened;
    const QString what = QStringLiteral("FFmpeg");
    // libavformat's own dependencies (libavcodec, libavutil) are searched through its handle.
    void* format = openLibraryByName(PELORIN_AVFORMAT_SONAME, what, &opened.error);
    void* scale = openLibraryByName(PELORIN_SWSCALE_SONAME, what, &opened.error);
    if (!format || !scale)
        return opened;
#define PELORIN_FFMPEG_RESOLVE_IN(library, name) \
    opened.functions.name = reinterpret_cast<decltype(&::name)>(librarySymbol(library, #name, what, &opened.error));
#define PELORIN_FFMPEG_RESOLVE(name) PELORIN_FFMPEG_RESOLVE_IN(format, name)
#define PELORIN_SWSCALE_RESOLVE(name) PELORIN_FFMPEG_RESOLVE_IN(scale, name)
    PELORIN_FFMPEG_FUNCTIONS(PELORIN_FFMPEG_RESOLVE)
    PELORIN_SWSCALE_FUNCTIONS(PELORIN_SWSCALE_RESOLVE)
#undef PELORIN_SWSCALE_RESOLVE
#undef PELORIN_FFMPEG_RESOLVE
#undef PELORIN_FFMPEG_RESOLVE_IN
    // Damaged files make FFmpeg complain on stderr; the commands report their own reasons.
    if (opened.error.isEmpty())
        opened.functions.av_log_set_level(AV_LOG_QUIET);
    return opened;
}

}  // namespace

const FfmpegLibrary* ffmpegLibrary(QString* error)
{
    return openedOnce<FfmpegLibrary, openLibraries>(error);
}

}  // namespace pelorin

#include "video/FfmpegLibrary.h"

#include <dlfcn.h>

#include <mutex>

namespace pelorin {
namespace {

struct Opened {
    FfmpegLibrary functions;
    QString error;  // empty when every function was found
};

// Kept open for the life of the process. libavformat's own dependencies (libavcodec,
// libavutil) are searched through its handle.
void* openByName(const char* name, QString* error)
{
    void* handle = dlopen(name, RTLD_NOW | RTLD_LOCAL);
    if (!handle && error->isEmpty())
        *error = QStringLiteral("FFmpeg cannot be loaded: %1").arg(QString::fromLocal8Bit(dlerror()));
    return handle;
}

Opened openLibraries()
{
    Opened opened;
    void* format = openByName(PELORIN_AVFORMAT_SONAME, &opened.error);
    void* scale = openByName(PELORIN_SWSCALE_SONAME, &opened.error);
    if (!format || !scale)
        return opened;
#define PELORIN_FFMPEG_RESOLVE_IN(handle, name)                                               \
    opened.functions.name = reinterpret_cast<decltype(&::name)>(dlsym(handle, #name));        \
    if (!opened.functions.name && opened.error.isEmpty())                                     \
        opened.error = QStringLiteral("FFmpeg lacks %1").arg(QLatin1String(#name));
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
    static std::once_flag once;
    static Opened opened;
    std::call_once(once, [] { opened = openLibraries(); });
    if (!opened.error.isEmpty()) {
        if (error)
            *error = opened.error;
        return nullptr;
    }
    return &opened.functions;
}

}  // namespace pelorin

#include "photo/HeifLibrary.h"

#include <dlfcn.h>

#include <mutex>

namespace pelorin {
namespace {

struct Opened {
    HeifLibrary functions;
    QString error;  // empty when every function was found
};

Opened openLibrary()
{
    Opened opened;
    // Kept open for the life of the process: decoders may run on other threads.
    void* handle = dlopen(PELORIN_HEIF_SONAME, RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        opened.error = QStringLiteral("libheif cannot be loaded: %1").arg(QString::fromLocal8Bit(dlerror()));
        return opened;
    }
#define PELORIN_HEIF_RESOLVE(name)                                                                       \
    opened.functions.name = reinterpret_cast<decltype(&::heif_##name)>(dlsym(handle, "heif_" #name));  \
    if (!opened.functions.name && opened.error.isEmpty())                                                \
        opened.error = QStringLiteral("libheif lacks heif_%1").arg(QLatin1String(#name));
    PELORIN_HEIF_FUNCTIONS(PELORIN_HEIF_RESOLVE)
#undef PELORIN_HEIF_RESOLVE
    if (opened.error.isEmpty())
        opened.functions.init(nullptr);  // registers the codecs; never undone
    return opened;
}

}  // namespace

const HeifLibrary* heifLibrary(QString* error)
{
    static std::once_flag once;
    static Opened opened;
    std::call_once(once, [] { opened = openLibrary(); });
    if (!opened.error.isEmpty()) {
        if (error)
            *error = opened.error;
        return nullptr;
    }
    return &opened.functions;
}

}  // namespace pelorin

#include "photo/PhotoLibraries.h"

#include <exiv2/exiv2.hpp>

#include <mutex>

namespace pelorin {

namespace {

// XMP parsing registers the namespaces a file brings along in one registry for the process;
// photos are read and written on several threads at once, so that registration is serialised.
void lockXmpRegistry(void* data, bool lock)
{
    auto* mutex = static_cast<std::recursive_mutex*>(data);
    if (lock)
        mutex->lock();
    else
        mutex->unlock();
}

}  // namespace

void initializePhotoLibraries()
{
    static std::once_flag once;
    static std::recursive_mutex xmpRegistry;
    std::call_once(once, [] {
        // exiv2's XMP toolkit is not thread-safe until it has been initialised once.
        Exiv2::XmpParser::initialize(lockXmpRegistry, &xmpRegistry);
        // exiv2 writes warnings about odd files to stderr; we report errors ourselves.
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    });
}

}  // namespace pelorin

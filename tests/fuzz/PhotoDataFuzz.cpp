// Whether a photo's data is all there is decided from untrusted bytes: any input must give an
// answer quickly, for every container, and more bytes after a whole TIFF, JPEG, PNG or WebP
// never make it incomplete.
#include "photo/PhotoCompleteness.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using pelorin::PhotoContainer;
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const QByteArray longer = bytes + QByteArray(64, '\xff');
    for (const PhotoContainer container : {PhotoContainer::Tiff, PhotoContainer::Jpeg, PhotoContainer::Png,
                                           PhotoContainer::Heif, PhotoContainer::WebP, PhotoContainer::Gif}) {
        pelorin::PhotoFormat format;
        format.container = container;
        const bool complete = pelorin::photoDataComplete(bytes, format);
        if (complete != pelorin::photoDataComplete(bytes, format))
            std::abort();
        if (complete && container != PhotoContainer::Heif && !pelorin::photoDataComplete(longer, format))
            std::abort();
    }
    return 0;
}

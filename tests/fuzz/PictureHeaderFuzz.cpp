// The pixel facts read from a picture's header come from untrusted bytes: any input must give an
// answer quickly, the same answer twice, and only facts a picture can have.
#include "photo/PictureHeaderFacts.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using pelorin::PhotoContainer;
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    for (const PhotoContainer container : {PhotoContainer::Jpeg, PhotoContainer::Png, PhotoContainer::Gif,
                                           PhotoContainer::WebP, PhotoContainer::Bmp, PhotoContainer::BigTiff}) {
        const auto facts = pelorin::readPictureHeaderFacts(container, bytes);
        const auto again = pelorin::readPictureHeaderFacts(container, bytes);
        if (!facts || !again || facts->size != again->size || facts->imageCount != again->imageCount
            || facts->colorModel != again->colorModel || facts->depth != again->depth || facts->hasAlpha != again->hasAlpha)
            std::abort();
        if (facts->size.isValid() && (facts->size.width() <= 0 || facts->size.height() <= 0))
            std::abort();
        if (facts->imageCount < 0 || (facts->layoutKnown() && (facts->depth < 1 || facts->depth > 64)))
            std::abort();
    }
    return 0;
}

// The container readers of our own (JFIF, PNG chunks, GIF blocks, ICC descriptions, the JPEG
// segment filter) take files from anywhere: any bytes must give an answer, never a crash.
#include "photo/ContainerProperties.h"
#include "photo/JpegSegments.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    pelorin::readJfifGroup(bytes);
    pelorin::readPngGroup(bytes);
    pelorin::readGifGroup(bytes);
    pelorin::gifXmpPacket(bytes);
    pelorin::iccProfileDescription(bytes);
    const QByteArray filtered = pelorin::dropMetadataSegments(bytes);
    // Filtering only ever removes whole segments.
    if (filtered.size() > bytes.size())
        std::abort();
    return 0;
}

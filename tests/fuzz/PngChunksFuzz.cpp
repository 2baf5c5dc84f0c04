// The PNG chunk filter walks untrusted chunk lengths: any input must give an answer quickly, an
// output must itself walk cleanly to IEND, and keeping every chunk must give the input back up
// to its IEND.
#include "photo/PngChunks.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto kept = pelorin::dropPngChunks(bytes, [](const pelorin::PngChunkName&) { return false; });
    if (kept && (!bytes.startsWith(*kept) || kept->size() < 20))
        std::abort();
    const auto text = pelorin::dropPngChunks(bytes, [](const pelorin::PngChunkName& c) {
        if (c.keyword.size() > 79 || (!c.isText() && !c.keyword.isEmpty()))
            std::abort();
        return c.isText() || c.type == "tIME";
    });
    if (text.has_value() != kept.has_value())
        std::abort();
    if (text) {
        if (text->size() > kept->size())
            std::abort();
        const auto again = pelorin::dropPngChunks(*text, [](const pelorin::PngChunkName& c) { return c.isText(); });
        if (!again || *again != *text)
            std::abort();
    }
    return 0;
}

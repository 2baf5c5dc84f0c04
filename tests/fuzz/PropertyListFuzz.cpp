// Property lists arrive as template files from anywhere; reading one must never crash, and
// whatever reads must write back and read again to the same value.
#include "model/PropertyList.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto read = pelorin::readPropertyList(bytes);
    if (!read.value)
        return 0;
    const auto xml = pelorin::writePropertyListXml(*read.value);
    if (xml.xml) {
        const auto again = pelorin::readPropertyList(*xml.xml);
        if (!again.value)
            std::abort();
    }
    return 0;
}

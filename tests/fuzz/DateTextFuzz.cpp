// Date texts come from photos and from what users type: any text must parse or be refused,
// and a parsed date must render back to the same text.
#include "model/DateText.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data),
                                           static_cast<qsizetype>(size));
    using namespace pelorin;
    if (const auto clock = parseDateText(text, DateTextForm::Exif)) {
        if (renderDateText(*clock, DateTextForm::Exif) != text.trimmed())
            std::abort();
    }
    if (const auto clock = parseDateText(text, DateTextForm::Dash)) {
        if (renderDateText(*clock, DateTextForm::Dash) != text.trimmed())
            std::abort();
    }
    GetChangeDateforExifDate(text, static_cast<double>(size) * 86400.0 - 1e6);
    return 0;
}

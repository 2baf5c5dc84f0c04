// Movie file names come from any camera, phone or user: any name must give a date or nothing,
// and every date given must be a real calendar date and time in the Exif form.
#include "model/DateText.h"
#include "video/MovieNameDates.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

void checkDate(const std::optional<QString>& text)
{
    if (!text)
        return;
    const auto clock = pelorin::parseDateText(*text, pelorin::DateTextForm::Exif);
    if (!clock || pelorin::renderDateText(*clock, pelorin::DateTextForm::Exif) != *text) {
        std::fprintf(stderr, "not a date: \"%s\"\n", qPrintable(*text));
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString name = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const std::optional<QString> detected = pelorin::detectDateText(name);
    checkDate(detected);
    checkDate(pelorin::dateTextFromFileName(name));
    // The manual parse only reassembles digits; the detector checks what it gives.
    if (const auto manual = pelorin::manualDateTextFromName(name))
        pelorin::detectDateText(*manual);
    return 0;
}

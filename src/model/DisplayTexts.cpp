#include "model/DisplayTexts.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <cstdio>

namespace pelorin {

char* size_to_unit(std::uint64_t size, char* out, std::size_t capacity)
{
    if (!out || capacity == 0)
        return out;
    // Each step is a single-precision division; the value is widened only for printing.
    const float kilo = 1000.0f;
    if (size < 1000) {
        std::snprintf(out, capacity, "%d bytes", static_cast<int>(size));
    } else if (size < 1000000) {
        const float v = static_cast<float>(size) / kilo;
        std::snprintf(out, capacity, "%.2f KB", static_cast<double>(v));
    } else if (size < 1000000000) {
        const float v = static_cast<float>(size) / kilo / kilo;
        std::snprintf(out, capacity, "%.2f MB", static_cast<double>(v));
    } else {
        const float v = static_cast<float>(size) / kilo / kilo / kilo;
        if ((size >> 12) > 244140624)
            std::snprintf(out, capacity, "%.2f TB", static_cast<double>(v / kilo));
        else
            std::snprintf(out, capacity, "%.2f GB", static_cast<double>(v));
    }
    return out;
}

QString sizeText(std::uint64_t size)
{
    char buffer[kSizeTextBufferSize];
    return QString::fromLatin1(size_to_unit(size, buffer, sizeof buffer));
}

QString getMediaDuration(std::int32_t n)
{
    if (n < 60)
        return QString::asprintf("%ds", n);
    if (n < 3600)
        return QString::asprintf("%dm:%ds", n / 60, n % 60);
    return QString::asprintf("%dh:%dm:%ds", n / 3600, (n % 3600) / 60, n % 60);
}

QString mediaDurationText(double seconds)
{
    constexpr double longest = std::numeric_limits<std::int32_t>::max();
    if (!(seconds > 0))
        return getMediaDuration(0);
    return getMediaDuration(std::int32_t(std::min(seconds, longest)));
}

QString decimalText(double value, int decimals)
{
    if (!std::isfinite(value))
        return QString::number(value);
    QString text = QString::number(value, 'f', decimals);
    if (text.contains(QLatin1Char('.'))) {
        while (text.endsWith(QLatin1Char('0')))
            text.chop(1);
        if (text.endsWith(QLatin1Char('.')))
            text.chop(1);
    }
    if (text == QLatin1String("-0"))
        text = QStringLiteral("0");
    return text;
}

}  // namespace pelorin

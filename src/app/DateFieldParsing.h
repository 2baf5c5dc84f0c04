#pragma once

#include <QFontMetrics>
#include <QString>
#include <QStringView>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace pelorin {

// A span field's count: its leading digits, after blanks and an optional "-". Whatever follows
// the digits is ignored, and a field without leading digits counts as 0, so a stray letter never
// blocks a save. Too many digits saturate; the engine cuts over-long spans itself.
inline std::int64_t leadingCount(QStringView text)
{
    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    qsizetype i = 0;
    while (i < text.size() && text[i].isSpace())
        ++i;
    const bool negative = i < text.size() && text[i] == u'-';
    if (negative)
        ++i;
    std::int64_t count = 0;
    for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i) {
        const int digit = text[i].unicode() - u'0';
        if (count > (kMax - digit) / 10) {
            count = kMax;
            break;
        }
        count = count * 10 + digit;
    }
    return negative ? -count : count;
}

// Wide enough for a date such as "2019:05:06 07:08:09" or the "YYYY:MM:DD HH:MM:SS" hint, plus
// the field's frame, padding and some air.
inline int dateFieldMinimumWidth(const QFontMetrics& metrics)
{
    return std::max(metrics.horizontalAdvance(QStringLiteral("8888:88:88 88:88:88")),
                    metrics.horizontalAdvance(QStringLiteral("YYYY:MM:DD HH:MM:SS"))) +
           36;
}

}  // namespace pelorin

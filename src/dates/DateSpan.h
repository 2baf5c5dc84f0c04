#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace pelorin {

// A span typed as six counts. The units are calendar-free on purpose, so a span moves every
// photo by the same number of seconds: a year is 365 days, a month 30 days.
struct DateSpan {
    std::int64_t years = 0;
    std::int64_t months = 0;
    std::int64_t days = 0;
    std::int64_t hours = 0;
    std::int64_t minutes = 0;
    std::int64_t seconds = 0;
};

inline constexpr std::int64_t kSecondsPerYear = 31536000;
inline constexpr std::int64_t kSecondsPerMonth = 2592000;

// Beyond this no date can move and stay within the years 1 to 9999.
inline constexpr std::int64_t kLongestDateSpan = std::int64_t(10000) * 366 * 86400;

// The span in seconds; fields below zero count as nothing. A span longer than any date can
// move is cut to kLongestDateSpan, which every date then refuses.
std::int64_t spanSeconds(const DateSpan& span);

// Reads a span such as "1y 2mo 3d 4h 5m 6s": any subset of the units y, mo, d, h, m, s, each a
// whole count; blanks between parts are optional. Nothing for an unknown unit or a bad count.
std::optional<DateSpan> parseDateSpan(const QString& text, QString* error = nullptr);

}  // namespace pelorin

#pragma once

#include <QDate>
#include <QTime>

#include <compare>
#include <cstdint>
#include <optional>

namespace pelorin {

// A reading of a clock with no time zone attached, such as a camera writes into EXIF. Arithmetic
// happens on the clock face: adding 86400 seconds gives the same time of day on the next day,
// whatever daylight-saving change lies between. Years 1 to 9999, whole seconds.
class WallClock {
public:
    static std::optional<WallClock> fromParts(int year, int month, int day, int hour, int minute,
                                              int second);
    static std::optional<WallClock> fromDateTime(QDate date, QTime time);
    // Seconds since 1970-01-01 00:00:00 on the clock face.
    static std::optional<WallClock> fromClockSeconds(std::int64_t seconds);

    QDate date() const;
    QTime time() const;
    std::int64_t clockSeconds() const { return seconds_; }

    // Moves the clock by the given seconds; nothing when the result leaves years 1 to 9999.
    std::optional<WallClock> addSeconds(std::int64_t seconds) const;
    std::int64_t secondsTo(const WallClock& later) const { return later.seconds_ - seconds_; }

    friend auto operator<=>(const WallClock&, const WallClock&) = default;

private:
    explicit WallClock(std::int64_t seconds) : seconds_(seconds) {}
    std::int64_t seconds_ = 0;
};

}  // namespace pelorin

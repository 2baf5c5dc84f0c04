#include "model/WallClock.h"

namespace pelorin {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr qint64 kUnixEpochJulianDay = 2440588;  // 1970-01-01

bool inRange(const QDate& d) { return d.isValid() && d.year() >= 1 && d.year() <= 9999; }

std::int64_t floorDiv(std::int64_t a, std::int64_t b)
{
    std::int64_t q = a / b;
    if ((a % b != 0) && ((a < 0) != (b < 0)))
        --q;
    return q;
}

}  // namespace

std::optional<WallClock> WallClock::fromParts(int year, int month, int day, int hour, int minute,
                                              int second)
{
    if (!QDate::isValid(year, month, day) || !QTime::isValid(hour, minute, second))
        return std::nullopt;
    return fromDateTime(QDate(year, month, day), QTime(hour, minute, second));
}

std::optional<WallClock> WallClock::fromDateTime(QDate date, QTime time)
{
    if (!inRange(date) || !time.isValid())
        return std::nullopt;
    const std::int64_t days = date.toJulianDay() - kUnixEpochJulianDay;
    return WallClock(days * kSecondsPerDay + time.msecsSinceStartOfDay() / 1000);
}

std::optional<WallClock> WallClock::fromClockSeconds(std::int64_t seconds)
{
    // Bound first so the day count cannot overflow the Julian day arithmetic.
    constexpr std::int64_t kLimit = std::int64_t(4000000) * kSecondsPerDay;
    if (seconds < -kLimit || seconds > kLimit)
        return std::nullopt;
    const QDate d = QDate::fromJulianDay(floorDiv(seconds, kSecondsPerDay) + kUnixEpochJulianDay);
    if (!inRange(d))
        return std::nullopt;
    return WallClock(seconds);
}

QDate WallClock::date() const
{
    return QDate::fromJulianDay(floorDiv(seconds_, kSecondsPerDay) + kUnixEpochJulianDay);
}

QTime WallClock::time() const
{
    const std::int64_t inDay = seconds_ - floorDiv(seconds_, kSecondsPerDay) * kSecondsPerDay;
    return QTime::fromMSecsSinceStartOfDay(static_cast<int>(inDay * 1000));
}

std::optional<WallClock> WallClock::addSeconds(std::int64_t seconds) const
{
    std::int64_t sum = 0;
    if (__builtin_add_overflow(seconds_, seconds, &sum))
        return std::nullopt;
    return fromClockSeconds(sum);
}

}  // namespace pelorin

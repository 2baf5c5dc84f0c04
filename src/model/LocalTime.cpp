#include "model/LocalTime.h"

#include <ctime>

namespace pelorin {
namespace {

// Offset of local time from UTC at an instant, in seconds.
long localOffsetAt(std::int64_t instant)
{
    const std::time_t t = static_cast<std::time_t>(instant);
    std::tm parts {};
    if (!localtime_r(&t, &parts))
        return 0;
    return parts.tm_gmtoff;
}

}  // namespace

QDateTime instantFromWallClock(const WallClock& clock)
{
    tzset();  // pick up a TZ that changed while the process runs
    const std::int64_t face = clock.clockSeconds();
    // Real offsets lie within a day of each other; the offsets a day before and after bracket
    // any single transition near this reading.
    const long before = localOffsetAt(face - 86400);
    const long after = localOffsetAt(face + 86400);
    const std::int64_t viaBefore = face - before;
    const std::int64_t viaAfter = face - after;
    const bool beforeFits = localOffsetAt(viaBefore) == before;
    const bool afterFits = localOffsetAt(viaAfter) == after;

    std::int64_t instant;
    if (beforeFits && afterFits)
        instant = std::min(viaBefore, viaAfter);
    else if (beforeFits)
        instant = viaBefore;
    else if (afterFits)
        instant = viaAfter;
    else {
        // The reading lies in a gap: the first valid instant is the transition itself, found by
        // bisection between the two candidate instants.
        std::int64_t lo = std::min(viaBefore, viaAfter);
        std::int64_t hi = std::max(viaBefore, viaAfter);
        const long loOffset = localOffsetAt(lo);
        while (hi - lo > 1) {
            const std::int64_t mid = lo + (hi - lo) / 2;
            if (localOffsetAt(mid) == loOffset)
                lo = mid;
            else
                hi = mid;
        }
        instant = hi;
    }
    return QDateTime::fromSecsSinceEpoch(instant, Qt::UTC);
}

std::optional<WallClock> wallClockFromInstant(const QDateTime& instant)
{
    if (!instant.isValid())
        return std::nullopt;
    tzset();
    const std::int64_t secs = instant.toSecsSinceEpoch();
    return WallClock::fromClockSeconds(secs + localOffsetAt(secs));
}

}  // namespace pelorin

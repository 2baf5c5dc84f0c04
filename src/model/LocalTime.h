#pragma once

#include "model/WallClock.h"

#include <QDateTime>

#include <optional>

namespace pelorin {

// The bridge between metadata dates (wall-clock readings) and file dates (instants), through the
// local time zone of the process (TZ). A reading that occurs twice (the hour repeated when clocks
// go back) is the first of the two instants; a reading that never occurs (skipped when clocks go
// forward) becomes the first instant after the gap.
QDateTime instantFromWallClock(const WallClock& clock);  // a UTC QDateTime

// The local clock reading of an instant; nothing for an invalid or out-of-range instant.
std::optional<WallClock> wallClockFromInstant(const QDateTime& instant);

}  // namespace pelorin

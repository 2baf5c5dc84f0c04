#pragma once
#include <QString>

namespace pelorin::cli {

// What an option's value must be. Every command checks its values before it touches a file, so
// a mistyped value is a usage error instead of a silently ignored or half-applied change.
enum class ValueKind {
    DateTime,     // YYYY:MM:DD HH:MM:SS or YYYY-MM-DD HH:MM:SS, a real calendar date and time
    Date,         // YYYY:MM:DD or YYYY-MM-DD
    Time,         // HH:MM:SS
    Latitude,     // degrees, -90 to 90
    Longitude,    // degrees, -180 to 180
    Altitude,     // metres, -12000 to 100000
    TrackNumber,  // N or N/TOTAL, 1 to 65535
    Year,         // YYYY, or a date YYYY-MM-DD
};

// Empty when text is a valid value of that kind (an empty text passes: what it means is the
// command's choice); otherwise a usage message naming the option, the value and what is allowed.
QString checkOptionValue(ValueKind kind, const QString& option, const QString& text);

}  // namespace pelorin::cli

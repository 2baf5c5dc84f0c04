#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>

namespace pelorin {

// Longest size text: an eight-digit terabyte figure, two decimals, the unit and the terminator.
constexpr std::size_t kSizeTextBufferSize = 32;

// Byte count as display text in decimal units ("999 bytes", "1.54 KB", "1000.00 MB"), computed in
// single precision so that the texts match the ones users already know. Writes into out (at
// most capacity bytes, always terminated) and returns out.
char* size_to_unit(std::uint64_t size, char* out, std::size_t capacity);
QString sizeText(std::uint64_t size);

// Whole seconds as display text: "59s", "1m:0s", "1h:1m:1s".
QString getMediaDuration(std::int32_t seconds);
// The same from a duration in seconds as a container states it: the fraction is dropped, and
// a duration no clock shows (negative, not a number, or beyond the range, as a damaged header
// gives) is shown as none or as the longest.
QString mediaDurationText(double seconds);

// A number rounded to at most `decimals` places, without trailing zeros: a degree value computed
// from rationals reads 2.2945, not 2.2944999999999998. Coordinates use 6 places (about 10 cm).
QString decimalText(double value, int decimals);
inline QString coordinateText(double degrees) { return decimalText(degrees, 6); }

}  // namespace pelorin

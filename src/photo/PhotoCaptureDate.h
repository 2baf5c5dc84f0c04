#pragma once

#include "model/WallClock.h"

#include <QVariantMap>

#include <optional>

namespace pelorin {

// When the photo was taken, as its metadata states it: EXIF DateTimeOriginal, else
// DateTimeDigitized, else the XMP properties that mirror them (converters such as ImageMagick
// keep a photo's XMP but drop its EXIF block when writing TIFF), else a PNG's "Creation Time".
// Dates without a time of day do not count. Empty when the metadata states no such date.
std::optional<WallClock> photoCaptureDate(const QVariantMap& properties);

}  // namespace pelorin

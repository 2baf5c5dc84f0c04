#pragma once

#include "model/CommandResult.h"

#include <QString>
#include <QVariantMap>

#include <optional>

namespace pelorin {

// The GPS values a user types (dialog, editor, template, command line), as texts.
struct GpsInput {
    QString latitude;   // signed degrees, south negative
    QString longitude;  // signed degrees, west negative
    QString altitude;   // signed metres, below sea level negative; may be empty
    QString dateStamp;  // "YYYY:MM:DD", may be empty
    QString timeStamp;  // "HH:MM:SS", may be empty
};

struct GpsGroupResult {
    QVariantMap group;           // the complete new "{GPS}" group when the input is valid
    std::optional<Alert> alert;  // "Vaule Error" when it is not
};

// Checks the input (latitude and longitude present and numeric, latitude within -90..90,
// longitude within -180..180, altitude numeric when given) and builds the GPS group as EXIF
// stores it: magnitudes with "N"/"S", "E"/"W", version 2.2.0.0, and the altitude with
// AltitudeRef 0/1 and the date and time stamps only when given.
GpsGroupResult buildGpsGroup(const GpsInput& input);

}  // namespace pelorin

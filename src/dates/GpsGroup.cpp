#include "dates/GpsGroup.h"

#include <cmath>

namespace pelorin {
namespace {

std::optional<double> number(const QString& text)
{
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

}  // namespace

GpsGroupResult buildGpsGroup(const GpsInput& input)
{
    GpsGroupResult result;
    const auto latitude = number(input.latitude);
    const auto longitude = number(input.longitude);
    const bool hasAltitude = !input.altitude.trimmed().isEmpty();
    const auto altitude = hasAltitude ? number(input.altitude) : std::optional<double>(0.0);
    if (!latitude || !longitude || !altitude || std::fabs(*latitude) > 90.0 || std::fabs(*longitude) > 180.0) {
        result.alert = Alerts::valueError();
        return result;
    }
    QVariantMap& g = result.group;
    g.insert(QStringLiteral("Latitude"), std::fabs(*latitude));
    g.insert(QStringLiteral("LatitudeRef"), *latitude < 0 ? QStringLiteral("S") : QStringLiteral("N"));
    g.insert(QStringLiteral("Longitude"), std::fabs(*longitude));
    g.insert(QStringLiteral("LongitudeRef"), *longitude < 0 ? QStringLiteral("W") : QStringLiteral("E"));
    // No altitude, speed or track is made up: a 0 would claim sea level or standing still.
    if (hasAltitude) {
        g.insert(QStringLiteral("Altitude"), std::fabs(*altitude));
        g.insert(QStringLiteral("AltitudeRef"), qlonglong(*altitude < 0 ? 1 : 0));
    }
    g.insert(QStringLiteral("GPSVersion"), QVariantList{2, 2, 0, 0});
    if (!input.dateStamp.trimmed().isEmpty())
        g.insert(QStringLiteral("DateStamp"), input.dateStamp.trimmed());
    if (!input.timeStamp.trimmed().isEmpty())
        g.insert(QStringLiteral("TimeStamp"), input.timeStamp.trimmed());
    return result;
}

}  // namespace pelorin

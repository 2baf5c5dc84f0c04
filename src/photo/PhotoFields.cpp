#include "photo/PhotoFields.h"

#include "model/DisplayTexts.h"
#include "photo/PropertyTree.h"

#include <algorithm>

namespace pelorin {
namespace {

using T = PhotoEditorTexts;
using S = PhotoSection;
using V = PhotoValue;

// In the editor's order: the panel shows the fields from top to bottom as listed here.
const PhotoFieldRow kRows[] = {
    {PhotoField::Title, "title", "title (IPTC object name)", "Title:", "titleField", S::Description, &T::title,
     V::Text, "{IPTC}", "ObjectName", nullptr, nullptr, nullptr},
    {PhotoField::Artist, "artist", "artist", "Artist:", "artistField", S::Description, &T::artist,
     V::Text, "{TIFF}", "Artist", nullptr, nullptr, nullptr},
    {PhotoField::Description, "description", "image description", "Description:", "imageDescField", S::Description,
     &T::imageDescription, V::Text, "{TIFF}", "ImageDescription", nullptr, nullptr, nullptr},
    {PhotoField::Copyright, "copyright", "copyright", "Copyright:", "copyrightField", S::Description, &T::copyright,
     V::Text, "{TIFF}", "Copyright", nullptr, nullptr, nullptr},
    {PhotoField::Comments, "comment", "EXIF user comment", "Comments:", "commentField", S::Description, &T::comments,
     V::Text, "{Exif}", "UserComment", nullptr, nullptr, nullptr},
    {PhotoField::Keywords, "keywords", "IPTC keywords, separated by commas", "Keywords:", "keywordField",
     S::Description, &T::keywords, V::Keywords, "{IPTC}", "Keywords", nullptr, nullptr, nullptr},
    {PhotoField::CameraMake, "make", "camera make", "Make:", "cameraMakeField", S::Camera, &T::cameraMake,
     V::Text, "{TIFF}", "Make", nullptr, "{Exif}", "LensMake"},
    {PhotoField::CameraModel, "model", "camera model", "Model:", "cameraModelField", S::Camera, &T::cameraModel,
     V::Text, "{TIFF}", "Model", nullptr, "{Exif}", "LensModel"},
    {PhotoField::CameraDate, "camera-date", "date digitized, YYYY:MM:DD HH:MM:SS or YYYY-MM-DD HH:MM:SS",
     "Date taken:", "cameraDateField", S::Camera, &T::cameraDate, V::DateTime, "{Exif}", "DateTimeDigitized",
     nullptr, nullptr, nullptr},
    {PhotoField::GpsLatitude, "lat", "latitude in degrees, negative south", "Latitude:", "gpsLatitudeField",
     S::Location, &T::gpsLatitude, V::Latitude, "{GPS}", "Latitude", "LatitudeRef", nullptr, nullptr},
    {PhotoField::GpsLongitude, "lon", "longitude in degrees, negative west", "Longitude:", "gpsLongitudeField",
     S::Location, &T::gpsLongitude, V::Longitude, "{GPS}", "Longitude", "LongitudeRef", nullptr, nullptr},
    {PhotoField::GpsAltitude, "altitude", "altitude in metres, negative below sea level", "Altitude:",
     "gpsAltitudeField", S::Location, &T::gpsAltitude, V::Altitude, "{GPS}", "Altitude", "AltitudeRef", nullptr,
     nullptr},
    {PhotoField::GpsDate, "gps-date", "GPS date stamp, YYYY:MM:DD", "GPS date:", "gpsDateField", S::Location,
     &T::gpsDate, V::Date, "{GPS}", "DateStamp", nullptr, nullptr, nullptr},
    {PhotoField::GpsTime, "gps-time", "GPS time stamp, HH:MM:SS (UTC)", "GPS time:", "gpsTimeField", S::Location,
     &T::gpsTime, V::Time, "{GPS}", "TimeStamp", nullptr, nullptr, nullptr},
};

QVariant propertyValue(const QVariantMap& properties, const char* group, const char* key)
{
    return properties.value(QLatin1String(group)).toMap().value(QLatin1String(key));
}

QString propertyText(const QVariantMap& properties, const char* group, const char* key)
{
    const QVariant value = propertyValue(properties, group, key);
    return value.isValid() ? propertyValueText(value) : QString();
}

// The reference that keeps a magnitude positive: north, east, above sea level.
bool positiveReference(PhotoValue value, const QVariant& reference)
{
    switch (value) {
    case PhotoValue::Latitude: return reference.toString() == QLatin1String("N");
    case PhotoValue::Longitude: return reference.toString() == QLatin1String("E");
    default: return reference.toInt() != 1;
    }
}

}  // namespace

std::span<const PhotoFieldRow> photoFieldRows()
{
    return kRows;
}

const PhotoFieldRow& photoFieldRow(PhotoField field)
{
    return *std::find_if(std::begin(kRows), std::end(kRows), [field](const PhotoFieldRow& s) { return s.field == field; });
}

std::optional<PhotoField> photoFieldOfOption(const QString& option)
{
    for (const PhotoFieldRow& row : kRows)
        if (option == QLatin1String(row.option))
            return row.field;
    return std::nullopt;
}

bool isLocationField(PhotoField field)
{
    return photoFieldRow(field).section == PhotoSection::Location;
}

QString locationGroup()
{
    return QLatin1String(photoFieldRow(PhotoField::GpsLatitude).group);
}

std::optional<double> photoFieldNumber(const QVariantMap& properties, PhotoField field)
{
    const PhotoFieldRow& row = photoFieldRow(field);
    if (!row.refKey)
        return std::nullopt;
    const QVariant magnitude = propertyValue(properties, row.group, row.key);
    if (!magnitude.isValid())
        return std::nullopt;
    const bool positive = positiveReference(row.value, propertyValue(properties, row.group, row.refKey));
    return positive ? magnitude.toDouble() : -magnitude.toDouble();
}

QString photoFieldText(const QVariantMap& properties, PhotoField field)
{
    const PhotoFieldRow& row = photoFieldRow(field);
    if (row.refKey) {
        const std::optional<double> number = photoFieldNumber(properties, field);
        if (!number)
            return {};
        return row.value == PhotoValue::Altitude ? decimalText(*number, 3) : coordinateText(*number);
    }
    if (row.fallbackKey) {
        const PhotoFieldRow& make = photoFieldRow(PhotoField::CameraMake);
        const bool lensOnly = propertyText(properties, make.group, make.key).isEmpty()
                              && !properties.value(QLatin1String(row.fallbackGroup)).toMap().isEmpty();
        if (lensOnly)
            return propertyText(properties, row.fallbackGroup, row.fallbackKey);
    }
    return propertyText(properties, row.group, row.key);
}

bool PhotoFieldChanges::namesLocation() const
{
    return std::any_of(fields.keyBegin(), fields.keyEnd(), isLocationField);
}

}  // namespace pelorin

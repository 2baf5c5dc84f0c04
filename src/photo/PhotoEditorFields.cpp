#include "photo/PhotoEditorFields.h"

#include "model/DateText.h"
#include "model/DisplayTexts.h"
#include "model/LocalTime.h"
#include "photo/PropertyTree.h"

namespace pelorin {
namespace {

QString text(const QVariantMap& group, const char* key)
{
    const QVariant value = group.value(QString::fromLatin1(key));
    return value.isValid() ? propertyValueText(value) : QString();
}


QString dateText(const QDateTime& instant)
{
    const auto clock = wallClockFromInstant(instant);
    return clock ? renderDateText(*clock, DateTextForm::Dash) : QString();
}

// A coordinate with its sign taken from the reference letter: negative unless it is positive.
bool signedCoordinate(const QVariantMap& gps, const char* key, const char* refKey, const char* positive,
                      double* out)
{
    const QVariant value = gps.value(QString::fromLatin1(key));
    if (!value.isValid())
        return false;
    const double magnitude = value.toDouble();
    *out = gps.value(QString::fromLatin1(refKey)).toString() == QLatin1String(positive) ? magnitude : -magnitude;
    return true;
}

}  // namespace

PhotoEditorFill fillPhotoEditorFields(const QVariantMap& properties, const PhotoFileFacts& facts)
{
    PhotoEditorFill fill;
    PhotoEditorTexts& f = fill.fields;
    const QVariantMap tiff = properties.value(QStringLiteral("{TIFF}")).toMap();
    const QVariantMap exif = properties.value(QStringLiteral("{Exif}")).toMap();
    const QVariantMap iptc = properties.value(QStringLiteral("{IPTC}")).toMap();
    const QVariantMap gps = properties.value(QStringLiteral("{GPS}")).toMap();

    f.fileName = facts.fileName;
    f.creationDate = facts.created.isValid() ? dateText(facts.created) : QString();
    if (facts.size > 0)
        f.fileSize = QStringLiteral("%1 (%2 bytes)").arg(sizeText(quint64(facts.size))).arg(facts.size);
    if (properties.contains(QStringLiteral("PixelWidth")) && properties.contains(QStringLiteral("PixelHeight")))
        f.imageSize = QStringLiteral("%1 x %2").arg(propertyValueText(properties.value(QStringLiteral("PixelWidth"))),
                                                   propertyValueText(properties.value(QStringLiteral("PixelHeight"))));
    if (properties.contains(QStringLiteral("DPIWidth")) && properties.contains(QStringLiteral("DPIHeight")))
        f.dpi = QStringLiteral("%1 x %2").arg(propertyValueText(properties.value(QStringLiteral("DPIWidth"))),
                                             propertyValueText(properties.value(QStringLiteral("DPIHeight"))));

    f.artist = text(tiff, "Artist");
    f.imageDescription = text(tiff, "ImageDescription");
    f.copyright = text(tiff, "Copyright");
    f.cameraMake = text(tiff, "Make");
    f.cameraModel = text(tiff, "Model");
    if (f.cameraMake.isEmpty() && !exif.isEmpty()) {
        f.cameraMake = text(exif, "LensMake");
        f.cameraModel = text(exif, "LensModel");
    }
    f.cameraDate = text(exif, "DateTimeDigitized");
    f.modificationDate = f.cameraDate;
    f.comments = text(exif, "UserComment");

    f.gpsDate = text(gps, "DateStamp");
    f.gpsTime = text(gps, "TimeStamp");
    if (gps.contains(QStringLiteral("Altitude"))) {
        const double altitude = gps.value(QStringLiteral("Altitude")).toDouble();
        f.gpsAltitude = decimalText(gps.value(QStringLiteral("AltitudeRef")).toInt() == 1 ? -altitude : altitude, 3);
    }
    double latitude = 0, longitude = 0;
    if (signedCoordinate(gps, "Latitude", "LatitudeRef", "N", &latitude))
        f.gpsLatitude = coordinateText(latitude);
    if (signedCoordinate(gps, "Longitude", "LongitudeRef", "E", &longitude))
        f.gpsLongitude = coordinateText(longitude);

    f.keywords = text(iptc, "Keywords");
    f.title = text(iptc, "ObjectName");

    fill.old = f;
    fill.hasGps = properties.contains(QStringLiteral("{GPS}"));
    fill.latitude = latitude;
    fill.longitude = longitude;
    return fill;
}

}  // namespace pelorin

#include "photo/PropertyTree.h"

#include "model/DisplayTexts.h"

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QStringList>

namespace pelorin {
namespace {

const QHash<QString, QString>& groupNames()
{
    static const QHash<QString, QString> names{
        {QStringLiteral("{Exif}"), QStringLiteral("Exif")},
        {QStringLiteral("{ExifAux}"), QStringLiteral("Exif Aux")},
        {QStringLiteral("{TIFF}"), QStringLiteral("TIFF")},
        {QStringLiteral("{GPS}"), QStringLiteral("GPS")},
        {QStringLiteral("{IPTC}"), QStringLiteral("IPTC")},
        {QStringLiteral("{XMP}"), QStringLiteral("XMP")},
        {QStringLiteral("{JFIF}"), QStringLiteral("JFIF")},
        {QStringLiteral("{PNG}"), QStringLiteral("PNG")},
        {QStringLiteral("{GIF}"), QStringLiteral("GIF")},
        {QStringLiteral("{8BIM}"), QStringLiteral("Photoshop")},
        {QStringLiteral("{Raw}"), QStringLiteral("Raw")},
        {QStringLiteral("{DNG}"), QStringLiteral("DNG")},
        {QStringLiteral("{CIFF}"), QStringLiteral("CIFF")},
    };
    return names;
}

// The keys of the image-property model; their display names are their words spelled apart.
const QSet<QString>& modelKeys()
{
    static const QSet<QString> keys = [] {
        QSet<QString> s;
        for (const char* k :
             {"PixelWidth", "PixelHeight", "Orientation", "DPIWidth", "DPIHeight", "Depth", "ColorModel",
              "ProfileName", "HasAlpha", "ExposureTime", "FNumber", "ExposureProgram", "SpectralSensitivity",
              "ISOSpeedRatings", "OECF", "ExifVersion", "DateTimeOriginal", "DateTimeDigitized", "OffsetTime",
              "OffsetTimeOriginal", "OffsetTimeDigitized", "ComponentsConfiguration", "CompressedBitsPerPixel",
              "ShutterSpeedValue", "ApertureValue", "BrightnessValue", "ExposureBiasValue", "MaxApertureValue",
              "SubjectDistance", "MeteringMode", "LightSource", "Flash", "FocalLength", "SubjectArea",
              "MakerNote", "UserComment", "SubsecTime", "SubsecTimeOriginal", "SubsecTimeDigitized",
              "FlashPixVersion", "ColorSpace", "PixelXDimension", "PixelYDimension", "RelatedSoundFile",
              "FlashEnergy", "SpatialFrequencyResponse", "FocalPlaneXResolution", "FocalPlaneYResolution",
              "FocalPlaneResolutionUnit", "SubjectLocation", "ExposureIndex", "SensingMethod", "FileSource",
              "SceneType", "CFAPattern", "CustomRendered", "ExposureMode", "WhiteBalance", "DigitalZoomRatio",
              "FocalLenIn35mmFilm", "SceneCaptureType", "GainControl", "Contrast", "Saturation", "Sharpness",
              "DeviceSettingDescription", "SubjectDistRange", "ImageUniqueID", "Gamma", "CameraOwnerName",
              "BodySerialNumber", "LensSpecification", "LensMake", "LensModel", "LensSerialNumber",
              "SensitivityType", "StandardOutputSensitivity", "RecommendedExposureIndex", "ISOSpeed",
              "LensInfo", "SerialNumber", "LensID", "ImageNumber", "FlashCompensation", "OwnerName",
              "Firmware", "Compression", "PhotometricInterpretation", "DocumentName", "ImageDescription",
              "Make", "Model", "XResolution", "YResolution", "ResolutionUnit", "Software", "TransferFunction",
              "DateTime", "Artist", "HostComputer", "Copyright", "WhitePoint", "PrimaryChromaticities",
              "TileWidth", "TileLength", "GPSVersion", "LatitudeRef", "Latitude", "LongitudeRef", "Longitude",
              "AltitudeRef", "Altitude", "TimeStamp", "Satellites", "Status", "MeasureMode", "DOP", "SpeedRef",
              "Speed", "TrackRef", "Track", "ImgDirectionRef", "ImgDirection", "MapDatum", "DestLatitudeRef",
              "DestLatitude", "DestLongitudeRef", "DestLongitude", "DestBearingRef", "DestBearing",
              "DestDistanceRef", "DestDistance", "ProcessingMethod", "AreaInformation", "DateStamp",
              "Differential", "HPositioningError", "ObjectName", "Urgency", "Category", "SupplementalCategory",
              "Keywords", "ContentLocationCode", "ContentLocationName", "ReleaseDate", "ReleaseTime",
              "ExpirationDate", "ExpirationTime", "SpecialInstructions", "ActionAdvised", "DateCreated",
              "TimeCreated", "DigitalCreationDate", "DigitalCreationTime", "OriginatingProgram",
              "ProgramVersion", "ObjectCycle", "Byline", "BylineTitle", "City", "SubLocation", "Headline",
              "Credit", "Source", "CopyrightNotice", "Contact", "ImageType", "ImageOrientation",
              "LanguageIdentifier", "StarRating", "EditStatus", "JFIFVersion", "XDensity", "YDensity",
              "DensityUnit", "IsProgressive", "InterlaceType", "XPixelsPerMeter", "YPixelsPerMeter",
              "sRGBIntent", "Chromaticities", "Author", "Description", "Title", "Comment", "LoopCount",
              "DelayTime", "HasGlobalColorMap", "CanvasPixelWidth", "CanvasPixelHeight"})
            s.insert(QString::fromLatin1(k));
        return s;
    }();
    return keys;
}

// Words of a CamelCase key: a capital after a small letter or digit starts a word, and so does
// the last capital of a run followed by a small letter ("ISOSpeed" -> "ISO Speed").
QString spelledApart(const QString& key)
{
    QString out;
    for (qsizetype i = 0; i < key.size(); ++i) {
        const QChar c = key[i];
        if (i > 0 && c.isUpper()) {
            const QChar prev = key[i - 1];
            const bool nextLower = i + 1 < key.size() && key[i + 1].isLower();
            if (prev.isLower() || prev.isDigit() || (prev.isUpper() && nextLower))
                out += QLatin1Char(' ');
        }
        out += c;
    }
    return out;
}

PropertyTreeNode nodeFor(const QString& key, const QVariant& value)
{
    PropertyTreeNode node;
    node.key = propertyDisplayName(key);
    if (value.typeId() == QMetaType::QVariantMap) {
        node.isGroup = true;
        node.val = QString();
        node.children = propTree(value.toMap());
    } else {
        node.val = value;
        node.text = propertyDisplayText(key, value);
    }
    return node;
}

}  // namespace

QString propertyDisplayName(const QString& key)
{
    const auto group = groupNames().constFind(key);
    if (group != groupNames().cend())
        return group.value();
    if (key.startsWith(QLatin1String("{Maker")) && key.endsWith(QLatin1Char('}')))
        return key.mid(6, key.size() - 7) + QStringLiteral(" Maker Note");
    if (modelKeys().contains(key))
        return spelledApart(key);
    return key;
}

QList<PropertyTreeNode> propTree(const QVariantMap& properties)
{
    QList<PropertyTreeNode> nodes;
    nodes.reserve(properties.size());
    // QVariantMap keeps its keys in the ordinary text order of the raw keys.
    for (auto it = properties.cbegin(); it != properties.cend(); ++it)
        nodes.append(nodeFor(it.key(), it.value()));
    return nodes;
}

QString propertyValueText(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QVariantList: {
        QStringList parts;
        for (const QVariant& item : value.toList())
            parts << propertyValueText(item);
        return parts.join(QStringLiteral(", "));
    }
    case QMetaType::QVariantMap:
        return QString();
    case QMetaType::Double:
    case QMetaType::Float:
        // Twelve digits drop the noise of values computed from rationals (2.2944999999999998).
        return QString::number(value.toDouble(), 'g', 12);
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return QStringLiteral("<%1 bytes>").arg(bytes.size());
    }
    case QMetaType::QDateTime:
        return value.toDateTime().toUTC().toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")) + QLatin1Char('Z');
    default:
        return value.toString();
    }
}

namespace {

bool isCoordinateKey(const QString& key)
{
    static const QSet<QString> keys{QStringLiteral("Latitude"), QStringLiteral("Longitude"),
                                    QStringLiteral("DestLatitude"), QStringLiteral("DestLongitude")};
    return keys.contains(key);
}

QString versionText(const QString& key, const QVariantList& digits)
{
    QStringList parts;
    for (const QVariant& digit : digits)
        parts.append(QString::number(digit.toInt()));
    if (parts.isEmpty())
        return QString();
    if (key == QLatin1String("GPSVersion"))
        return parts.join(QLatin1Char('.'));  // 2.3.0.0
    if (key == QLatin1String("JFIFVersion"))  // major, then a two-digit minor: 1.01, 1.02
        return parts.size() == 2 ? QStringLiteral("%1.%2").arg(parts[0]).arg(digits[1].toInt(), 2, 10, QLatin1Char('0'))
                                 : parts.join(QLatin1Char('.'));
    // Exif and FlashPix: "0232" is held as 2, 3, 2 and read 2.32.
    return parts.first() + QLatin1Char('.') + (parts.size() > 1 ? parts.mid(1).join(QString()) : QStringLiteral("0"));
}

QString colorSpaceText(const QVariant& value)
{
    bool ok = false;
    const int code = value.toInt(&ok);
    if (!ok)
        return propertyValueText(value);
    switch (code) {
    case 1:
        return QStringLiteral("sRGB");
    case 2:
        return QStringLiteral("Adobe RGB");
    case 0xFFFF:
        return QStringLiteral("Uncalibrated");
    default:
        return QString::number(code);
    }
}

// "20040621" -> "2004:06:21", "233753-0400" -> "23:37:53-04:00", "2004-06-21T23:37:53+01:00" ->
// "2004:06:21 23:37:53+01:00"; any other text stays as it is.
QString uniformDateText(const QString& text)
{
    static const QRegularExpression compactDate(QStringLiteral("^(\\d{4})(\\d{2})(\\d{2})$"));
    static const QRegularExpression compactTime(QStringLiteral("^(\\d{2})(\\d{2})(\\d{2})(?:([+-])(\\d{2})(\\d{2}))?$"));
    static const QRegularExpression isoDate(
        QStringLiteral("^(\\d{4})-(\\d{2})-(\\d{2})(?:T(\\d{2}:\\d{2}(?::\\d{2})?(?:\\.\\d+)?)(Z|[+-]\\d{2}:\\d{2})?)?$"));
    const QString trimmed = text.trimmed();
    QRegularExpressionMatch m = compactDate.match(trimmed);
    if (m.hasMatch())
        return QStringLiteral("%1:%2:%3").arg(m.captured(1), m.captured(2), m.captured(3));
    m = compactTime.match(trimmed);
    if (m.hasMatch()) {
        QString out = QStringLiteral("%1:%2:%3").arg(m.captured(1), m.captured(2), m.captured(3));
        if (m.hasCaptured(4) && !m.captured(4).isEmpty())
            out += m.captured(4) + m.captured(5) + QLatin1Char(':') + m.captured(6);
        return out;
    }
    m = isoDate.match(trimmed);
    if (m.hasMatch()) {
        QString out = QStringLiteral("%1:%2:%3").arg(m.captured(1), m.captured(2), m.captured(3));
        if (!m.captured(4).isEmpty())
            out += QLatin1Char(' ') + m.captured(4) + m.captured(5);
        return out;
    }
    return text;
}

bool isDateOrTimeKey(const QString& key)
{
    // Model keys (DateCreated, TimeCreated, DigitalCreationTime, ...) and XMP names
    // (xmp:CreateDate, photoshop:DateCreated, exif:DateTimeOriginal, ...).
    const QString name = key.mid(key.indexOf(QLatin1Char(':')) + 1);
    return name.contains(QLatin1String("Date")) || name.contains(QLatin1String("Time"));
}

}  // namespace

QString propertyDisplayText(const QString& key, const QVariant& value)
{
    const int type = value.typeId();
    if (isCoordinateKey(key) && (type == QMetaType::Double || type == QMetaType::Float))
        return coordinateText(value.toDouble());
    if (key.endsWith(QLatin1String("Version")) && type == QMetaType::QVariantList && key != QLatin1String("ProgramVersion"))
        return versionText(key, value.toList());
    if (key == QLatin1String("ColorSpace"))
        return colorSpaceText(value);
    if (type == QMetaType::QString && isDateOrTimeKey(key))
        return uniformDateText(value.toString());
    return propertyValueText(value);
}

}  // namespace pelorin

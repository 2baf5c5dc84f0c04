#include "photo/PropertyTree.h"

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QSet>

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
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return QStringLiteral("<%1 bytes>").arg(bytes.size());
    }
    case QMetaType::QDateTime:
        return value.toDateTime().toUTC().toString(Qt::ISODate);
    default:
        return value.toString();
    }
}

}  // namespace pelorin

#include "photo/Exiv2Names.h"

namespace pelorin::exiv2_model::detail {

// exiv2 tag name -> model key, where they differ.
const QHash<QString, QString>& tiffRenames()
{
    static const QHash<QString, QString> m{{QStringLiteral("YCbCrPositioning"), QStringLiteral("_YCbCrPositioning")}};
    return m;
}

const QHash<QString, QString>& exifRenames()
{
    static const QHash<QString, QString> m{
        {QStringLiteral("SubSecTime"), QStringLiteral("SubsecTime")},
        {QStringLiteral("SubSecTimeOriginal"), QStringLiteral("SubsecTimeOriginal")},
        {QStringLiteral("SubSecTimeDigitized"), QStringLiteral("SubsecTimeDigitized")},
        {QStringLiteral("FlashpixVersion"), QStringLiteral("FlashPixVersion")},
        {QStringLiteral("FocalLengthIn35mmFilm"), QStringLiteral("FocalLenIn35mmFilm")},
        {QStringLiteral("SubjectDistanceRange"), QStringLiteral("SubjectDistRange")},
    };
    return m;
}

const QHash<QString, QString>& iptcRenames()
{
    static const QHash<QString, QString> m{
        {QStringLiteral("SuppCategory"), QStringLiteral("SupplementalCategory")},
        {QStringLiteral("LocationCode"), QStringLiteral("ContentLocationCode")},
        {QStringLiteral("LocationName"), QStringLiteral("ContentLocationName")},
        {QStringLiteral("DigitizationDate"), QStringLiteral("DigitalCreationDate")},
        {QStringLiteral("DigitizationTime"), QStringLiteral("DigitalCreationTime")},
        {QStringLiteral("Program"), QStringLiteral("OriginatingProgram")},
        {QStringLiteral("ProvinceState"), QStringLiteral("Province/State")},
        {QStringLiteral("CountryCode"), QStringLiteral("Country/PrimaryLocationCode")},
        {QStringLiteral("CountryName"), QStringLiteral("Country/PrimaryLocationName")},
        {QStringLiteral("TransmissionReference"), QStringLiteral("OriginalTransmissionReference")},
        {QStringLiteral("Copyright"), QStringLiteral("CopyrightNotice")},
        {QStringLiteral("Caption"), QStringLiteral("Caption/Abstract")},
        {QStringLiteral("Writer"), QStringLiteral("Writer/Editor")},
        {QStringLiteral("Language"), QStringLiteral("LanguageIdentifier")},
        {QStringLiteral("FixtureId"), QStringLiteral("FixtureIdentifier")},
        {QStringLiteral("ObjectType"), QStringLiteral("ObjectTypeReference")},
        {QStringLiteral("ObjectAttribute"), QStringLiteral("ObjectAttributeReference")},
        {QStringLiteral("Subject"), QStringLiteral("SubjectReference")},
    };
    return m;
}

// Model key of {ExifAux} -> XMP aux property.
const QHash<QString, QString>& auxProperties()
{
    static const QHash<QString, QString> m{
        {QStringLiteral("LensModel"), QStringLiteral("Xmp.aux.Lens")},
        {QStringLiteral("LensInfo"), QStringLiteral("Xmp.aux.LensInfo")},
        {QStringLiteral("SerialNumber"), QStringLiteral("Xmp.aux.SerialNumber")},
        {QStringLiteral("LensID"), QStringLiteral("Xmp.aux.LensID")},
        {QStringLiteral("LensSerialNumber"), QStringLiteral("Xmp.aux.LensSerialNumber")},
        {QStringLiteral("ImageNumber"), QStringLiteral("Xmp.aux.ImageNumber")},
        {QStringLiteral("FlashCompensation"), QStringLiteral("Xmp.aux.FlashCompensation")},
        {QStringLiteral("OwnerName"), QStringLiteral("Xmp.aux.OwnerName")},
        {QStringLiteral("Firmware"), QStringLiteral("Xmp.aux.Firmware")},
    };
    return m;
}

QString renamed(const QHash<QString, QString>& table, const QString& name)
{
    return table.value(name, name);
}

QString exiv2Name(const QHash<QString, QString>& table, const QString& modelKey)
{
    for (auto it = table.cbegin(); it != table.cend(); ++it) {
        if (it.value() == modelKey)
            return it.key();
    }
    return modelKey;
}

QString gpsModelKey(const QString& tagName)
{
    if (tagName == QLatin1String("GPSVersionID"))
        return QStringLiteral("GPSVersion");
    return tagName.startsWith(QLatin1String("GPS")) ? tagName.mid(3) : tagName;
}

QString gpsTagName(const QString& modelKey)
{
    if (modelKey == QLatin1String("GPSVersion"))
        return QStringLiteral("GPSVersionID");
    return QStringLiteral("GPS") + modelKey;
}

// IFD0 tags that describe the file rather than the picture; the only ones written or removed.
// Image structure (sizes, strips, tiles, compression) stays as the file has it.
const QSet<QString>& writableTiffTags()
{
    static const QSet<QString> s{
        QStringLiteral("ImageDescription"), QStringLiteral("Make"), QStringLiteral("Model"),
        QStringLiteral("Orientation"), QStringLiteral("XResolution"), QStringLiteral("YResolution"),
        QStringLiteral("ResolutionUnit"), QStringLiteral("Software"), QStringLiteral("DateTime"),
        QStringLiteral("Artist"), QStringLiteral("HostComputer"), QStringLiteral("Copyright"),
        QStringLiteral("DocumentName"), QStringLiteral("PageName"), QStringLiteral("WhitePoint"),
        QStringLiteral("PrimaryChromaticities"), QStringLiteral("YCbCrPositioning"),
        QStringLiteral("XPTitle"), QStringLiteral("XPComment"), QStringLiteral("XPAuthor"),
        QStringLiteral("XPKeywords"), QStringLiteral("XPSubject"), QStringLiteral("Rating"),
        QStringLiteral("RatingPercent"), QStringLiteral("ImageID")};
    return s;
}

// Pointers and containers of other metadata: never shown as values.
const QSet<QString>& hiddenTiffTags()
{
    static const QSet<QString> s{
        QStringLiteral("ExifTag"), QStringLiteral("GPSTag"), QStringLiteral("SubIFDs"),
        QStringLiteral("StripOffsets"), QStringLiteral("StripByteCounts"), QStringLiteral("TileOffsets"),
        QStringLiteral("TileByteCounts"), QStringLiteral("JPEGInterchangeFormat"),
        QStringLiteral("JPEGInterchangeFormatLength"), QStringLiteral("InterColorProfile"),
        QStringLiteral("XMLPacket"), QStringLiteral("IPTCNAA"), QStringLiteral("ImageResources"),
        QStringLiteral("DNGPrivateData"), QStringLiteral("PrintImageMatching"),
        QStringLiteral("JPEGTables")};
    return s;
}

// Keys whose value is a list even when it holds one element.
const QSet<QString>& alwaysArrays()
{
    static const QSet<QString> s{
        QStringLiteral("ISOSpeedRatings"), QStringLiteral("SubjectArea"), QStringLiteral("SubjectLocation"),
        QStringLiteral("LensSpecification"), QStringLiteral("ComponentsConfiguration"),
        QStringLiteral("GPSVersion"), QStringLiteral("ExifVersion"), QStringLiteral("FlashPixVersion"),
        QStringLiteral("WhitePoint"), QStringLiteral("PrimaryChromaticities"), QStringLiteral("TransferFunction"),
        QStringLiteral("BitsPerSample"), QStringLiteral("YCbCrCoefficients"), QStringLiteral("YCbCrSubSampling"),
        QStringLiteral("ReferenceBlackWhite"), QStringLiteral("LensInfo")};
    return s;
}

// Maker-note groups of exiv2 named by maker, as the model has them ("{MakerCanon}", ...).
QString makerGroupFor(const QString& exiv2Group)
{
    static const std::pair<const char*, const char*> known[] = {
        {"Canon", "Canon"},     {"Nikon", "Nikon"},     {"Minolta", "Minolta"},
        {"Fujifilm", "Fuji"},   {"Olympus", "Olympus"}, {"Pentax", "Pentax"},
        {"Apple", "Apple"},     {"Sony", "Sony"},       {"Panasonic", "Panasonic"},
        {"Samsung", "Samsung"}, {"Sigma", "Sigma"},     {"Casio", "Casio"}};
    for (const auto& [prefix, name] : known) {
        if (exiv2Group.startsWith(QLatin1String(prefix)))
            return QStringLiteral("{Maker%1}").arg(QLatin1String(name));
    }
    QString name = exiv2Group;
    while (!name.isEmpty() && name.back().isDigit())
        name.chop(1);
    return QStringLiteral("{Maker%1}").arg(name);
}

bool isMakerGroupKey(const QString& key)
{
    return key.startsWith(QLatin1String("{Maker")) && key.endsWith(QLatin1Char('}'));
}

}  // namespace pelorin::exiv2_model::detail

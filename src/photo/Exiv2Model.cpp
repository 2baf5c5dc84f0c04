#include "photo/Exiv2Model.h"

#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QStringDecoder>

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>

namespace pelorin::exiv2_model {
namespace {

const QString kTiff = QStringLiteral("{TIFF}");
const QString kExif = QStringLiteral("{Exif}");
const QString kGps = QStringLiteral("{GPS}");
const QString kIptc = QStringLiteral("{IPTC}");
const QString kXmp = QStringLiteral("{XMP}");
const QString kExifAux = QStringLiteral("{ExifAux}");
const QString kOrientation = QStringLiteral("Orientation");

// Values larger than this are binary blobs nobody reads in an inspector or a template.
constexpr long kMaxValueBytes = 64 * 1024;

// ---------------------------------------------------------------- names

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

// ---------------------------------------------------------------- values, exiv2 -> model

QString decodeText(const std::string& bytes)
{
    std::string trimmed = bytes;
    while (!trimmed.empty() && (trimmed.back() == '\0' || trimmed.back() == ' '))
        trimmed.pop_back();
    // Cut at an embedded NUL: what follows is padding or garbage.
    const auto nul = trimmed.find('\0');
    if (nul != std::string::npos)
        trimmed.resize(nul);
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8(QByteArrayView(trimmed.data(), qsizetype(trimmed.size())));
    if (utf8.hasError())
        text = QString::fromLatin1(trimmed.data(), qsizetype(trimmed.size()));
    return text;
}

bool isIntegerType(Exiv2::TypeId t)
{
    switch (t) {
    case Exiv2::unsignedByte:
    case Exiv2::unsignedShort:
    case Exiv2::unsignedLong:
    case Exiv2::signedByte:
    case Exiv2::signedShort:
    case Exiv2::signedLong:
    case Exiv2::tiffIfd:
        return true;
    default:
        return false;
    }
}

bool isRealType(Exiv2::TypeId t)
{
    return t == Exiv2::unsignedRational || t == Exiv2::signedRational || t == Exiv2::tiffFloat
           || t == Exiv2::tiffDouble;
}

double rationalToDouble(const Exiv2::Rational& r) { return r.second == 0 ? 0.0 : double(r.first) / r.second; }

QVariant numbers(const Exiv2::Value& v, bool real, bool forceArray)
{
    const long n = v.count();
    auto one = [&](long i) -> QVariant {
        if (!real)
            return QVariant(qlonglong(v.toLong(i)));
        if (v.typeId() == Exiv2::unsignedRational || v.typeId() == Exiv2::signedRational)
            return QVariant(rationalToDouble(v.toRational(i)));
        return QVariant(double(v.toFloat(i)));
    };
    if (n == 1 && !forceArray)
        return one(0);
    QVariantList list;
    list.reserve(n);
    for (long i = 0; i < n; ++i)
        list.append(one(i));
    return list;
}

// "0230" -> (2, 3), "0221" -> (2, 2, 1): the major number, then its minor digits without the
// trailing zeros.
QVariant versionDigits(const Exiv2::Value& v)
{
    std::string s;
    for (long i = 0; i < v.count() && i < 8; ++i)
        s.push_back(char(v.toLong(i)));
    QVariantList digits;
    if (s.size() >= 2 && std::isdigit(uchar(s[0])) && std::isdigit(uchar(s[1]))) {
        digits.append(qlonglong((s[0] - '0') * 10 + (s[1] - '0')));
        std::string minor = s.substr(2);
        while (!minor.empty() && minor.back() == '0')
            minor.pop_back();
        for (char c : minor) {
            if (!std::isdigit(uchar(c)))
                break;
            digits.append(qlonglong(c - '0'));
        }
    }
    return digits;
}

QString commentText(const Exiv2::Value& v)
{
    if (const auto* comment = dynamic_cast<const Exiv2::CommentValue*>(&v))
        return decodeText(comment->comment());
    // A comment stored with a plain type: skip an 8-byte charset header if one is there.
    std::string raw = v.toString();
    if (v.typeId() == Exiv2::undefined) {
        std::string bytes;
        for (long i = 0; i < v.count(); ++i)
            bytes.push_back(char(v.toLong(i)));
        raw = bytes.size() >= 8 && (bytes.compare(0, 8, std::string("ASCII\0\0\0", 8)) == 0
                                    || bytes.compare(0, 8, std::string(8, '\0')) == 0)
                  ? bytes.substr(8)
                  : bytes;
    }
    return decodeText(raw);
}

QByteArray rawBytes(const Exiv2::Value& v)
{
    QByteArray bytes(v.size(), Qt::Uninitialized);
    if (v.size() > 0)
        v.copy(reinterpret_cast<Exiv2::byte*>(bytes.data()), Exiv2::bigEndian);
    return bytes;
}

QVariant genericValue(const Exiv2::Value& v, const QString& modelKey)
{
    const Exiv2::TypeId t = v.typeId();
    const bool array = alwaysArrays().contains(modelKey);
    if (t == Exiv2::asciiString || t == Exiv2::string)
        return decodeText(v.toString());
    if (t == Exiv2::comment)
        return commentText(v);
    if (isIntegerType(t))
        return numbers(v, false, array);
    if (isRealType(t))
        return numbers(v, true, array);
    if (t == Exiv2::undefined) {
        if (modelKey == QLatin1String("ExifVersion") || modelKey == QLatin1String("FlashPixVersion"))
            return versionDigits(v);
        if (modelKey == QLatin1String("ComponentsConfiguration") || modelKey == QLatin1String("FileSource")
            || modelKey == QLatin1String("SceneType"))
            return numbers(v, false, array);
        return rawBytes(v);
    }
    return decodeText(v.toString());
}

double degrees(const Exiv2::Value& v)
{
    double result = 0;
    double scale = 1;
    for (long i = 0; i < v.count() && i < 3; ++i) {
        result += rationalToDouble(v.toRational(i)) / scale;
        scale *= 60;
    }
    return result;
}

QString gpsTime(const Exiv2::Value& v)
{
    if (v.count() < 3)
        return decodeText(v.toString());
    const double h = rationalToDouble(v.toRational(0));
    const double m = rationalToDouble(v.toRational(1));
    const double s = rationalToDouble(v.toRational(2));
    if (s == std::floor(s))
        return QString::asprintf("%02d:%02d:%02d", int(h), int(m), int(s));
    return QString::asprintf("%02d:%02d:%05.2f", int(h), int(m), s);
}

QVariant gpsValue(const Exiv2::Value& v, const QString& modelKey)
{
    if (modelKey == QLatin1String("Latitude") || modelKey == QLatin1String("Longitude")
        || modelKey == QLatin1String("DestLatitude") || modelKey == QLatin1String("DestLongitude")) {
        if (v.count() == 3 && isRealType(v.typeId()))
            return degrees(v);
    }
    if (modelKey == QLatin1String("TimeStamp") && isRealType(v.typeId()))
        return gpsTime(v);
    if (modelKey == QLatin1String("ProcessingMethod") || modelKey == QLatin1String("AreaInformation"))
        return commentText(v);
    if (modelKey == QLatin1String("GPSVersion"))
        return numbers(v, false, true);
    return genericValue(v, modelKey);
}

// IPTC dates are kept as CCYYMMDD and times as HHMMSS[+-HHMM], as IPTC itself writes them.
QVariant iptcValue(const Exiv2::Value& v)
{
    if (const auto* date = dynamic_cast<const Exiv2::DateValue*>(&v)) {
        const Exiv2::DateValue::Date d = date->getDate();
        return QString::asprintf("%04d%02d%02d", d.year, d.month, d.day);
    }
    if (const auto* time = dynamic_cast<const Exiv2::TimeValue*>(&v)) {
        const Exiv2::TimeValue::Time t = time->getTime();
        QString text = QString::asprintf("%02d%02d%02d", t.hour, t.minute, t.second);
        if (t.tzHour != 0 || t.tzMinute != 0)
            text += QString::asprintf("%c%02d%02d", (t.tzHour < 0 || t.tzMinute < 0) ? '-' : '+',
                                      std::abs(t.tzHour), std::abs(t.tzMinute));
        return text;
    }
    return decodeText(v.toString());
}

QVariant xmpValue(const Exiv2::Xmpdatum& d)
{
    const Exiv2::Value& v = d.value();
    if (const auto* langAlt = dynamic_cast<const Exiv2::LangAltValue*>(&v)) {
        const auto it = langAlt->value_.find("x-default");
        if (it != langAlt->value_.end())
            return decodeText(it->second);
        return langAlt->value_.empty() ? QString() : decodeText(langAlt->value_.begin()->second);
    }
    if (const auto* array = dynamic_cast<const Exiv2::XmpArrayValue*>(&v)) {
        QVariantList list;
        for (long i = 0; i < array->count(); ++i)
            list.append(decodeText(array->toString(i)));
        return list;
    }
    return decodeText(v.toString());
}

// ---------------------------------------------------------------- values, model -> exiv2

// Closest fraction with numerator and denominator that fit the EXIF 32-bit fields.
std::pair<std::int64_t, std::int64_t> fraction(double x, bool isSigned)
{
    const double limit = isSigned ? 2147483647.0 : 4294967295.0;
    if (!std::isfinite(x))
        return {0, 1};
    const bool negative = x < 0;
    double a = std::fabs(x);
    if (a >= limit)
        return {std::int64_t(negative ? -limit : limit), 1};
    // Continued fraction expansion; stop when the next step would overflow or is exact enough.
    std::int64_t p0 = 0, q0 = 1, p1 = 1, q1 = 0;
    double rest = a;
    for (int i = 0; i < 40; ++i) {
        const double whole = std::floor(rest);
        const double p2 = whole * p1 + p0;
        const double q2 = whole * q1 + q0;
        if (p2 > limit || q2 > limit)
            break;
        p0 = p1;
        q0 = q1;
        p1 = std::int64_t(p2);
        q1 = std::int64_t(q2);
        const double frac = rest - whole;
        if (frac < 1e-12 || std::fabs(double(p1) / double(q1) - a) <= a * 1e-12)
            break;
        rest = 1.0 / frac;
    }
    if (q1 == 0)
        return {std::int64_t(negative ? -limit : limit), 1};
    return {negative ? -p1 : p1, q1};
}

QString numberText(const QVariant& v, Exiv2::TypeId type)
{
    if (type == Exiv2::unsignedRational || type == Exiv2::signedRational) {
        const auto [n, d] = fraction(v.toDouble(), type == Exiv2::signedRational);
        return QStringLiteral("%1/%2").arg(n).arg(d);
    }
    if (type == Exiv2::tiffFloat || type == Exiv2::tiffDouble)
        return QString::number(v.toDouble(), 'g', 17);
    return QString::number(qlonglong(std::llround(v.toDouble())));
}

// The value's list of numbers as exiv2 reads them ("1/60", "2 2 0 0").
bool numbersText(const QVariant& value, Exiv2::TypeId type, std::string* out)
{
    QStringList parts;
    const QVariantList items = value.typeId() == QMetaType::QVariantList ? value.toList() : QVariantList{value};
    for (const QVariant& item : items) {
        bool ok = false;
        item.toDouble(&ok);
        if (!ok)
            return false;
        parts << numberText(item, type);
    }
    *out = parts.join(QLatin1Char(' ')).toStdString();
    return !parts.isEmpty();
}

std::unique_ptr<Exiv2::Value> exifValueFor(const Exiv2::ExifKey& key, const QString& modelKey,
                                           const QVariant& value)
{
    const QString name = modelKey;
    // Special forms first.
    if (key.groupName() == "GPSInfo") {
        if ((name == QLatin1String("Latitude") || name == QLatin1String("Longitude")
             || name == QLatin1String("DestLatitude") || name == QLatin1String("DestLongitude"))
            && value.typeId() != QMetaType::QVariantList) {
            bool ok = false;
            double deg = std::fabs(value.toDouble(&ok));
            if (!ok)
                return nullptr;
            const double d = std::floor(deg);
            const double m = std::floor((deg - d) * 60.0);
            const double s = (deg - d - m / 60.0) * 3600.0;
            auto v = std::make_unique<Exiv2::URationalValue>();
            v->value_.push_back({uint32_t(d), 1});
            v->value_.push_back({uint32_t(m), 1});
            v->value_.push_back({uint32_t(std::llround(s * 10000)), 10000});
            return v;
        }
        if (name == QLatin1String("TimeStamp") && value.typeId() == QMetaType::QString) {
            const QStringList parts = value.toString().split(QLatin1Char(':'));
            if (parts.size() != 3)
                return nullptr;
            auto v = std::make_unique<Exiv2::URationalValue>();
            for (const QString& part : parts) {
                bool ok = false;
                const double x = part.toDouble(&ok);
                if (!ok || x < 0)
                    return nullptr;
                const auto [n, den] = fraction(x, false);
                v->value_.push_back({uint32_t(n), uint32_t(den)});
            }
            return v;
        }
        if (name == QLatin1String("ProcessingMethod") || name == QLatin1String("AreaInformation")) {
            auto v = std::make_unique<Exiv2::CommentValue>();
            v->read("charset=Ascii " + value.toString().toStdString());
            return v;
        }
    }
    if (name == QLatin1String("UserComment")) {
        auto v = std::make_unique<Exiv2::CommentValue>();
        const QString text = value.toString();
        bool ascii = true;
        for (QChar c : text)
            ascii = ascii && c.unicode() < 128;
        v->read((ascii ? "charset=Ascii " : "charset=Unicode ") + text.toStdString());
        return v;
    }
    if ((name == QLatin1String("ExifVersion") || name == QLatin1String("FlashPixVersion"))
        && value.typeId() == QMetaType::QVariantList) {
        const QVariantList digits = value.toList();
        if (digits.isEmpty())
            return nullptr;
        std::string text = QString::asprintf("%02d", digits[0].toInt()).toStdString();
        for (qsizetype i = 1; i < digits.size(); ++i)
            text += char('0' + digits[i].toInt() % 10);
        while (text.size() < 4)
            text += '0';
        auto v = std::make_unique<Exiv2::DataValue>(Exiv2::undefined);
        v->read(reinterpret_cast<const Exiv2::byte*>(text.data()), long(text.size()));
        return v;
    }

    const Exiv2::TypeId type = key.defaultTypeId();
    if (type == Exiv2::asciiString) {
        if (value.typeId() == QMetaType::QVariantList || value.typeId() == QMetaType::QVariantMap)
            return nullptr;
        auto v = std::make_unique<Exiv2::AsciiValue>();
        v->read(value.toString().toStdString());
        return v;
    }
    if (type == Exiv2::undefined || type == Exiv2::unsignedByte) {
        if (value.typeId() == QMetaType::QByteArray) {
            auto v = std::make_unique<Exiv2::DataValue>(type);
            const QByteArray bytes = value.toByteArray();
            v->read(reinterpret_cast<const Exiv2::byte*>(bytes.constData()), long(bytes.size()));
            return v;
        }
        if (name.startsWith(QLatin1String("XP")) && value.typeId() == QMetaType::QString) {
            // Windows' XP tags hold UCS-2 little-endian text.
            const QString text = value.toString();
            QByteArray bytes;
            for (QChar c : text) {
                bytes.append(char(c.unicode() & 0xff));
                bytes.append(char(c.unicode() >> 8));
            }
            bytes.append(2, '\0');
            auto v = std::make_unique<Exiv2::DataValue>(Exiv2::unsignedByte);
            v->read(reinterpret_cast<const Exiv2::byte*>(bytes.constData()), long(bytes.size()));
            return v;
        }
    }
    if (type == Exiv2::comment) {
        auto v = std::make_unique<Exiv2::CommentValue>();
        v->read("charset=Ascii " + value.toString().toStdString());
        return v;
    }
    std::string text;
    if (!numbersText(value, type, &text))
        return nullptr;
    std::unique_ptr<Exiv2::Value> v(Exiv2::Value::create(type).release());
    if (v->read(text) != 0)
        return nullptr;
    return v;
}

// ---------------------------------------------------------------- reading helpers

struct ExifPlace {
    QString group;     // model group, or kOrientation for the top-level key
    QString modelKey;
};

// Where an exiv2 EXIF datum lives in the model; an empty group when it is not shown.
ExifPlace placeOf(const Exiv2::Exifdatum& d)
{
    const QString group = QString::fromStdString(d.groupName());
    const QString tag = QString::fromStdString(d.tagName());
    if (group == QLatin1String("Image")) {
        if (hiddenTiffTags().contains(tag))
            return {};
        return {kTiff, renamed(tiffRenames(), tag)};
    }
    if (group == QLatin1String("Photo")) {
        if (tag == QLatin1String("MakerNote") || tag == QLatin1String("InteroperabilityTag"))
            return {};
        return {kExif, renamed(exifRenames(), tag)};
    }
    if (group == QLatin1String("GPSInfo"))
        return {kGps, gpsModelKey(tag)};
    if (Exiv2::ExifTags::isMakerGroup(d.groupName()) && group != QLatin1String("MakerNote"))
        return {makerGroupFor(group), tag};
    return {};
}

void deleteExifWhere(Exiv2::ExifData& exif, const std::function<bool(const Exiv2::Exifdatum&)>& match)
{
    for (auto it = exif.begin(); it != exif.end();) {
        if (match(*it))
            it = exif.erase(it);
        else
            ++it;
    }
}

void deleteXmpWhere(Exiv2::XmpData& xmp, const std::function<bool(const QString& key)>& match)
{
    for (auto it = xmp.begin(); it != xmp.end();) {
        if (match(QString::fromStdString(it->key())))
            it = xmp.erase(it);
        else
            ++it;
    }
}

QVariantMap currentGroup(Metadata m, const QString& group)
{
    QVariantMap properties;
    if (group == kIptc)
        readIptc(m.iptc, &properties);
    else if (group == kXmp || group == kExifAux)
        readXmp(m.xmp, &properties);
    else
        readExif(m.exif, &properties);
    return group == kOrientation ? properties : properties.value(group).toMap();
}

// ---------------------------------------------------------------- group writers

void setExif(Metadata m, const std::string& exiv2Key, const QString& modelKey, const QVariant& value,
             const QString& where, QStringList* warnings)
{
    try {
        const Exiv2::ExifKey key(exiv2Key);
        const auto v = exifValueFor(key, modelKey, value);
        if (!v) {
            warnings->append(QStringLiteral("%1 cannot hold the value given").arg(where));
            return;
        }
        m.exif[exiv2Key].setValue(v.get());
    } catch (const Exiv2::AnyError&) {
        warnings->append(QStringLiteral("%1 is not a known property").arg(where));
    }
}

void applyExifGroup(Metadata m, const QString& group, const QVariantMap& wanted, QStringList* warnings)
{
    const QVariantMap current = currentGroup(m, group);
    auto exiv2KeyOf = [&](const QString& modelKey) -> std::string {
        if (group == kTiff)
            return "Exif.Image." + exiv2Name(tiffRenames(), modelKey).toStdString();
        if (group == kExif)
            return "Exif.Photo." + exiv2Name(exifRenames(), modelKey).toStdString();
        return "Exif.GPSInfo." + gpsTagName(modelKey).toStdString();
    };
    auto writable = [&](const QString& modelKey) {
        return group != kTiff || writableTiffTags().contains(exiv2Name(tiffRenames(), modelKey));
    };
    for (auto it = current.cbegin(); it != current.cend(); ++it) {
        if (wanted.contains(it.key()) || !writable(it.key()))
            continue;
        const auto pos = m.exif.findKey(Exiv2::ExifKey(exiv2KeyOf(it.key())));
        if (pos != m.exif.end())
            m.exif.erase(pos);
    }
    for (auto it = wanted.cbegin(); it != wanted.cend(); ++it) {
        if (current.contains(it.key()) && sameValue(current.value(it.key()), it.value()))
            continue;
        const QString where = group + QLatin1Char('/') + it.key();
        if (!writable(it.key())) {
            warnings->append(QStringLiteral("%1 describes the image data and is not changed").arg(where));
            continue;
        }
        setExif(m, exiv2KeyOf(it.key()), it.key(), it.value(), where, warnings);
    }
}

void applyIptcGroup(Metadata m, const QVariantMap& wanted, QStringList* warnings)
{
    const QVariantMap current = currentGroup(m, kIptc);
    auto keyOf = [](const QString& modelKey) {
        return "Iptc.Application2." + exiv2Name(iptcRenames(), modelKey).toStdString();
    };
    auto erase = [&](const std::string& key) {
        for (auto it = m.iptc.begin(); it != m.iptc.end();) {
            if (it->key() == key)
                it = m.iptc.erase(it);
            else
                ++it;
        }
    };
    for (auto it = current.cbegin(); it != current.cend(); ++it) {
        if (!wanted.contains(it.key()))
            erase(keyOf(it.key()));
    }
    for (auto it = wanted.cbegin(); it != wanted.cend(); ++it) {
        if (current.contains(it.key()) && sameValue(current.value(it.key()), it.value()))
            continue;
        const QString where = kIptc + QLatin1Char('/') + it.key();
        try {
            const Exiv2::IptcKey key(keyOf(it.key()));
            const Exiv2::TypeId type = Exiv2::IptcDataSets::dataSetType(key.tag(), key.record());
            erase(key.key());
            const QVariantList items = it.value().typeId() == QMetaType::QVariantList
                                           ? it.value().toList()
                                           : QVariantList{it.value()};
            for (const QVariant& item : items) {
                QString text = item.toString();
                // The model keeps CCYYMMDD and HHMMSS; exiv2 reads the ISO forms.
                if (type == Exiv2::date && text.size() == 8)
                    text = text.left(4) + QLatin1Char('-') + text.mid(4, 2) + QLatin1Char('-') + text.mid(6);
                else if (type == Exiv2::time && text.size() >= 6) {
                    QString zone = text.size() >= 11 ? text.mid(6, 3) + QLatin1Char(':') + text.mid(9, 2)
                                                     : QStringLiteral("+00:00");
                    text = text.left(2) + QLatin1Char(':') + text.mid(2, 2) + QLatin1Char(':') + text.mid(4, 2) + zone;
                }
                std::unique_ptr<Exiv2::Value> v(Exiv2::Value::create(type).release());
                if (v->read(text.toStdString()) != 0) {
                    warnings->append(QStringLiteral("%1 cannot hold \"%2\"").arg(where, item.toString()));
                    continue;
                }
                m.iptc.add(key, v.get());
            }
        } catch (const Exiv2::AnyError&) {
            warnings->append(QStringLiteral("%1 is not a known property").arg(where));
        }
    }
}

std::string xmpKeyOf(const QString& qualifiedName)
{
    const qsizetype colon = qualifiedName.indexOf(QLatin1Char(':'));
    if (colon <= 0)
        return {};
    return "Xmp." + qualifiedName.left(colon).toStdString() + "." + qualifiedName.mid(colon + 1).toStdString();
}

void setXmp(Metadata m, const std::string& key, const QVariant& value, const QString& where,
            QStringList* warnings)
{
    try {
        const Exiv2::XmpKey xmpKey(key);
        const Exiv2::TypeId type = Exiv2::XmpProperties::propertyType(xmpKey);
        auto pos = m.xmp.findKey(xmpKey);
        if (pos != m.xmp.end())
            m.xmp.erase(pos);
        if (value.typeId() == QMetaType::QVariantList) {
            Exiv2::XmpArrayValue v(type == Exiv2::xmpSeq || type == Exiv2::xmpAlt ? type : Exiv2::xmpBag);
            for (const QVariant& item : value.toList())
                v.read(item.toString().toStdString());
            m.xmp.add(xmpKey, &v);
        } else if (type == Exiv2::langAlt) {
            Exiv2::LangAltValue v;
            v.read("lang=x-default " + value.toString().toStdString());
            m.xmp.add(xmpKey, &v);
        } else {
            Exiv2::XmpTextValue v(value.toString().toStdString());
            m.xmp.add(xmpKey, &v);
        }
    } catch (const Exiv2::AnyError&) {
        warnings->append(QStringLiteral("%1 is not a known XMP property").arg(where));
    }
}

void applyXmpGroup(Metadata m, const QString& group, const QVariantMap& wanted, QStringList* warnings)
{
    const QVariantMap current = currentGroup(m, group);
    auto keyOf = [&](const QString& modelKey) {
        return group == kExifAux ? auxProperties().value(modelKey).toStdString() : xmpKeyOf(modelKey);
    };
    for (auto it = current.cbegin(); it != current.cend(); ++it) {
        if (wanted.contains(it.key()))
            continue;
        const std::string key = keyOf(it.key());
        deleteXmpWhere(m.xmp, [&](const QString& k) {
            const QString prefix = QString::fromStdString(key);
            return k == prefix || k.startsWith(prefix + QLatin1Char('[')) || k.startsWith(prefix + QLatin1Char('/'));
        });
    }
    for (auto it = wanted.cbegin(); it != wanted.cend(); ++it) {
        if (current.contains(it.key()) && sameValue(current.value(it.key()), it.value()))
            continue;
        const QString where = group + QLatin1Char('/') + it.key();
        const std::string key = keyOf(it.key());
        if (key.empty()) {
            warnings->append(QStringLiteral("%1 is not a known XMP property").arg(where));
            continue;
        }
        setXmp(m, key, it.value(), where, warnings);
    }
}

bool isExifMirrorInXmp(const QString& key)
{
    return key.startsWith(QLatin1String("Xmp.exif.")) || key.startsWith(QLatin1String("Xmp.exifEX."))
           || key.startsWith(QLatin1String("Xmp.aux.")) || key.startsWith(QLatin1String("Xmp.tiff."));
}

bool isGpsInXmp(const QString& key)
{
    return key.startsWith(QLatin1String("Xmp.exif.GPS"));
}

void removeGroup(Metadata m, const QString& group)
{
    if (group == kExif) {
        // The Exif directory with everything hanging from it: interoperability, maker notes.
        deleteExifWhere(m.exif, [](const Exiv2::Exifdatum& d) {
            const std::string g = d.groupName();
            return g == "Photo" || g == "Iop" || g == "MakerNote" || Exiv2::ExifTags::isMakerGroup(g);
        });
        deleteXmpWhere(m.xmp, [](const QString& k) { return isExifMirrorInXmp(k) && !isGpsInXmp(k); });
    } else if (group == kGps) {
        deleteExifWhere(m.exif, [](const Exiv2::Exifdatum& d) { return d.groupName() == "GPSInfo"; });
        deleteXmpWhere(m.xmp, isGpsInXmp);
    } else if (group == kTiff) {
        deleteExifWhere(m.exif, [](const Exiv2::Exifdatum& d) {
            return d.groupName() == "Image" && writableTiffTags().contains(QString::fromStdString(d.tagName()));
        });
    } else if (group == kIptc) {
        m.iptc.clear();
    } else if (group == kXmp) {
        m.xmp.clear();
    } else if (group == kExifAux) {
        deleteXmpWhere(m.xmp, [](const QString& k) { return k.startsWith(QLatin1String("Xmp.aux.")); });
    } else if (group == kOrientation) {
        deleteExifWhere(m.exif, [](const Exiv2::Exifdatum& d) { return d.key() == "Exif.Image.Orientation"; });
    } else if (isMakerGroupKey(group)) {
        deleteExifWhere(m.exif, [&](const Exiv2::Exifdatum& d) {
            return Exiv2::ExifTags::isMakerGroup(d.groupName())
                   && makerGroupFor(QString::fromStdString(d.groupName())) == group;
        });
    }
    // Container facts ({JFIF}, {PNG}, {GIF}, {8BIM}, ...) describe the file itself: nothing to drop.
}

}  // namespace

// ---------------------------------------------------------------- public

void readExif(const Exiv2::ExifData& exif, QVariantMap* properties)
{
    QHash<QString, QVariantMap> groups;
    for (const Exiv2::Exifdatum& d : exif) {
        const ExifPlace place = placeOf(d);
        if (place.group.isEmpty() || d.size() > kMaxValueBytes)
            continue;
        try {
            const Exiv2::Value& v = d.value();
            const QVariant value = place.group == kGps ? gpsValue(v, place.modelKey)
                                                       : genericValue(v, place.modelKey);
            groups[place.group].insert(place.modelKey, value);
            if (place.group == kTiff && place.modelKey == kOrientation)
                properties->insert(kOrientation, value);
        } catch (const Exiv2::AnyError&) {
            // A value exiv2 cannot convert is left out rather than shown wrong.
        }
    }
    for (auto it = groups.cbegin(); it != groups.cend(); ++it)
        properties->insert(it.key(), it.value());
}

void readIptc(const Exiv2::IptcData& iptc, QVariantMap* properties)
{
    QVariantMap group;
    for (const Exiv2::Iptcdatum& d : iptc) {
        // Record version is part of the record's structure, not a property.
        if (d.recordName() != "Application2" || d.tag() == 0 || d.size() > kMaxValueBytes)
            continue;
        const QString key = renamed(iptcRenames(), QString::fromStdString(d.tagName()));
        const QVariant value = iptcValue(d.value());
        if (Exiv2::IptcDataSets::dataSetRepeatable(d.tag(), d.record())) {
            QVariantList list = group.value(key).toList();
            list.append(value);
            group.insert(key, list);
        } else {
            group.insert(key, value);
        }
    }
    if (!group.isEmpty())
        properties->insert(kIptc, group);
}

void readXmp(const Exiv2::XmpData& xmp, QVariantMap* properties)
{
    QVariantMap group;
    QVariantMap aux;
    for (const Exiv2::Xmpdatum& d : xmp) {
        if (d.size() > kMaxValueBytes)
            continue;
        const QString key = QString::fromStdString(d.key());
        const QString qualified = QString::fromStdString(d.groupName()) + QLatin1Char(':')
                                  + QString::fromStdString(d.tagName());
        QVariant value = xmpValue(d);
        group.insert(qualified, value);
        for (auto it = auxProperties().cbegin(); it != auxProperties().cend(); ++it) {
            if (it.value() != key)
                continue;
            if (it.key() == QLatin1String("LensInfo")) {
                // "24/1 120/1 4/1 4/1" -> four reals
                QVariantList reals;
                for (const QString& part : value.toString().split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
                    const QStringList nd = part.split(QLatin1Char('/'));
                    const double den = nd.value(1, QStringLiteral("1")).toDouble();
                    reals.append(den == 0 ? 0.0 : nd.value(0).toDouble() / den);
                }
                value = reals;
            } else if (it.key() == QLatin1String("LensID") || it.key() == QLatin1String("ImageNumber")) {
                bool ok = false;
                const qlonglong n = value.toString().toLongLong(&ok);
                if (ok)
                    value = n;
            }
            aux.insert(it.key(), value);
        }
    }
    if (!group.isEmpty())
        properties->insert(kXmp, group);
    if (!aux.isEmpty())
        properties->insert(kExifAux, aux);
}

bool isModelGroup(const QString& key)
{
    return key.startsWith(QLatin1Char('{')) && key.endsWith(QLatin1Char('}'));
}

bool isWritableKey(const QString& key)
{
    return key == kTiff || key == kExif || key == kGps || key == kIptc || key == kXmp
           || key == kExifAux || key == kOrientation;
}

void applyChange(Metadata metadata, const QString& key, const QVariant& content, QStringList* warnings)
{
    if (content.isNull()) {
        removeGroup(metadata, key);
        return;
    }
    if (key == kOrientation) {
        bool ok = false;
        const int value = content.toInt(&ok);
        if (!ok || value < 1 || value > 8) {
            warnings->append(QStringLiteral("Orientation must be a number from 1 to 8"));
            return;
        }
        QVariantMap current;
        readExif(metadata.exif, &current);
        if (!sameValue(current.value(kOrientation), content))
            metadata.exif["Exif.Image.Orientation"] = uint16_t(value);
        return;
    }
    if (content.typeId() != QMetaType::QVariantMap) {
        warnings->append(QStringLiteral("%1 must be a dictionary").arg(key));
        return;
    }
    const QVariantMap wanted = content.toMap();
    if (key == kTiff || key == kExif || key == kGps)
        applyExifGroup(metadata, key, wanted, warnings);
    else if (key == kIptc)
        applyIptcGroup(metadata, wanted, warnings);
    else if (key == kXmp || key == kExifAux)
        applyXmpGroup(metadata, key, wanted, warnings);
    else {
        // Read-only groups: only an unchanged copy is accepted silently.
        QVariantMap current;
        readExif(metadata.exif, &current);
        if (!current.contains(key) || !sameValue(current.value(key), content))
            warnings->append(QStringLiteral("%1 cannot be changed").arg(key));
    }
}

void syncXmpDateMirrors(Metadata metadata, const QVariantMap& propertiesBefore)
{
    struct Mirror {
        const char* group;
        const char* key;
        const char* xmpKeys[2];
    };
    static const Mirror mirrors[] = {
        {"{Exif}", "DateTimeOriginal", {"Xmp.exif.DateTimeOriginal", "Xmp.photoshop.DateCreated"}},
        {"{Exif}", "DateTimeDigitized", {"Xmp.xmp.CreateDate", "Xmp.exif.DateTimeDigitized"}},
        {"{TIFF}", "DateTime", {"Xmp.xmp.ModifyDate", "Xmp.tiff.DateTime"}},
    };
    QVariantMap after;
    readExif(metadata.exif, &after);
    for (const Mirror& m : mirrors) {
        const QString group = QString::fromLatin1(m.group);
        const QString key = QString::fromLatin1(m.key);
        const QString before = propertiesBefore.value(group).toMap().value(key).toString();
        const QString now = after.value(group).toMap().value(key).toString();
        if (now.isEmpty() || now == before || now.size() < 19)
            continue;
        // "2019:05:06 07:08:09" -> "2019-05-06T07:08:09"
        QString iso = now.left(19);
        iso[4] = QLatin1Char('-');
        iso[7] = QLatin1Char('-');
        iso[10] = QLatin1Char('T');
        for (const char* xmpKey : m.xmpKeys) {
            const auto pos = metadata.xmp.findKey(Exiv2::XmpKey(xmpKey));
            if (pos == metadata.xmp.end())
                continue;
            const QString old = QString::fromStdString(pos->toString());
            // Keep the zone the XMP value stated ("Z", "+02:00"); a bare date has none.
            QString zone;
            if (old.size() > 19) {
                const QString tail = old.mid(19);
                const qsizetype sign = tail.indexOf(QRegularExpression(QStringLiteral("[Z+-]")));
                if (sign >= 0)
                    zone = tail.mid(sign);
            }
            pos->setValue((iso + zone).toStdString());
        }
    }
}

void removeAll(Metadata metadata)
{
    const auto orientation = metadata.exif.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
    const bool hasOrientation = orientation != metadata.exif.end();
    const uint16_t value = hasOrientation ? uint16_t(orientation->toLong()) : 1;
    metadata.exif.clear();
    metadata.iptc.clear();
    metadata.xmp.clear();
    if (hasOrientation)
        metadata.exif["Exif.Image.Orientation"] = value;
}

bool sameValue(const QVariant& a, const QVariant& b)
{
    const bool aList = a.typeId() == QMetaType::QVariantList || a.typeId() == QMetaType::QStringList;
    const bool bList = b.typeId() == QMetaType::QVariantList || b.typeId() == QMetaType::QStringList;
    if (aList || bList) {
        const QVariantList x = a.toList(), y = b.toList();
        if (!aList || !bList || x.size() != y.size())
            return false;
        for (qsizetype i = 0; i < x.size(); ++i) {
            if (!sameValue(x[i], y[i]))
                return false;
        }
        return true;
    }
    if (a.typeId() == QMetaType::QVariantMap || b.typeId() == QMetaType::QVariantMap) {
        const QVariantMap x = a.toMap(), y = b.toMap();
        if (x.keys() != y.keys())
            return false;
        for (auto it = x.cbegin(); it != x.cend(); ++it) {
            if (!sameValue(it.value(), y.value(it.key())))
                return false;
        }
        return true;
    }
    auto isNumber = [](const QVariant& v) {
        switch (v.typeId()) {
        case QMetaType::Int: case QMetaType::UInt: case QMetaType::LongLong: case QMetaType::ULongLong:
        case QMetaType::Double: case QMetaType::Float: case QMetaType::Long: case QMetaType::ULong:
        case QMetaType::Short: case QMetaType::UShort:
            return true;
        default:
            return false;
        }
    };
    if (isNumber(a) && isNumber(b)) {
        const double x = a.toDouble(), y = b.toDouble();
        return x == y || std::fabs(x - y) <= 1e-9 * std::max(std::fabs(x), std::fabs(y));
    }
    if (a.typeId() != b.typeId())
        return false;
    return a == b;
}

}  // namespace pelorin::exiv2_model

#include "photo/Exiv2Values.h"

#include "photo/Exiv2Names.h"

#include <QStringDecoder>

#include <cmath>
#include <cstdint>

namespace pelorin::exiv2_model::detail {

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

static bool isIntegerType(Exiv2::TypeId t)
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

static bool isRealType(Exiv2::TypeId t)
{
    return t == Exiv2::unsignedRational || t == Exiv2::signedRational || t == Exiv2::tiffFloat
           || t == Exiv2::tiffDouble;
}

static double rationalToDouble(const Exiv2::Rational& r) { return r.second == 0 ? 0.0 : double(r.first) / r.second; }

static QVariant numbers(const Exiv2::Value& v, bool real, bool forceArray)
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
static QVariant versionDigits(const Exiv2::Value& v)
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

static QString commentText(const Exiv2::Value& v)
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

static QByteArray rawBytes(const Exiv2::Value& v)
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

static double degrees(const Exiv2::Value& v)
{
    double result = 0;
    double scale = 1;
    for (long i = 0; i < v.count() && i < 3; ++i) {
        result += rationalToDouble(v.toRational(i)) / scale;
        scale *= 60;
    }
    return result;
}

static QString gpsTime(const Exiv2::Value& v)
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
static std::pair<std::int64_t, std::int64_t> fraction(double x, bool isSigned)
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

static QString numberText(const QVariant& v, Exiv2::TypeId type)
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
static bool numbersText(const QVariant& value, Exiv2::TypeId type, std::string* out)
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

}  // namespace pelorin::exiv2_model::detail

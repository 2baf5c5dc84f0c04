#include "photo/Exiv2Model.h"

#include "photo/Exiv2Names.h"
#include "photo/Exiv2Values.h"

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

using namespace detail;


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

}  // namespace

bool describesImageData(const QString& group, const QString& modelKey)
{
    return group == kTiff && !writableTiffTags().contains(exiv2Name(tiffRenames(), modelKey));
}

namespace {

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
    auto writable = [&](const QString& modelKey) { return !describesImageData(group, modelKey); };
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
        // A DNG carries the camera's maker notes (serial numbers among them) in IFD0's
        // DNGPrivateData instead, so that goes with them.
        deleteExifWhere(m.exif, [](const Exiv2::Exifdatum& d) {
            const std::string g = d.groupName();
            return g == "Photo" || g == "Iop" || g == "MakerNote" || Exiv2::ExifTags::isMakerGroup(g)
                   || d.key() == "Exif.Image.DNGPrivateData";
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

namespace {

void syncXmpGps(Metadata metadata, const QVariantMap& before, const QVariantMap& after)
{
    const QString gps = QStringLiteral("{GPS}");
    if (sameValue(before.value(gps), after.value(gps)))
        return;
    bool hasXmpGps = false;
    for (const Exiv2::Xmpdatum& d : metadata.xmp)
        hasXmpGps = hasXmpGps || isGpsInXmp(QString::fromStdString(d.key()));
    if (!hasXmpGps)
        return;
    deleteXmpWhere(metadata.xmp, isGpsInXmp);
    // exiv2's own EXIF-to-XMP conversion, fed with the GPS values alone.
    Exiv2::ExifData gpsOnly;
    for (const Exiv2::Exifdatum& d : metadata.exif) {
        if (d.groupName() == "GPSInfo")
            gpsOnly.add(d);
    }
    Exiv2::XmpData converted;
    Exiv2::copyExifToXmp(gpsOnly, converted);
    for (const Exiv2::Xmpdatum& d : converted) {
        if (isGpsInXmp(QString::fromStdString(d.key())))
            metadata.xmp.add(d);
    }
}

void syncXmpDates(Metadata metadata, const QVariantMap& propertiesBefore, const QVariantMap& after);

}  // namespace

void syncXmpMirrors(Metadata metadata, const QVariantMap& propertiesBefore)
{
    QVariantMap after;
    readExif(metadata.exif, &after);
    syncXmpDates(metadata, propertiesBefore, after);
    syncXmpGps(metadata, propertiesBefore, after);
}

namespace {

void syncXmpDates(Metadata metadata, const QVariantMap& propertiesBefore, const QVariantMap& after)
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

}  // namespace

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

QVariantMap modelOf(Exiv2::Image& image)
{
    QVariantMap model;
    readExif(image.exifData(), &model);
    readIptc(image.iptcData(), &model);
    readXmp(image.xmpData(), &model);
    return model;
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

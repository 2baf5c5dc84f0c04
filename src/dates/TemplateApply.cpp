#include "dates/TemplateApply.h"

#include "dates/GpsGroup.h"
#include "model/DateText.h"

namespace pelorin {
namespace {

const QString kExif = QStringLiteral("{Exif}");
const QString kTiff = QStringLiteral("{TIFF}");
const QString kIptc = QStringLiteral("{IPTC}");
const QString kGps = QStringLiteral("{GPS}");

const QStringList& templateKeys()
{
    static const QStringList keys{
        QStringLiteral("Artist"), QStringLiteral("ImageDescription"), QStringLiteral("Copyright"),
        QStringLiteral("Make"), QStringLiteral("Model"), QStringLiteral("LensMake"), QStringLiteral("LensModel"),
        QStringLiteral("DateTimeDigitized"), QStringLiteral("UserComment"), QStringLiteral("Keywords"),
        QStringLiteral("ObjectName"), QStringLiteral("DateStamp"), QStringLiteral("TimeStamp"),
        QStringLiteral("Altitude"), QStringLiteral("Latitude"), QStringLiteral("LatitudeRef"),
        QStringLiteral("Longitude"), QStringLiteral("LongitudeRef")};
    return keys;
}

// A template value as text: texts as they are, numbers in their shortest form; anything else
// (a dictionary, data) counts as empty.
QString textOf(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QString: return value.toString().trimmed();
    case QMetaType::Double: return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Int: return value.toString();
    default: return {};
    }
}

// A signed coordinate text; a magnitude with a "S" or "W" reference is made negative.
QString signedCoordinate(const QVariantMap& t, const QString& key, const QString& negativeRef)
{
    QString text = textOf(t.value(key));
    const QString ref = t.value(key + QStringLiteral("Ref")).toString().trimmed();
    if (!text.isEmpty() && !text.startsWith(QLatin1Char('-')) && ref.compare(negativeRef, Qt::CaseInsensitive) == 0)
        text.prepend(QLatin1Char('-'));
    return text;
}

}  // namespace

TemplateEdits templateEdits(const QVariantMap& t)
{
    TemplateEdits out;
    for (const QString& key : templateKeys())
        out.hasTemplateKeys = out.hasTemplateKeys || t.contains(key);
    GroupEdits& e = out.edits;
    auto setText = [&](const QString& group, const char* key) {
        const QString text = textOf(t.value(QString::fromLatin1(key)));
        if (!text.isEmpty())
            e.set(group, QString::fromLatin1(key), text);
    };
    setText(kExif, "LensMake");
    setText(kExif, "LensModel");
    setText(kExif, "UserComment");
    const QString date = textOf(t.value(QStringLiteral("DateTimeDigitized")));
    if (!date.isEmpty()) {
        const auto clock = parseDateText(date);
        if (!clock) {
            out.alert = Alerts::invalidDateFormat();
            return out;
        }
        e.set(kExif, QStringLiteral("DateTimeDigitized"), renderDateText(*clock, DateTextForm::Exif));
    }
    for (const char* key : {"Artist", "ImageDescription", "Copyright", "Make", "Model"})
        setText(kTiff, key);
    setText(kIptc, "ObjectName");
    const QVariant keywords = t.value(QStringLiteral("Keywords"));
    const QVariantList list = keywords.typeId() == QMetaType::QVariantList ? keywords.toList()
                                                                          : keywordList(textOf(keywords));
    if (!list.isEmpty())
        e.set(kIptc, QStringLiteral("Keywords"), list);

    GpsInput gps;
    gps.latitude = signedCoordinate(t, QStringLiteral("Latitude"), QStringLiteral("S"));
    gps.longitude = signedCoordinate(t, QStringLiteral("Longitude"), QStringLiteral("W"));
    if (!gps.latitude.isEmpty() && !gps.longitude.isEmpty()) {
        gps.altitude = textOf(t.value(QStringLiteral("Altitude")));
        gps.dateStamp = textOf(t.value(QStringLiteral("DateStamp")));
        gps.timeStamp = textOf(t.value(QStringLiteral("TimeStamp")));
        const GpsGroupResult built = buildGpsGroup(gps);
        if (built.alert) {
            out.alert = built.alert;
            return out;
        }
        // Laid over the photo's group: an empty altitude, date or time stamp keeps the photo's.
        for (auto it = built.group.cbegin(); it != built.group.cend(); ++it)
            e.set(kGps, it.key(), it.value());
    }
    return out;
}

}  // namespace pelorin

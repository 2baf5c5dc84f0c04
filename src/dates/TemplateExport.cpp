#include "dates/TemplateExport.h"

#include "dates/PlistExportFile.h"

#include <cmath>

namespace pelorin {
namespace {

// Adds the coordinate and its reference; false when the text is there but is no number. An
// empty field gives empty texts: every key is in the template, and applying it leaves the
// photo's location alone instead of moving it to 0, 0.
bool addCoordinate(QVariantMap& values, const QString& text, const QString& key, const QString& positive,
                   const QString& negative)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty()) {
        values.insert(key, QString());
        values.insert(key + QStringLiteral("Ref"), QString());
        return true;
    }
    bool ok = false;
    const double value = trimmed.toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return false;
    values.insert(key, value);
    values.insert(key + QStringLiteral("Ref"), value < 0 ? negative : positive);
    return true;
}

}  // namespace

TemplateDictionary templateDictionary(const PhotoEditorTexts& f)
{
    TemplateDictionary t;
    QVariantMap& v = t.values;
    v.insert(QStringLiteral("Artist"), f.artist);
    v.insert(QStringLiteral("ImageDescription"), f.imageDescription);
    v.insert(QStringLiteral("Copyright"), f.copyright);
    v.insert(QStringLiteral("Make"), f.cameraMake);
    v.insert(QStringLiteral("Model"), f.cameraModel);
    v.insert(QStringLiteral("LensMake"), f.cameraMake);
    v.insert(QStringLiteral("LensModel"), f.cameraModel);
    v.insert(QStringLiteral("DateTimeDigitized"), f.cameraDate);
    v.insert(QStringLiteral("UserComment"), f.comments);
    v.insert(QStringLiteral("Keywords"), f.keywords);
    v.insert(QStringLiteral("ObjectName"), f.title);
    v.insert(QStringLiteral("DateStamp"), f.gpsDate);
    v.insert(QStringLiteral("TimeStamp"), f.gpsTime);
    v.insert(QStringLiteral("Altitude"), f.gpsAltitude);
    if (!addCoordinate(v, f.gpsLatitude, QStringLiteral("Latitude"), QStringLiteral("N"), QStringLiteral("S"))
        || !addCoordinate(v, f.gpsLongitude, QStringLiteral("Longitude"), QStringLiteral("E"), QStringLiteral("W")))
        t.alert = Alerts::valueError();
    return t;
}

CommandResult exportTemplatePlist(const PhotoEditorTexts& fields, const CommandContext& context)
{
    CommandResult result;
    const TemplateDictionary t = templateDictionary(fields);
    if (t.alert) {
        result.alert = t.alert;
        return result;
    }
    writeExportPlist(t.values, QStringLiteral("templatefile.plist"), context, result);
    return result;
}

}  // namespace pelorin

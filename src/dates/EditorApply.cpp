#include "dates/EditorApply.h"

#include "dates/ApplyToSelection.h"
#include "dates/GpsGroup.h"
#include "model/DateText.h"
#include "photo/PhotoProperties.h"

namespace pelorin {
namespace {

const QString kExif = QStringLiteral("{Exif}");
const QString kTiff = QStringLiteral("{TIFF}");
const QString kIptc = QStringLiteral("{IPTC}");
const QString kGps = QStringLiteral("{GPS}");

void gpsEdits(const PhotoEditorTexts& f, EditorEdits& out)
{
    const QString latitude = f.gpsLatitude.trimmed();
    const QString longitude = f.gpsLongitude.trimmed();
    const QString altitude = f.gpsAltitude.trimmed();
    if (latitude.isEmpty() && longitude.isEmpty() && altitude.isEmpty() && f.gpsDate.trimmed().isEmpty()
        && f.gpsTime.trimmed().isEmpty()) {
        out.edits.removedGroups << kGps;
        return;
    }
    if (latitude.isEmpty() || longitude.isEmpty()) {
        out.alert = Alerts::valueError();
        return;
    }
    const GpsGroupResult built = buildGpsGroup(
        {latitude, longitude, altitude, f.gpsDate, f.gpsTime});
    if (built.alert) {
        out.alert = built.alert;
        return;
    }
    for (auto it = built.group.cbegin(); it != built.group.cend(); ++it)
        out.edits.set(kGps, it.key(), it.value());
    // Laid over the photo's group, so what the builder leaves out for an empty field goes.
    if (altitude.isEmpty()) {
        out.edits.remove(kGps, QStringLiteral("Altitude"));
        out.edits.remove(kGps, QStringLiteral("AltitudeRef"));
    }
    if (f.gpsDate.trimmed().isEmpty())
        out.edits.remove(kGps, QStringLiteral("DateStamp"));
    if (f.gpsTime.trimmed().isEmpty())
        out.edits.remove(kGps, QStringLiteral("TimeStamp"));
}

}  // namespace

EditorEdits editorEdits(const PhotoEditorTexts& f, const PhotoEditorTexts& old)
{
    EditorEdits out;
    GroupEdits& e = out.edits;
    auto text = [&](const QString PhotoEditorTexts::*field, const QString& group, const char* key) {
        if (f.*field == old.*field)
            return;
        const QString value = (f.*field).trimmed();
        if (value.isEmpty())
            e.remove(group, QString::fromLatin1(key));
        else
            e.set(group, QString::fromLatin1(key), value);
    };
    text(&PhotoEditorTexts::title, kIptc, "ObjectName");
    text(&PhotoEditorTexts::artist, kTiff, "Artist");
    text(&PhotoEditorTexts::imageDescription, kTiff, "ImageDescription");
    text(&PhotoEditorTexts::copyright, kTiff, "Copyright");
    text(&PhotoEditorTexts::comments, kExif, "UserComment");
    text(&PhotoEditorTexts::cameraMake, kTiff, "Make");
    text(&PhotoEditorTexts::cameraModel, kTiff, "Model");
    if (f.keywords != old.keywords) {
        const QVariantList keywords = keywordList(f.keywords);
        if (keywords.isEmpty())
            e.remove(kIptc, QStringLiteral("Keywords"));
        else
            e.set(kIptc, QStringLiteral("Keywords"), keywords);
    }
    if (f.cameraDate != old.cameraDate) {
        const QString date = f.cameraDate.trimmed();
        if (date.isEmpty()) {
            e.remove(kExif, QStringLiteral("DateTimeDigitized"));
        } else if (const auto clock = parseDateText(date)) {
            e.set(kExif, QStringLiteral("DateTimeDigitized"), renderDateText(*clock, DateTextForm::Exif));
        } else {
            out.alert = Alerts::invalidDateFormat();
            return out;
        }
    }
    if (f.gpsDate != old.gpsDate || f.gpsTime != old.gpsTime || f.gpsAltitude != old.gpsAltitude
        || f.gpsLatitude != old.gpsLatitude || f.gpsLongitude != old.gpsLongitude)
        gpsEdits(f, out);
    return out;
}

CommandResult applyPhotoEditorChanges(const PhotoEditorTexts& fields, const PhotoEditorTexts& old,
                                      const PhotoSelection& selection, const CommandContext& context)
{
    CommandResult result;
    if (selection.items.isEmpty()) {
        result.alert = Alerts::noSelection();
        return result;
    }
    const EditorEdits edits = editorEdits(fields, old);
    if (edits.alert) {
        result.alert = edits.alert;
        return result;
    }
    if (edits.edits.isEmpty())
        return result;
    const auto changesFor = [&edits](const QString& input, QString* reason) -> std::optional<PhotoChanges> {
        const PhotoProperties photo = readPhotoProperties(input);
        if (!photo.ok()) {
            *reason = photo.error;
            return std::nullopt;
        }
        return edits.edits.changesFor(photo.properties);
    };
    return applyToSelection(selection, changesFor, context);
}

}  // namespace pelorin

#include "dates/EditorApply.h"

#include "dates/ApplyToSelection.h"
#include "dates/GpsGroup.h"
#include "model/DateText.h"
#include "photo/PhotoProperties.h"

namespace pelorin {
namespace {

using FieldTexts = QMap<PhotoField, QString>;

bool blank(const FieldTexts& texts, PhotoField field)
{
    return texts.value(field).trimmed().isEmpty();
}

bool everyLocationFieldBlank(const FieldTexts& texts)
{
    for (const PhotoFieldRow& row : photoFieldRows())
        if (row.section == PhotoSection::Location && !blank(texts, row.field))
            return false;
    return true;
}

GpsInput gpsInput(const FieldTexts& texts)
{
    return {texts.value(PhotoField::GpsLatitude).trimmed(), texts.value(PhotoField::GpsLongitude).trimmed(),
            texts.value(PhotoField::GpsAltitude).trimmed(), texts.value(PhotoField::GpsDate),
            texts.value(PhotoField::GpsTime)};
}

// For a complete set of location texts: none when they give a location or remove it.
std::optional<Alert> locationAlert(const FieldTexts& texts)
{
    if (everyLocationFieldBlank(texts))
        return std::nullopt;
    if (blank(texts, PhotoField::GpsLatitude) || blank(texts, PhotoField::GpsLongitude))
        return Alerts::valueError();
    return buildGpsGroup(gpsInput(texts)).alert;
}

void addFieldEdit(const PhotoFieldRow& row, const QString& text, GroupEdits& edits)
{
    const QString group = QLatin1String(row.group);
    const QString key = QLatin1String(row.key);
    const QString value = text.trimmed();
    if (value.isEmpty()) {
        edits.remove(group, key);
        return;
    }
    if (row.value == PhotoValue::Keywords) {
        const QVariantList keywords = keywordList(text);
        if (keywords.isEmpty())
            edits.remove(group, key);
        else
            edits.set(group, key, keywords);
    } else if (row.value == PhotoValue::DateTime) {
        if (const auto clock = parseDateText(value))  // checked before any photo was read
            edits.set(group, key, renderDateText(*clock, DateTextForm::Exif));
    } else {
        edits.set(group, key, value);
    }
}

// The photo's own location texts with the changed ones laid over them, as one new GPS group.
bool addLocationEdits(const QVariantMap& properties, const PhotoFieldChanges& changes, GroupEdits& edits,
                      QString* reason)
{
    FieldTexts texts;
    for (const PhotoFieldRow& row : photoFieldRows())
        if (row.section == PhotoSection::Location)
            texts.insert(row.field, changes.fields.value(row.field, photoFieldText(properties, row.field)));
    if (everyLocationFieldBlank(texts)) {
        edits.removedGroups << locationGroup();
        return true;
    }
    if (blank(texts, PhotoField::GpsLatitude) || blank(texts, PhotoField::GpsLongitude)) {
        *reason = QStringLiteral("a location needs both a latitude and a longitude");
        return false;
    }
    const GpsGroupResult built = buildGpsGroup(gpsInput(texts));
    if (built.alert) {
        *reason = QStringLiteral("the location is not valid: %1").arg(built.alert->informativeText);
        return false;
    }
    for (auto it = built.group.cbegin(); it != built.group.cend(); ++it)
        edits.set(locationGroup(), it.key(), it.value());
    // Laid over the photo's group, so what the builder leaves out for an empty field goes.
    for (auto it = texts.cbegin(); it != texts.cend(); ++it) {
        const PhotoFieldRow& row = photoFieldRow(it.key());
        if (!it.value().trimmed().isEmpty())
            continue;
        edits.remove(locationGroup(), QLatin1String(row.key));
        if (row.refKey)
            edits.remove(locationGroup(), QLatin1String(row.refKey));
    }
    return true;
}

}  // namespace

std::optional<Alert> photoFieldChangesAlert(const PhotoFieldChanges& changes)
{
    const QString date = changes.fields.value(PhotoField::CameraDate).trimmed();
    if (!date.isEmpty() && !parseDateText(date))
        return Alerts::invalidDateFormat();
    if (changes.fields.contains(PhotoField::GpsLatitude) && changes.fields.contains(PhotoField::GpsLongitude)) {
        FieldTexts location;
        for (auto it = changes.fields.cbegin(); it != changes.fields.cend(); ++it)
            if (isLocationField(it.key()))
                location.insert(it.key(), it.value());
        return locationAlert(location);
    }
    return std::nullopt;
}

std::optional<GroupEdits> photoFieldEdits(const QVariantMap& properties, const PhotoFieldChanges& changes,
                                          QString* reason)
{
    GroupEdits edits;
    bool locationChanged = false;
    for (auto it = changes.fields.cbegin(); it != changes.fields.cend(); ++it) {
        if (photoFieldText(properties, it.key()) == it.value())
            continue;
        if (isLocationField(it.key()))
            locationChanged = true;
        else
            addFieldEdit(photoFieldRow(it.key()), it.value(), edits);
    }
    if (locationChanged && !addLocationEdits(properties, changes, edits, reason))
        return std::nullopt;
    return edits;
}

CommandResult applyPhotoFieldChanges(const PhotoSelection& selection, const PhotoFieldChanges& changes,
                                     const CommandContext& context)
{
    CommandResult result;
    if (selection.items.isEmpty()) {
        result.alert = Alerts::noSelection();
        return result;
    }
    if (const std::optional<Alert> alert = photoFieldChangesAlert(changes)) {
        result.alert = alert;
        return result;
    }
    if (changes.isEmpty())
        return result;
    const auto changesFor = [&changes](const QString& input, QString* reason) -> std::optional<PhotoChanges> {
        const PhotoProperties photo = readPhotoProperties(input);
        if (!photo.ok()) {
            *reason = photo.error;
            return std::nullopt;
        }
        const std::optional<GroupEdits> edits = photoFieldEdits(photo.properties, changes, reason);
        if (!edits || edits->isEmpty())
            return std::nullopt;  // with no reason when the photo already holds every change
        return edits->changesFor(photo.properties);
    };
    return applyToSelection(selection, changesFor, context);
}

}  // namespace pelorin

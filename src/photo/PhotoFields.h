#pragma once

#include "photo/PhotoEditorFields.h"

#include <QMap>
#include <QString>
#include <QVariantMap>

#include <optional>
#include <span>

namespace pelorin {

// The fields of the photo editor, which `apply` also takes as options.
enum class PhotoField {
    Title, Artist, Description, Copyright, Comments, Keywords,
    CameraMake, CameraModel, CameraDate,
    GpsLatitude, GpsLongitude, GpsAltitude, GpsDate, GpsTime,
};

// What a typed value must be before anything is written.
enum class PhotoValue { Text, Keywords, DateTime, Date, Time, Latitude, Longitude, Altitude };

// Which section of the editor shows a field. The location's fields are written together.
enum class PhotoSection { Description, Camera, Location };

// One field: how people and files name it. This table is the only place in the program that
// spells the property keys of the editor's fields; the fill, the apply, `apply`'s options and
// the editor's panel all look them up here.
struct PhotoFieldRow {
    PhotoField field;
    const char* option;      // `apply --title`
    const char* help;        // the option's help text
    const char* label;       // the editor's caption
    const char* editorName;  // the object name of the editor's line edit
    PhotoSection section;
    QString PhotoEditorTexts::*member;
    PhotoValue value;
    const char* group;  // the property group the field is read from and written to
    const char* key;
    const char* refKey;  // the key that holds the value's sign or hemisphere; null when none
    // Read instead when the photo has no camera make but has this group (cameras that name
    // only their lens).
    const char* fallbackGroup;
    const char* fallbackKey;
};

std::span<const PhotoFieldRow> photoFieldRows();
const PhotoFieldRow& photoFieldRow(PhotoField field);
// The field of an option name without its dashes ("camera-date").
std::optional<PhotoField> photoFieldOfOption(const QString& option);
bool isLocationField(PhotoField field);
// The property group of the location ("{GPS}").
QString locationGroup();

// The text the editor shows for a field of a photo with these properties; empty when the photo
// has no value. Coordinates and the altitude carry the sign of their reference.
QString photoFieldText(const QVariantMap& properties, PhotoField field);
// A coordinate or the altitude, signed by its reference; nullopt when the photo has none.
std::optional<double> photoFieldNumber(const QVariantMap& properties, PhotoField field);

// What to change in photos: each named field's new text. A blank text removes the value;
// emptying every location field removes the location. Fields not named stay as they are.
struct PhotoFieldChanges {
    QMap<PhotoField, QString> fields;

    bool isEmpty() const { return fields.isEmpty(); }
    bool namesLocation() const;
};

}  // namespace pelorin

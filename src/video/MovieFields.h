#pragma once

#include "model/IKImageItem.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace pelorin {

// The fields of a movie, in the order the editor shows them. Every field but the dates,
// the location and the artwork is a text.
enum class MovieField {
    Title, Album, Artist, Director, Performer, Producer,
    CreatedDate, RecordingDate, Publisher, Copyright, Keywords, Description,
    Location, Artwork,
    Make, Model, Composer,  // shown by `video show` only
};

// The part of the editor a field's lines go into.
enum class MovieEditorSection { None, Credits, DatesAndRights, Location };

// One value the user gives a field: an option of `video set` and a line of the editor.
struct MovieFieldInput {
    const char* option = nullptr;      // "--title"
    const char* valueName = nullptr;   // what the help calls the value: "TEXT", "DATE", ...
    const char* label = nullptr;       // the editor's caption; null when the editor has no line
    const char* editorName = nullptr;  // the object name of that line
};

struct MovieFieldRow {
    MovieField field;
    const char* name;  // "title": how plans and messages name the field
    MovieEditorSection section;
    QList<MovieFieldInput> inputs;        // the location has three: latitude, longitude, altitude
    QString IKImageItem::*member;         // the record's text of the field; null for the
                                          // location and the artwork
    QStringList identifiers;              // the items the field is read from
    QString newIdentifier;                // where a save puts it when the movie holds it nowhere
    QStringList containerTags;            // Matroska and WebM through FFmpeg: all are read
                                          // (letter case aside), the first is written
};

// Every field, in the order of MovieField.
const QList<MovieFieldRow>& movieFieldTable();
const MovieFieldRow& movieFieldRow(MovieField field);

// The field an item identifier ("itsk/%A9alb", "udta/%A9alb", "mdta/album", ...) fills, if any.
std::optional<MovieField> movieFieldOf(const QString& identifier);

// The field a container tag ("title", "DIRECTOR", ...) fills, if any.
std::optional<MovieField> movieFieldOfContainerTag(const QString& tag);

// True for the fields whose value is a plain text of the record.
bool isMovieTextField(MovieField field);

}  // namespace pelorin

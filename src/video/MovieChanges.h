#pragma once

#include "video/MovieFields.h"

#include <QString>

#include <map>
#include <optional>

namespace pelorin {

// A location as the user typed it: signed decimal degrees, and metres (may be empty).
struct MovieLocationText {
    QString latitude;
    QString longitude;
    QString altitude;

    friend bool operator==(const MovieLocationText&, const MovieLocationText&) = default;
};

// What a save changes in movies: text fields set to a new text or removed, and the dates, the
// location and the artwork, each only when given. Made by the editor from the lines the user
// changed, or by the command line from its options; nothing else of a movie changes.
struct MovieChanges {
    std::map<MovieField, std::optional<QString>> texts;  // nullopt removes the field
    std::optional<QString> recordingDate;  // either date form, local time
    std::optional<QString> createdDate;    // the copy's file dates only
    std::optional<MovieLocationText> location;
    std::optional<QString> artworkPath;    // a picture file

    // Takes the value of one input of a field (see MovieFieldRow::inputs); an empty text
    // removes a text field.
    void take(MovieField field, int input, const QString& value);

    bool isEmpty() const;
    // True when only the created date, or nothing, is given.
    bool onlyFileDates() const;

    friend bool operator==(const MovieChanges&, const MovieChanges&) = default;
};

}  // namespace pelorin

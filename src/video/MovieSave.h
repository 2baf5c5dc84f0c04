#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace pelorin {

// The text fields of the video editor that a save writes, each only when given.
struct MovieFieldEdits {
    std::optional<QString> title;
    std::optional<QString> albumArtist;  // saved as the album name, as the editor always did
    std::optional<QString> artist;
    std::optional<QString> director;
    std::optional<QString> performer;
    std::optional<QString> producer;
    std::optional<QString> publisher;
    std::optional<QString> copyright;
    std::optional<QString> keywords;
    std::optional<QString> description;
    std::optional<QString> shootDate;    // recording date text, either date form, local time
    std::optional<QString> createdDate;  // sets the copy's file dates only
    std::optional<QString> latitude;     // signed decimal degrees; with longitude
    std::optional<QString> longitude;
    std::optional<QString> altitude;     // meters, optional
    std::optional<QString> artworkPath;  // a picture file

    bool isEmpty() const;
};

// Writes, for each movie, a copy under its own name into the storage folder with the given
// fields set and every other item, box and media byte kept; the copy gets the movie's file
// dates, or the created date when one is given. A recording date and a location go into every
// place players and libraries read them. An invalid date or location raises the alert and
// writes nothing; movies that cannot be rewritten are skipped with the reason.
CommandResult saveMovieFields(const QStringList& files, const MovieFieldEdits& edits, const CommandContext& context);

}  // namespace pelorin

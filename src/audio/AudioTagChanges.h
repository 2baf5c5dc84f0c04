#pragma once
#include "audio/AudioFields.h"
#include "model/CommandContext.h"
#include "model/CommandResult.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

namespace pelorin {

// What to change in songs: each named field's new text (an empty text removes the field), a new
// front cover and the created date the copies take. Fields not named stay as they are, and so
// does every frame, atom, chunk and picture no field names.
struct AudioTagChanges {
    QMap<AudioField, QString> fields;
    QString artworkPath;                // a picture file; empty keeps the pictures
    std::optional<QString> createdDate; // a date text the copies take as their file dates

    bool isEmpty() const { return fields.isEmpty() && artworkPath.isEmpty() && !createdDate; }
};

// The track text a writer stores when the user typed `typed` over the stored `stored`: a bare
// number keeps the stored total ("3/12" edited to "7" stores "7/12"); a typed total wins.
QString trackTextKeepingTotal(const QString& stored, const QString& typed);

// Writes, for each song, a copy under its own name and container into the storage folder with
// the changes applied. Each song is read once: its stored texts tell which fields really change
// (for the plan of a dry run, and so that a text already stored is not written again). Progress
// is reported per song, the batch stops when cancelled and the storage folder is flushed once
// after the last song. An artwork file that is no picture skips every song.
CommandResult saveAudioTags(const QStringList& files, const AudioTagChanges& changes, const CommandContext& context);

// Writes copies without any tag or picture; the audio bytes are unchanged.
CommandResult removeAudioTags(const QStringList& files, const CommandContext& context);

}  // namespace pelorin

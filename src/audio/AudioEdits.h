#pragma once
#include "model/CommandContext.h"
#include "model/CommandResult.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace pelorin {

// The audio editor's text fields. The album-artist field carries the track number, and every
// writer stores it as the container's track number.
enum class AudioField {
    Title, Subtitle, Album, Artist, TrackNumber, Composer,                 // first group
    RecordDate, Year, Copyright, Publisher, Band, Comments, Lyrics,        // second group
};
QList<AudioField> allAudioFields();
bool isFirstGroupField(AudioField field);
QString audioFieldName(AudioField field);  // "title", "track number", ...

// One item's edits: each field's text as the editor opened it and as it is now, the group
// flags, new artwork and the created-date text.
struct AudioEdit {
    QString sourcePath;
    QMap<AudioField, QString> opening;
    QMap<AudioField, QString> current;
    bool basicInfoChange = false;   // a field of the first group was edited
    bool cameraInfoChange = false;  // a field of the second group was edited
    QByteArray artwork;             // new picture bytes; empty to keep the pictures as they are
    QString openingCreatedDate;
    QString createdDate;            // a date text gives the output that creation date
};

struct AudioFieldChange {
    AudioField field;
    QString before;
    QString after;  // empty: the field is removed
};
// The fields a writer changes: text differs from the opening text and the group flag is set.
QList<AudioFieldChange> changedAudioFields(const AudioEdit& edit);

// The track text a writer stores when the user typed `typed` over the stored `stored`: a bare
// number keeps the stored total ("3/12" edited to "7" stores "7/12"); a typed total wins.
QString trackTextKeepingTotal(const QString& stored, const QString& typed);

// Writes the edited copy of edit.sourcePath into the storage folder under the same name and
// container; every frame, atom, chunk and picture not edited is kept.
CommandResult saveAudioEdits(const AudioEdit& edit, const CommandContext& context);
// Writes a copy without any tag or picture; the audio bytes are unchanged.
CommandResult removeAudioTags(const QString& sourcePath, const CommandContext& context);

// The same over many songs as one batch: progress is reported per song, the batch stops when
// cancelled, and the storage folder is flushed to disk once after the last song rather than once
// per song.
CommandResult saveAudioEdits(const QList<AudioEdit>& edits, const CommandContext& context);
CommandResult removeAudioTags(const QStringList& sourcePaths, const CommandContext& context);

}  // namespace pelorin

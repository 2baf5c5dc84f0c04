#pragma once
#include "audio/AudioContainer.h"
#include "model/IKImageItem.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>
#include <span>

namespace pelorin {

// The tag fields of a song. The record keeps the track number in its album-artist slot, and
// every writer stores it as the container's track number.
enum class AudioField {
    Title, Subtitle, Album, Artist, TrackNumber, Composer,
    RecordDate, Year, Copyright, Publisher, Band, Comments, Lyrics,
};

// What a typed value must be before anything is written.
enum class AudioValue { Text, TrackNumber, Year, RecordDate };

// Which section of the editor shows a field.
enum class AudioSection { Track, Release };

// One field: how people and files name it. This table is the only place in the program that
// spells a song's tag keys; readers, writers, the editor, the command line and the exports all
// look them up here. A null key means the container has no place for the field.
struct AudioFieldRow {
    AudioField field;
    const char* name;        // "title": `tags show`, plan lines
    const char* option;      // "--title"
    const char* label;       // the editor's caption
    const char* editorName;  // the editor's widget for it goes by this object name
    AudioSection section;
    const char* exportKey;   // its key in an exported "metadata.plist"
    QString IKImageItem::*member;
    AudioValue value;
    const char* id3;     // ID3v2 frame (MP3, and the ID3 chunk of WAV and AIFF)
    const char* riff;    // RIFF INFO id (WAV)
    const char* aiff;    // AIFF text chunk
    const char* xiph;    // Vorbis comment name; TagLib's property name for APE, ASF and others
    const char* mp4;     // iTunes atom (M4A)
    const char* ffmpeg;  // QuickTime key of an M4A that FFmpeg wrote with its own key list
    const char* info;    // the info dictionary's key; CAF files store the field under it
};

std::span<const AudioFieldRow> audioFieldRows();
const AudioFieldRow& audioFieldRow(AudioField field);
QString audioFieldName(AudioField field);  // "title", "track number", ...
std::optional<AudioField> audioFieldOfOption(const QString& option);

// Where a song keeps its front cover.
struct AudioArtworkKeys {
    const char* id3;     // the attached-picture frame
    const char* mp4;     // the cover atom
    const char* ffmpeg;  // the QuickTime key
    const char* info;    // the info dictionary's picture
};
const AudioArtworkKeys& audioArtworkKeys();

// Keys with a fixed role beside the fields.
const char* id3CommentFrame();                 // the comment frame; one with an "iTun..." description is iTunes' own
QList<QByteArray> id3OlderDateFrames();        // the v2.3 date frames a year edit replaces
QList<QByteArray> xiphTrackTotalNames();       // Vorbis fields that keep the track total on their own
const char* xiphTrackTotalName();              // the one a typed total goes to
QList<QByteArray> aiffTagChunks();             // every text and ID3 chunk a removal drops

// The info dictionary's key for a container key, empty when it has none. Besides the fields'
// own keys, genre, tempo and a few others are shown under their info names.
QString infoKeyOfId3Frame(const QByteArray& frame);
QString infoKeyOfXiphName(const QString& name);
QString infoKeyOfRiffId(const QByteArray& id);
QString infoKeyOfAiffChunk(const QByteArray& chunk);

// What an item fills in the record of a song, found by its identifier ("id3/TIT2",
// "caaf/info-title", ...) through the table of the file's reader; items of the info
// dictionary go through the info table whichever the reader.
struct AudioRecordRole {
    enum Kind { None, Field, Picture, Location, Description } kind = None;
    AudioField field = AudioField::Title;  // for Field
};
AudioRecordRole audioRecordRole(const QString& identifier, bool infoSpace, AudioReaderRoute route);

}  // namespace pelorin

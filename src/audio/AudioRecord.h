#pragma once
#include "audio/AudioItems.h"
#include "model/IKImageItem.h"

namespace pelorin {

// The record of one audio file: file attributes, index attributes and the container items
// through the identifier table of the file's reader (by extension: the WAV reader for wav, flac
// and au, the AIFF reader for aif and aiff, the MP3 reader for the rest). Info-dictionary items
// fill the record through the info-key table whichever reader runs, so that Ogg and the other
// TagLib kinds show their tags too. A record is made for every file, readable or not; problem
// (when given) receives the reason a file's tags could not be read.
// With RecordPicture::Skipped the artwork is not decoded into the record's image: for readers
// of the texts, to whom a full-size cover would cost more than the rest of the song.
enum class RecordPicture { Decoded, Skipped };
IKImageItem readAudioRecord(const QString& path, QString* problem = nullptr,
                            AudioReading* readingOut = nullptr, RecordPicture picture = RecordPicture::Decoded);

// Applies the identifier tables to items (exposed for tests of the table rules).
void applyAudioItems(const MediaMetadataItems& items, AudioReaderRoute route, IKImageItem& record,
                     RecordPicture picture = RecordPicture::Decoded);

// The bytes of the picture the record shows (the last picture item its table takes), empty when
// there is none.
QByteArray audioArtworkBytes(const MediaMetadataItems& items, AudioReaderRoute route);

// The date rule of the container date items: fills shootDateStr and, when it parses, shootDate.
void applyRecordingDateText(const QString& text, IKImageItem& record);
// The ISO 6709 rule, with the record's crosswise pairing of signs and values.
void applyLocationText(const QString& text, IKImageItem& record);

}  // namespace pelorin

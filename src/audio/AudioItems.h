#pragma once
#include "audio/AudioContainer.h"
#include "model/MediaMetadataItem.h"

#include <QString>
#include <QVariantMap>

namespace pelorin {

// What the audio reader finds in one file. Items come in file order where the container keeps
// one (ID3v2 frames, AIFF chunks, CAF entries, Xiph comments); TagLib hands MP4 atoms and RIFF
// INFO fields sorted by name. Key spaces:
//   "id3"   ID3v2 frames, identifier "id3/TALB"; TDRC read from a v2.3 tag is its TYER frame
//   "itsk"  MP4 ilst atoms, "itsk/%A9alb" (bytes outside printable ASCII as %XX)
//   "caaf"  AIFF text chunks and CAF info entries, "caaf/info-title", "caaf/info-track%20number"
//   "info"  the info dictionary of WAV, FLAC, Ogg and the other TagLib kinds: the identifier
//           is the bare key ("title", "track number", ...); the picture is "aart"
//   "riff", "vorbis", "tag"  fields with no info key, kept for display ("vorbis/REPLAYGAIN...")
// Pictures carry their bytes as the value and their MIME type as the data type.
struct AudioReading {
    AudioContainer container = AudioContainer::Unknown;
    MediaMetadataItems items;
    // "kMDItemDurationSeconds", "kMDItemKind", "kMDItemAudioBitRate" (bits per second),
    // "kMDItemAudioSampleRate", "kMDItemAudioChannelCount".
    QVariantMap indexAttributes;
    int id3Version = 0;  // of the file's ID3v2 tag, 0 when it has none
    bool mp4QuickTimeKeys = false;  // an M4A keeps its tags as QuickTime keys, not as iTunes atoms
    QString problem;     // why the file's tags or audio could not be read; empty when fine
};

// Never throws; an unreadable file gives a reading with a problem.
AudioReading readAudioItems(const QString& path);

// "%XX" for each byte outside printable ASCII, as the identifiers spell keys.
QString percentEncodeKey(const QByteArray& key);

}  // namespace pelorin

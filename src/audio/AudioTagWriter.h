#pragma once
#include "audio/AudioFields.h"
#include "model/SafeOutput.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>

namespace pelorin {

// One field a writer sets: the text the song stores now and the one it gets (empty removes).
struct AudioFieldChange {
    AudioField field;
    QString before;
    QString after;
};

// What a writer does to one song.
struct AudioTagEdit {
    QList<AudioFieldChange> changes;
    QByteArray artwork;      // a new front cover; empty keeps the pictures
    bool removeAll = false;  // drop every tag and picture instead
    int id3Version = 0;      // of the song's ID3v2 tag, 0 when it has none
};

// Writes a song's copy with an edit applied, in the song's own container. Every frame, atom,
// chunk and picture the edit does not name is kept; the check looks at the finished copy
// before it takes the target's name, and nothing is left at the target when any step fails.
class AudioTagWriter {
public:
    virtual ~AudioTagWriter() = default;
    virtual bool write(const QString& source, const QString& target, const AudioTagEdit& edit,
                       const OutputCheck& check, Durability durability, QString* problem) const = 0;
};

// The writer of a container; mp4QuickTimeKeys tells an M4A that keeps its tags as QuickTime
// keys (FFmpeg's use_metadata_tags) from one with an iTunes list. Null for Unknown.
std::unique_ptr<AudioTagWriter> audioTagWriterFor(AudioContainer container, bool mp4QuickTimeKeys);

// The picture's MIME type judged by its bytes.
QString artworkMimeType(const QByteArray& image);

}  // namespace pelorin

#pragma once

#include "audio/AudioTagWriter.h"
#include "isobmff/BoxRewrite.h"
#include "model/MediaMetadataItem.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace pelorin {

// True when an MP4 file keeps its tags as QuickTime keys in its user data (FFmpeg's
// use_metadata_tags) instead of an iTunes list. TagLib takes such a list for iTunes atoms and
// drops every entry it cannot name on saving, so these files are written through the box
// writer instead.
bool mp4KeepsQuickTimeKeys(const QString& path);

// Those keys as items ("mdta/title", ...) in file order: texts, and pictures as their bytes.
MediaMetadataItems readMp4KeyTags(const QString& path);

// Writes target as the source with the changed fields set (an empty text removes) under the
// key names FFmpeg uses, and the artwork as Apple's artwork key; every other key, box and
// audio byte stays. removeAll clears every key of the movie instead.
bool writeMp4KeyTags(const QString& source, const QString& target, const QList<AudioFieldChange>& changes,
                     const QByteArray& artwork, bool removeAll, QString* problem,
                     const OutputCheck& check = {}, Durability durability = Durability::FlushEach);

}  // namespace pelorin

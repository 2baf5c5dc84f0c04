#pragma once

#include "isobmff/BoxNode.h"
#include "model/MediaMetadataItem.h"
#include "model/WallClock.h"
#include "video/MovieItemChanges.h"

#include <QDateTime>

namespace pelorin {

// A recording date typed or found as a wall-clock reading, with the offset of the local zone
// (TZ) in force then. A reading that the clocks skipped (the hour lost when they go forward)
// keeps its wall clock and takes the offset in force after the gap; a repeated hour takes the
// first of its two offsets. Invalid only for an invalid reading.
QDateTime movieDateFromWallClock(const WallClock& clock);

// The item changes that give a movie its recording date everywhere players and libraries look:
// "uiso/date" (the date text as given, "yyyy:MM:dd HH:mm:ss"), and the QuickTime creation
// date in ISO 8601 with the date's own offset. Date items the movie already holds in other
// forms (FFmpeg's creation_time and date keys, the user-data and iTunes dates; listed in
// present) take the same ISO text, so no stale date is left beside the new one; "udta/date" is
// dropped. Nothing for an invalid date.
QList<ItemChange> recordingDateChanges(const QDateTime& when, const MediaMetadataItems& present = {});

// Sets the creation time of the movie header and of every track and media header (UTC).
bool setHeaderCreationTimes(BoxNode& moov, const QDateTime& instant, QString* error);

// Sets those creation times to zero, the headers' "no date".
bool clearHeaderCreationTimes(BoxNode& moov, QString* error);

// Writes target as the source with the recording date set in the items and the headers.
RewriteReport writeMovieRecordingDate(const QString& sourcePath, const QDateTime& when, const QString& targetPath,
                                      Durability durability = Durability::FlushEach);

}  // namespace pelorin

#pragma once

#include "isobmff/BoxNode.h"
#include "video/MovieItemChanges.h"

#include <QDateTime>

namespace pelorin {

// The item changes that give a movie its recording date everywhere players and libraries look:
// "uiso/date" (the date text as given, "yyyy:MM:dd HH:mm:ss"), and the QuickTime creation
// date in ISO 8601 with the local zone offset. Other date items ("udta/date") are dropped.
QList<ItemChange> recordingDateChanges(const QDateTime& local);

// Sets the creation time of the movie header and of every track and media header (UTC).
bool setHeaderCreationTimes(BoxNode& moov, const QDateTime& instant, QString* error);

// Writes target as the source with the recording date set in the items and the headers.
RewriteReport writeMovieRecordingDate(const QString& sourcePath, const QDateTime& local, const QString& targetPath);

}  // namespace pelorin

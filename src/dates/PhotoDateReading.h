#pragma once

#include "model/FileDates.h"
#include "model/WallClock.h"

#include <QDateTime>
#include <QString>
#include <QVariantMap>

#include <cstdint>
#include <optional>

namespace pelorin {

// The two capture dates of a photo as the date dialogs show them, in EXIF form.
struct PhotoDateTexts {
    QString original;
    QString digitized;
    bool fromFile = false;  // the photo has neither EXIF date; these are its file dates
};

// The EXIF original and digitized dates; a missing one takes the other's text, and when both
// are missing the file's creation date (its modification date where the file system keeps no
// birth time) and modification date stand in, read on the local clock.
PhotoDateTexts photoDateTexts(const QVariantMap& properties, const QString& path);
PhotoDateTexts readPhotoDateTexts(const QString& path);

// A file date as the local clock showed it, in EXIF form; empty for an invalid date.
QString localDateText(const QDateTime& instant);

// The creation date, or the modification date where the file system keeps no birth time.
QDateTime creationOrModification(const FileDateReading& dates);

// Moves a file date by the given seconds on the local clock, so that its time of day stays put
// across a daylight-saving change, as the metadata dates it goes with do. Invalid when the
// date is invalid or the result leaves years 1 to 9999.
QDateTime shiftFileDate(const QDateTime& instant, std::int64_t seconds);

// A date text taken as local time, the way a metadata date becomes a file date; invalid when
// the text is no date.
QDateTime fileDateFromText(const QString& text);

}  // namespace pelorin

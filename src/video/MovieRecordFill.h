#pragma once

#include "model/IKImageItem.h"
#include "model/MediaMetadataItem.h"

#include <QString>

namespace pelorin {

// Fills the record's fields from an MP4-family movie's items through the field table, in the
// items' order: a later item for the same field wins, except that a lesser date never hides a
// better one. Items of other identifiers are left alone.
void applyMovieItems(IKImageItem& item, const MediaMetadataItems& items);

// The same from the tags FFmpeg reads from other containers ("title", "ARTIST", ...).
void applyContainerTags(IKImageItem& item, const MediaMetadataItems& tags);

// An ISO 6709 text ("+37.3317-122.0307+020.000/") into the record's signs and magnitudes.
void applyIso6709Location(IKImageItem& item, const QString& text);

// A date text ("2019-05-06T07:08:09+0800", "2016:05:01 12:30:45", ...) into shootDateStr and
// shootDate, with the fallbacks for texts that neither date form takes.
void applyMovieDateText(IKImageItem& item, const QString& text);

}  // namespace pelorin

#pragma once

#include "model/IKImageItem.h"
#include "model/MediaMetadataItem.h"

#include <QString>

#include <optional>

namespace pelorin {

// The record fields a movie's items fill.
enum class MovieField {
    Album, Artist, Artwork, Title, Location, Make, Model, Publisher, Copyright, Keywords,
    Description, Director, Performer, Producer, ReleaseYear, Date
};

// The field an identifier ("itsk/%A9nam", "udta/%A9nam", "mdta/title", ...) fills, if any.
std::optional<MovieField> movieFieldOf(const QString& identifier);

// Fills the record's fields from the items through the identifier table, in the items' order:
// a later item for the same field wins, except that a lesser date never hides a better one.
// Items of other identifiers are left alone.
void applyMovieItems(IKImageItem& item, const MediaMetadataItems& items);

// An ISO 6709 text ("+37.3317-122.0307+020.000/") into the record's signs and magnitudes.
void applyIso6709Location(IKImageItem& item, const QString& text);

// A date text ("2019-05-06T07:08:09+0800", "2016:05:01 12:30:45", ...) into shootDateStr and
// shootDate, with the fallbacks for texts that neither date form takes.
void applyMovieDateText(IKImageItem& item, const QString& text);

}  // namespace pelorin

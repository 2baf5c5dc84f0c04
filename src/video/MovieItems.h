#pragma once

#include "isobmff/BoxTree.h"
#include "model/MediaMetadataItem.h"

#include <QDateTime>
#include <QStringList>

#include <optional>

namespace pelorin {

// The metadata items of an MP4-family movie in file order: QuickTime metadata keys
// ("mdta/<key>"), user-data atoms ("udta/%A9alb"), ISO and 3GPP user-data boxes ("uiso/loci"),
// and iTunes atoms ("itsk/%A9alb"). Items that cannot be decoded are skipped with a problem.
MediaMetadataItems readMovieItems(ByteSource& source, const BoxTree& tree, QStringList* problems);

// Seconds from 1904-01-01, where the movie headers' clock starts, to 1970-01-01 (UTC).
inline constexpr std::int64_t kMovieClockEpochOffset = 2082844800;

// The items of a movie file read the same way; empty when it is no MP4-family file.
MediaMetadataItems readMovieItemsOfFile(const QString& path);

// The text of the last item with that identifier, or empty.
QString lastItemText(const MediaMetadataItems& items, const QString& identifier);

// The creation time of the movie header, when it is set.
std::optional<QDateTime> movieHeaderCreationTime(ByteSource& source, const BoxTree& tree);

// The ISO 6709 text of a location ("+37.3317-122.0307+020.000/", "+37.3317-122.0307/").
QString iso6709Text(double latitude, double longitude, std::optional<double> altitude);

}  // namespace pelorin

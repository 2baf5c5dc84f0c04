#pragma once

#include "isobmff/BoxTree.h"
#include "model/MediaMetadataItem.h"

#include <QStringList>

#include <optional>

namespace pelorin {

// The metadata items of an MP4-family movie in file order: QuickTime metadata keys
// ("mdta/<key>"), user-data atoms ("udta/%A9nam"), ISO and 3GPP user-data boxes ("uiso/loci"),
// and iTunes atoms ("itsk/%A9nam"). Items that cannot be decoded are skipped with a problem.
MediaMetadataItems readMovieItems(ByteSource& source, const BoxTree& tree, QStringList* problems);

// The ISO 6709 text of a location ("+37.3317-122.0307+020.000/", "+37.3317-122.0307/").
QString iso6709Text(double latitude, double longitude, std::optional<double> altitude);

}  // namespace pelorin

#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/MediaMetadataItem.h"
#include "video/MovieItemChanges.h"

#include <QStringList>

namespace pelorin {

// The removals that clear a movie of its descriptive items: titles, people, texts, dates,
// artwork and every form of location, whatever the hemisphere. Technical items (encoder,
// camera make and model, software, camera and live-photo data) stay.
QList<ItemChange> descriptiveItemRemovals(const MediaMetadataItems& items);

// Writes, for each movie, a copy under its own name into the storage folder without its
// descriptive items and with the headers' creation times cleared (other readers show them as
// the recording date); streams and technical data are kept, and so are the movie's file dates.
CommandResult removeMovieMetadata(const QStringList& files, const CommandContext& context);

}  // namespace pelorin

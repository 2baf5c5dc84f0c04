#pragma once
#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/IKImageItem.h"

#include <QStringList>
#include <QVariantMap>

namespace pelorin {

// Writes each file's artwork to "<storage>/<file name>.jpg" (the full name, extension included)
// as JPEG: the picture's own bytes when they are JPEG, else the picture re-encoded. Files
// without a picture are passed over with that reason.
CommandResult exportAudioArtwork(const QStringList& paths, const CommandContext& context);

// The "metadata.plist" entries of one audio record ("Title", "Track Number", ...); only set
// values appear.
QVariantMap audioMetadataEntries(const IKImageItem& record);

// Writes "<storage>/metadata.plist": one dictionary per file name (a later file with the same
// name replaces an earlier one) holding its entries; files without entries are left out.
CommandResult exportAudioMetadata(const QStringList& paths, const CommandContext& context);

}  // namespace pelorin

#pragma once

#include "isobmff/BoxRewrite.h"

#include <QList>
#include <QString>

#include <optional>
#include <utility>

namespace pelorin {

// A change to a container tag as FFmpeg names it ("title", "ARTIST", ...): a value, or nullopt
// to remove it (letter case ignored).
using ContainerTagChange = std::pair<QString, std::optional<QString>>;

// True for containers whose FFmpeg muxer keeps the tags of a stream-copy remux (Matroska, WebM).
bool canRemuxWithTags(const QString& path);

// Writes target as a stream copy of the source in the same container, with the global tags
// changed; every packet, stream, chapter and attachment is carried over unchanged.
// removeOthers drops every global tag but the encoder's before the changes are applied.
RewriteReport remuxWithTags(const QString& sourcePath, const QList<ContainerTagChange>& changes,
                            const QString& targetPath, bool removeOthers = false,
                            Durability durability = Durability::FlushEach);

}  // namespace pelorin

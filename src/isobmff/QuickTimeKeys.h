#pragma once

#include "isobmff/BoxNode.h"

#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

namespace pelorin {

// QuickTime metadata keys: a 'meta' box with an 'mdta' handler whose 'keys' table names the
// entries of its 'ilst' by one-based index. Apple puts the box into the movie box; FFmpeg's
// use_metadata_tags into the movie's user data, where other files keep the iTunes list.

// A 'meta' handler box of the given kind ("mdta", "mdir").
BoxNode metadataHandler(const char* kind);

// A 'data' box for a value: text, picture bytes ("JPEG", "PNG" as dataType), integer or real.
BoxNode metadataDataBox(const QVariant& value, const QString& dataType);

bool holdsQuickTimeKeys(const BoxNode* meta);

// Sets or (value nullopt) removes a key of the movie box in memory. A key is changed where the
// movie keeps it, so that it stays in one place; see the definition. False with the reason
// for a damaged key table.
bool changeQuickTimeKey(BoxNode& moov, const QString& key, const std::optional<QVariant>& value,
                        const QString& dataType, QString* error);

// The names of a 'keys' payload in table order; damaged tells of a table that stops short.
QStringList quickTimeKeyNamesOf(const QByteArray& keysPayload, bool* damaged = nullptr);

// The keys the movie itself names (tracks aside), in table order.
QStringList quickTimeKeyNames(BoxNode& moov);

}  // namespace pelorin

#pragma once

#include "isobmff/BoxNode.h"
#include "isobmff/BoxRewrite.h"

#include <QList>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>

namespace pelorin {

// One change to the items of a movie: a new value for an identifier ("itsk/%A9alb",
// "mdta/com.apple.quicktime.director", "udta/%A9day", "uiso/loci", ...), or its removal.
struct ItemChange {
    QString identifier;
    std::optional<QVariant> value;  // nullopt removes every item of the identifier
    QString dataType;               // "JPEG", "PNG" for pictures; empty for text and numbers

    static ItemChange set(const QString& identifier, const QVariant& value, const QString& dataType = {})
    {
        return {identifier, value, dataType};
    }
    static ItemChange remove(const QString& identifier) { return {identifier, std::nullopt, {}}; }
};

// Applies the changes to a movie box in memory: items of other identifiers and every other box
// stay as they are. False with the reason for an identifier that cannot be written.
bool applyItemChanges(BoxNode& moov, const QList<ItemChange>& changes, QString* error);

// True when the file is of the MP4 family (MP4, MOV, M4V, 3GP, ...), which the box writer handles.
bool isIsoMediaFile(const QString& path);

// A further edit of the movie box beyond its items (header times, say); false with the reason.
using MovieBoxEdit = std::function<bool(BoxNode& moov, QString* error)>;

// What becomes of XMP kept in a file-level 'uuid' box, outside the movie box.
enum class FileLevelXmp { Keep, Blank };

// Writes target as the source movie with the changes applied; every media byte is kept. A
// blanked XMP box turns into a 'free' box of the same size, so nothing after it moves.
RewriteReport writeMovieChanges(const QString& sourcePath, const QList<ItemChange>& changes,
                                const QString& targetPath, Durability durability = Durability::FlushEach,
                                const MovieBoxEdit& extra = {}, FileLevelXmp xmp = FileLevelXmp::Keep);

}  // namespace pelorin

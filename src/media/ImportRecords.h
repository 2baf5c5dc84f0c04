#pragma once
#include "model/IKImageItem.h"

#include <QStringList>
#include <atomic>
#include <optional>

namespace pelorin {

// Which files an import takes.
enum class ImportScope {
    PhotosAndMovies,  // the photo browser's imports and drops
    AllMedia,         // the add command and the media table's drop: photos, audio and movies
};

bool importTakes(ImportScope scope, const QString& path);

// The files an import covers: each path in order, folders replaced by the files beneath them
// (sorted by name, sub-folders descended), only the kinds the scope takes. Stops early when
// cancelled becomes true.
QStringList expandImportPaths(const QStringList& paths, ImportScope scope, const std::atomic_bool* cancelled);

// The record of one file: a photo gets its name, path, kind and size (its metadata is read when
// it is selected); audio and movies are read through their readers. Nothing for other kinds.
std::optional<IKImageItem> readImportRecord(const QString& path);

}  // namespace pelorin

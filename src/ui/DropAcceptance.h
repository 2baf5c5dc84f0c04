#pragma once
#include <QList>
#include <QStringList>
#include <QUrl>

class QMimeData;

namespace pelorin {

// The views that take dropped files, and what each accepts.
enum class DropTarget {
    PhotoBrowser,  // photos and movies
    MediaTable,    // audio and movies
    ArtworkWell,   // pictures (and movies, whose frame can serve as artwork)
};

// Whether a drag over the target is taken: decided on the first file's extension while it hovers,
// so a mixed drag whose first file fits is accepted and the handler filters the rest.
bool acceptsDrop(DropTarget target, const QList<QUrl>& urls);
bool acceptsDrop(DropTarget target, const QMimeData* mime);

// The local file paths of a drop, in the order they were dragged.
QStringList droppedFilePaths(const QMimeData* mime);

}  // namespace pelorin

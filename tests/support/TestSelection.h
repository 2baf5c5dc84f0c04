#pragma once
// A selection of photos as the commands receive it, from test files.
#include "model/PhotoSelection.h"

#include <QFileInfo>
#include <QStringList>

namespace pelorin::test {

inline PhotoSelection selectionOf(const QStringList& paths, PhotoSource source = PhotoSource::Computer)
{
    PhotoSelection selection;
    selection.source = source;
    for (const QString& path : paths) {
        IKImageItem item;
        item.filePath = path;
        item.fileName = QFileInfo(path).fileName();
        selection.items << item;
    }
    return selection;
}

}  // namespace pelorin::test

#include "ui/DropAcceptance.h"

#include "model/FileKinds.h"

#include <QMimeData>

namespace pelorin {

bool acceptsDrop(DropTarget target, const QList<QUrl>& urls)
{
    if (urls.isEmpty() || !urls.first().isLocalFile())
        return false;
    const QString extension = pathExtension(urls.first().toLocalFile());
    switch (target) {
    case DropTarget::PhotoBrowser:
    case DropTarget::ArtworkWell:
        return isImageExtension(extension) || isVideoExtension(extension);
    case DropTarget::MediaTable:
        return isAudioExtension(extension) || isVideoExtension(extension);
    }
    return false;
}

bool acceptsDrop(DropTarget target, const QMimeData* mime)
{
    return mime && mime->hasUrls() && acceptsDrop(target, mime->urls());
}

QStringList droppedFilePaths(const QMimeData* mime)
{
    QStringList paths;
    if (!mime || !mime->hasUrls())
        return paths;
    for (const QUrl& url : mime->urls()) {
        if (url.isLocalFile())
            paths.append(url.toLocalFile());
    }
    return paths;
}

}  // namespace pelorin

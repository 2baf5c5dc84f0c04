#include "app/ThumbnailLoader.h"

#include "model/FileKinds.h"
#include "ui/ThumbnailCells.h"
#include "video/MoviePoster.h"

#include <QMetaObject>
#include <QPointer>

namespace pelorin {

namespace {
// Enough thumbnails of 170 px for a few screens of photos; older ones are decoded again.
constexpr int kKeptThumbnails = 3000;

}

ThumbnailLoader::ThumbnailLoader(int side, QObject* parent) : QObject(parent), side_(side)
{
    // Two decoders keep the browser filling quickly without starving the import readers.
    pool_.setMaxThreadCount(2);
}

ThumbnailLoader::~ThumbnailLoader()
{
    pool_.clear();
    pool_.waitForDone();
}

QImage ThumbnailLoader::thumbnail(const QString& path)
{
    auto found = ready_.constFind(path);
    if (found != ready_.constEnd())
        return *found;
    if (pending_.contains(path) || failed_.contains(path))
        return {};
    pending_.insert(path);
    QPointer<ThumbnailLoader> self(this);
    const quint64 generation = generation_;
    const int side = side_;
    pool_.start([self, path, side, generation] {
        const QString extension = pathExtension(path);
        QImage image;
        if (isImageExtension(extension))
            image = squareThumbnail(makePhotoThumbnail(path, side), side);
        else if (isVideoExtension(extension))
            image = squareThumbnail(moviePosterFrame(path, side), side);
        if (!self)
            return;
        QMetaObject::invokeMethod(
            self.data(),
            [self, path, image, generation] {
                if (self && self->generation_ == generation)
                    self->deliver(path, image);
            },
            Qt::QueuedConnection);
    });
    return {};
}

void ThumbnailLoader::deliver(const QString& path, const QImage& image)
{
    pending_.remove(path);
    if (image.isNull()) {
        failed_.insert(path);
    } else {
        if (ready_.size() >= kKeptThumbnails)
            ready_.clear();
        ready_.insert(path, image);
    }
    emit thumbnailReady(path);
}

void ThumbnailLoader::clear()
{
    ++generation_;
    pool_.clear();
    ready_.clear();
    pending_.clear();
    failed_.clear();
}

void ThumbnailLoader::waitForIdle()
{
    pool_.waitForDone();
}

}  // namespace pelorin

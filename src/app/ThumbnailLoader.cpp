#include "app/ThumbnailLoader.h"

#include "app/BackgroundThreads.h"

#include "model/FileKinds.h"
#include "ui/ThumbnailCells.h"
#include "video/MoviePoster.h"

#include <QMetaObject>

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
    const quint64 generation = generation_;
    const int side = side_;
    // The pool is emptied and waited for before the loader goes, so its tasks may use it.
    pool_.start([this, path, side, generation] {
        yieldCoresToWindow();
        const QString extension = pathExtension(path);
        QImage image;
        if (isImageExtension(extension))
            image = squareThumbnail(makePhotoThumbnail(path, side), side);
        else if (isVideoExtension(extension))
            image = squareThumbnail(moviePosterFrame(path, side), side);
        finish({generation, path, image});
    });
    return {};
}

void ThumbnailLoader::finish(Finished finished)
{
    std::lock_guard lock(finishedMutex_);
    finished_.append(std::move(finished));
    if (deliveryPosted_)
        return;
    deliveryPosted_ = true;
    QMetaObject::invokeMethod(this, &ThumbnailLoader::deliverFinished, Qt::QueuedConnection);
}

void ThumbnailLoader::deliverFinished()
{
    QList<Finished> finished;
    {
        std::lock_guard lock(finishedMutex_);
        finished.swap(finished_);
        deliveryPosted_ = false;
    }
    QStringList paths;
    for (Finished& one : finished) {
        if (one.generation != generation_)
            continue;
        pending_.remove(one.path);
        if (one.image.isNull()) {
            failed_.insert(one.path);
        } else {
            if (ready_.size() >= kKeptThumbnails)
                ready_.clear();
            ready_.insert(one.path, one.image);
        }
        paths.append(one.path);
    }
    if (!paths.isEmpty())
        emit thumbnailsReady(paths);
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

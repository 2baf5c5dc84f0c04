#pragma once
#include "photo/PhotoThumbnails.h"

#include <QHash>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QThreadPool>

#include <mutex>

namespace pelorin {

// Makes the browser's thumbnails off the GUI thread: asked for a path it answers what it has
// (nothing yet the first time), decodes in the background and announces when a picture is ready.
// It keeps the finished cell pictures itself; failures are remembered so a broken file is not
// decoded again on every repaint. Finished pictures are handed to the window together, one
// event for all that finished meanwhile, not one event each.
class ThumbnailLoader : public QObject {
    Q_OBJECT
public:
    explicit ThumbnailLoader(int side, QObject* parent = nullptr);
    ~ThumbnailLoader() override;

    // The thumbnail when ready; otherwise starts making it and answers a null image.
    QImage thumbnail(const QString& path);
    bool failed(const QString& path) const { return failed_.contains(path); }
    void clear();
    // True when no picture is being made or waits to be handed over.
    bool isIdle() const { return pending_.isEmpty(); }
    // Waits for the pictures being made (tests and shutdown).
    void waitForIdle();

signals:
    void thumbnailsReady(const QStringList& paths);

private:
    struct Finished {
        quint64 generation;
        QString path;
        QImage image;  // null when the file could not be decoded
    };
    void finish(Finished finished);
    void deliverFinished();

    int side_;
    QThreadPool pool_;
    QHash<QString, QImage> ready_;
    QSet<QString> pending_;
    QSet<QString> failed_;
    quint64 generation_ = 0;

    std::mutex finishedMutex_;
    QList<Finished> finished_;     // guarded by finishedMutex_
    bool deliveryPosted_ = false;  // guarded by finishedMutex_
};

}  // namespace pelorin

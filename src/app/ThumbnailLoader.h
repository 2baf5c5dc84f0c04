#pragma once
#include "photo/PhotoThumbnails.h"

#include <QHash>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QThreadPool>

namespace pelorin {

// Makes the browser's thumbnails off the GUI thread: asked for a path it answers what it has
// (nothing yet the first time), decodes in the background and announces when a picture is ready.
// It keeps the finished cell pictures itself; failures are remembered so a broken file is not
// decoded again on every repaint.
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
    void thumbnailReady(const QString& path);

private:
    void deliver(const QString& path, const QImage& image);

    int side_;
    QThreadPool pool_;
    QHash<QString, QImage> ready_;
    QSet<QString> pending_;
    QSet<QString> failed_;
    quint64 generation_ = 0;
};

}  // namespace pelorin

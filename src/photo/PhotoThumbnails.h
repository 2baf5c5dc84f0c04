#pragma once

#include <QCache>
#include <QImage>
#include <QMutex>
#include <QSize>
#include <QString>

namespace pelorin {

// size scaled down (never up) so that its longer side is at most maxSide, aspect kept and no
// side below one pixel; unchanged when maxSide <= 0.
QSize fitWithin(const QSize& size, int maxSide);

// A thumbnail of a photo, upright, at most maxSide on its longer side, aspect kept. Cheapest
// source first: an embedded preview at least maxSide big (exiv2), else a scaled decode of the
// image itself (Qt's readers; libheif for HEIC/HEIF/AVIF, which also uses the file's own
// thumbnail when big enough). A null image with the reason when the file cannot be read.
QImage makePhotoThumbnail(const QString& path, int maxSide, QString* error = nullptr);

// Thumbnails kept in memory for the photo browser, keyed by path, size and the file's
// modification time, inode and size, so a changed file gets a new thumbnail. Failures are kept
// too, so a broken file is not decoded again on every repaint. Safe to call from several
// threads at once; the decoding runs outside the lock.
class PhotoThumbnailCache {
public:
    // maxPixels bounds the pixels of all thumbnails held (4 bytes each).
    explicit PhotoThumbnailCache(qsizetype maxPixels = 16 * 1024 * 1024);

    QImage thumbnail(const QString& path, int maxSide, QString* error = nullptr);
    void clear();

private:
    struct Entry {
        QImage image;
        QString error;
    };
    QMutex mutex_;
    QCache<QString, Entry> cache_;
};

}  // namespace pelorin

#include "photo/PhotoThumbnails.h"

#include "photo/HeifFile.h"
#include "photo/HeifImage.h"
#include "photo/PhotoFormats.h"
#include "photo/PhotoLibraries.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QMutexLocker>
#include <QTransform>

#include <exiv2/exiv2.hpp>

#include <sys/stat.h>

#include <algorithm>
#include <exception>
#include <memory>

namespace pelorin {
namespace {

QImage fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return {};
}

QImage scaledToFit(QImage image, int maxSide)
{
    const QSize fitted = fitWithin(image.size(), maxSide);
    if (fitted == image.size())
        return image;
    return image.scaled(fitted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

// Turns an image stored as the EXIF orientation describes into its upright form.
QImage upright(const QImage& image, long orientation)
{
    const QTransform quarterTurn = QTransform().rotate(90);
    switch (orientation) {
    case 2: return image.mirrored(true, false);
    case 3: return image.mirrored(true, true);
    case 4: return image.mirrored(false, true);
    case 5: return image.transformed(quarterTurn).mirrored(true, false);
    case 6: return image.transformed(quarterTurn);
    case 7: return image.transformed(quarterTurn).mirrored(false, true);
    case 8: return image.transformed(QTransform().rotate(270));
    default: return image;
    }
}

// Decodes so that the result fits maxSide, asking the reader for a scaled decode (JPEG then
// decodes at a fraction of the cost).
QImage readScaled(QImageReader& reader, int maxSide, QString* error)
{
    reader.setDecideFormatFromContent(true);
    const QSize stored = reader.size();
    if (stored.isValid()) {
        // The scaled size applies before the reader's own rotation, which keeps the aspect.
        const QSize fitted = fitWithin(stored, maxSide);
        if (fitted != stored)
            reader.setScaledSize(fitted);
    }
    const QImage image = reader.read();
    if (image.isNull())
        return fail(error, QStringLiteral("cannot decode the image: %1").arg(reader.errorString()));
    // Not every image plugin honours the scaled size.
    return scaledToFit(image, maxSide);
}

// Containers whose previews exiv2 lists. Everything else stays away from exiv2: its movie
// parsers hang or abort on damaged files, and a movie has no photo preview anyway.
bool mayHavePreview(PhotoContainer container)
{
    switch (container) {
    case PhotoContainer::Jpeg:
    case PhotoContainer::Png:
    case PhotoContainer::Tiff:
    case PhotoContainer::WebP:
    case PhotoContainer::Psd:
    case PhotoContainer::Jp2:
    case PhotoContainer::Crw:
    case PhotoContainer::Mrw:
    case PhotoContainer::Raf:
    case PhotoContainer::Rw2:
        return true;
    default:
        return false;
    }
}

enum class PreviewChoice {
    SmallestCovering,  // the smallest at least maxSide big: cheap and sharp
    Largest,           // the best there is, for files nothing else can decode (RAW)
};

// An embedded preview, at most maxSide big and upright; null when there is none to choose.
QImage embeddedPreview(const QString& path, int maxSide, PreviewChoice choice)
{
    try {
        auto image = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
        if (!image.get())
            return {};
        image->readMetadata();
        const Exiv2::ExifData& exif = image->exifData();
        const auto orientationTag = Exiv2::orientation(exif);
        const long orientation =
            orientationTag != exif.end() && orientationTag->count() > 0 ? orientationTag->toLong()
                                                                        : 1;
        const Exiv2::PreviewManager previews(*image);
        // Listed smallest first.
        Exiv2::PreviewPropertiesList candidates = previews.getPreviewProperties();
        if (choice == PreviewChoice::Largest)
            std::reverse(candidates.begin(), candidates.end());
        for (const Exiv2::PreviewProperties& properties : candidates) {
            const uint32_t side = std::max(properties.width_, properties.height_);
            if (choice == PreviewChoice::SmallestCovering && side < uint32_t(maxSide))
                continue;
            const Exiv2::PreviewImage preview = previews.getPreviewImage(properties);
            QByteArray bytes(reinterpret_cast<const char*>(preview.pData()),
                             qsizetype(preview.size()));
            QBuffer buffer(&bytes);
            QImageReader reader(&buffer);
            // The main image's orientation applies, not whatever the preview itself claims.
            reader.setAutoTransform(false);
            const QImage decoded = readScaled(reader, maxSide, nullptr);
            if (decoded.isNull())
                continue;
            // A preview smaller than its listing claimed would lose against a real decode.
            if (choice == PreviewChoice::SmallestCovering
                && std::max(decoded.width(), decoded.height()) < maxSide)
                continue;
            return upright(decoded, orientation);
        }
    } catch (const Exiv2::AnyError&) {
        // Not a format exiv2 knows, or damaged metadata: the image itself may still decode.
    } catch (const std::exception&) {
    }
    return {};
}

struct FileIdentity {
    qint64 modifiedNs = 0;
    qint64 inode = 0;
    qint64 size = 0;
};

bool identify(const QString& path, FileIdentity* identity)
{
    struct stat st {};
    if (::stat(QFile::encodeName(path).constData(), &st) != 0)
        return false;
    identity->modifiedNs = qint64(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    identity->inode = qint64(st.st_ino);
    identity->size = qint64(st.st_size);
    return true;
}

}  // namespace

QSize fitWithin(const QSize& size, int maxSide)
{
    if (maxSide <= 0 || size.isEmpty() || std::max(size.width(), size.height()) <= maxSide)
        return size;
    // Rounded, not truncated: 160 x 120 fits 85 as 85 x 64.
    const double scale = double(maxSide) / std::max(size.width(), size.height());
    return {std::max(1, qRound(size.width() * scale)), std::max(1, qRound(size.height() * scale))};
}

QImage makePhotoThumbnail(const QString& path, int maxSide, QString* error)
{
    initializePhotoLibraries();
    if (maxSide <= 0)
        return fail(error, QStringLiteral("the thumbnail size must be at least one pixel"));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(error, QStringLiteral("cannot open the file: %1").arg(file.errorString()));
    if (!QFileInfo(file).isFile())
        return fail(error, QStringLiteral("not a file"));
    const QByteArray head = file.read(64);
    file.close();

    // exiv2 0.27 reads no previews from these, and Qt has no reader for them.
    if (looksLikeHeif(head))
        return decodeHeifImage(path, maxSide, error);

    const bool previews =
        mayHavePreview(detectPhotoFormat(head, QFileInfo(path).suffix()).container);
    if (previews) {
        const QImage preview = embeddedPreview(path, maxSide, PreviewChoice::SmallestCovering);
        if (!preview.isNull())
            return preview;
    }
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QImage decoded = readScaled(reader, maxSide, error);
    if (!decoded.isNull() || !previews)
        return decoded;
    const QImage preview = embeddedPreview(path, maxSide, PreviewChoice::Largest);
    if (!preview.isNull() && error)
        error->clear();
    return preview;
}

PhotoThumbnailCache::PhotoThumbnailCache(qsizetype maxPixels)
    : cache_(std::max<qsizetype>(1, maxPixels))
{
}

QImage PhotoThumbnailCache::thumbnail(const QString& path, int maxSide, QString* error)
{
    FileIdentity identity;
    if (!identify(path, &identity))
        return makePhotoThumbnail(path, maxSide, error);  // nothing to key on; gives the reason
    const QString key = QStringLiteral("%1\n%2\n%3\n%4\n%5")
                            .arg(QFileInfo(path).absoluteFilePath())
                            .arg(maxSide)
                            .arg(identity.modifiedNs)
                            .arg(identity.inode)
                            .arg(identity.size);
    {
        QMutexLocker lock(&mutex_);
        if (const Entry* entry = cache_.object(key)) {
            if (error)
                *error = entry->error;
            return entry->image;
        }
    }
    auto entry = std::make_unique<Entry>();
    entry->image = makePhotoThumbnail(path, maxSide, &entry->error);
    const QImage image = entry->image;
    if (error)
        *error = entry->error;
    const qsizetype cost = std::max<qsizetype>(1, qsizetype(image.width()) * image.height());
    QMutexLocker lock(&mutex_);
    cache_.insert(key, entry.release(), cost);  // takes the entry, or drops it when too big
    return image;
}

void PhotoThumbnailCache::clear()
{
    QMutexLocker lock(&mutex_);
    cache_.clear();
}

}  // namespace pelorin

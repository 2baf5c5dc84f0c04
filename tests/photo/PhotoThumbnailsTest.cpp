#include "photo/PhotoThumbnails.h"

#include "TestPaths.h"

#include <QDateTime>
#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace pelorin {
namespace {

// Largest difference between the 4 x 4 grey means of two pictures of the same scene.
int coarseDifference(const QImage& a, const QImage& b)
{
    const auto cells = [](const QImage& image) {
        return image.convertToFormat(QImage::Format_Grayscale8)
            .scaled(4, 4, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    };
    const QImage ca = cells(a), cb = cells(b);
    int worst = 0;
    for (int i = 0; i < 16; ++i) {
        const QPoint cell(i % 4, i / 4);
        worst = std::max(worst, std::abs(qGray(ca.pixel(cell)) - qGray(cb.pixel(cell))));
    }
    return worst;
}

TEST(PhotoThumbnailsTest, SmallestBigEnoughPreviewIsUsedUpright)
{
    // Orientation 6; the image itself is 150 x 91, the EXIF thumbnail 160 x 120, the preview
    // 564 x 372.
    const QString path = test::dataPath("exiv2-nikon-d70.jpg");
    QString error;
    const QImage fromPreview = makePhotoThumbnail(path, 300, &error);
    ASSERT_FALSE(fromPreview.isNull()) << error.toStdString();
    EXPECT_EQ(fromPreview.height(), 300);
    EXPECT_NEAR(fromPreview.width(), 300 * 372 / 564, 1);
    EXPECT_EQ(makePhotoThumbnail(path, 85).size(), QSize(64, 85));
    // Beyond every preview: the image itself, turned by its orientation, never enlarged.
    EXPECT_EQ(makePhotoThumbnail(path, 1000).size(), QSize(91, 150));
}

TEST(PhotoThumbnailsTest, EveryOrientationOfAPreviewMatchesQtsReader)
{
    // The photo's Orientation entry (little-endian SHORT, count 1) gets each value in turn.
    QFile source(test::dataPath("pil-iptc_NokiaN70.jpg"));
    ASSERT_TRUE(source.open(QIODevice::ReadOnly));
    const QByteArray original = source.readAll();
    const qsizetype entry = original.indexOf(QByteArray("\x12\x01\x03\0\x01\0\0\0", 8));
    ASSERT_GT(entry, 0);
    QTemporaryDir dir;
    for (char orientation = 1; orientation <= 8; ++orientation) {
        QByteArray bytes = original;
        bytes[entry + 8] = orientation;
        const QString path = dir.filePath(QStringLiteral("o%1.jpg").arg(int(orientation)));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        file.close();
        // 120 is covered by the 160 x 120 EXIF thumbnail; Qt turns the 640 x 480 image.
        const QImage ours = makePhotoThumbnail(path, 120);
        QImageReader reader(path);
        reader.setAutoTransform(true);
        const QImage reference = reader.read();
        ASSERT_EQ(ours.size(), fitWithin(reference.size(), 120)) << int(orientation);
        EXPECT_LT(coarseDifference(ours, reference), 24) << int(orientation);
    }
}

TEST(PhotoThumbnailsTest, FilesWithoutABigPreviewAreDecoded)
{
    QString error;
    const QString png = test::dataPath("exiv2-1343_exif.png");  // 200 x 100
    const QImage thumbnail = makePhotoThumbnail(png, 50, &error);
    ASSERT_EQ(thumbnail.size(), QSize(50, 25)) << error.toStdString();
    EXPECT_LT(coarseDifference(thumbnail, QImage(png)), 8);
    // HEIC goes to libheif by content, whatever the name says.
    QTemporaryDir dir;
    const QString misnamed = dir.filePath(QStringLiteral("stonehenge.jpg"));
    ASSERT_TRUE(QFile::copy(test::dataPath("exiv2-Stonehenge.heic"), misnamed));
    EXPECT_EQ(makePhotoThumbnail(misnamed, 90).size(), QSize(90, 60));
    // Qt cannot decode RAF: its largest preview is the best there is.
    EXPECT_EQ(makePhotoThumbnail(test::dataPath("et-Fuji_S5Pro.raf"), 1000, &error).size(),
              QSize(160, 120)) << error.toStdString();
}

TEST(PhotoThumbnailsTest, DamagedOrForeignFilesGiveErrors)
{
    // The movie and audio files once crashed or hung exiv2's parsers.
    for (const char* name : {"exiv2-issue_2366_poc.mp4", "mm-CWE-835.wma", "pil-zero_width.gif",
                             "pil-decompression_bomb.gif", "libheif-github_15.heic",
                             "libheif-clap-overflow.heic", "no-such-file.jpg"}) {
        QString error;
        EXPECT_TRUE(makePhotoThumbnail(test::dataPath(name), 85, &error).isNull()) << name;
        EXPECT_FALSE(error.isEmpty()) << name;
    }
    QString error;
    EXPECT_TRUE(makePhotoThumbnail(test::dataPath("exiv2-1343_exif.png"), 0, &error).isNull());
    EXPECT_FALSE(error.isEmpty());
}

TEST(PhotoThumbnailsTest, CacheKeepsAThumbnailUntilTheFileChanges)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("photo.png"));
    ASSERT_TRUE(QFile::copy(test::dataPath("exiv2-1343_exif.png"), path));
    PhotoThumbnailCache cache;
    const QImage first = cache.thumbnail(path, 64);
    ASSERT_EQ(first.size(), QSize(64, 32));
    EXPECT_EQ(cache.thumbnail(path, 64).cacheKey(), first.cacheKey());
    EXPECT_EQ(cache.thumbnail(path, 32).size(), QSize(32, 16));

    QImage replacement(30, 60, QImage::Format_RGB32);
    replacement.fill(Qt::red);
    ASSERT_TRUE(replacement.save(path, "PNG"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(QDateTime::currentDateTime().addSecs(60),
                                 QFileDevice::FileModificationTime));
    file.close();
    EXPECT_EQ(cache.thumbnail(path, 64).size(), QSize(30, 60));  // the new picture, not enlarged

    QString error;
    EXPECT_TRUE(cache.thumbnail(dir.filePath(QStringLiteral("gone.jpg")), 64, &error).isNull());
    EXPECT_FALSE(error.isEmpty());
}

TEST(PhotoThumbnailsTest, ThreadsGetTheSameThumbnailsAsOneThread)
{
    const QStringList paths = {test::dataPath("exiv2-nikon-d70.jpg"),
                               test::dataPath("exiv2-1343_exif.png"),
                               test::dataPath("exiv2-Stonehenge.heic"),
                               test::dataPath("exiv2-avif_exif_xmp.avif")};
    const int sides[] = {40, 85};
    QList<QImage> expected;
    for (int which = 0; which < 8; ++which)
        expected << makePhotoThumbnail(paths[which / 2], sides[which % 2]);
    PhotoThumbnailCache cache(20000);  // small, so entries are dropped and decoded again
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 6; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 30; ++i) {
                const int which = (i + t) % 8;
                const QString& path = paths[which / 2];
                const int side = sides[which % 2];
                // Some calls bypass the cache, so the decoders themselves also run side by side.
                const QImage image = i % 3 == 0 ? makePhotoThumbnail(path, side)
                                                : cache.thumbnail(path, side);
                if (image.isNull() || image != expected[which])
                    ++mismatches;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(mismatches, 0);
}

}  // namespace
}  // namespace pelorin

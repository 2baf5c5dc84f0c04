#include "photo/PhotoCompleteness.h"
#include "photo/PhotoProperties.h"
#include "photo/PhotoRewrite.h"
#include "photo/WebPSkeleton.h"

#include "ExifTool.h"
#include "FileBytes.h"
#include "ImageMagick.h"
#include "QtPrinters.h"
#include "TestPaths.h"
#include "ToolRun.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/resource.h>

namespace pelorin {
namespace {

using test::dataPath;
using test::readAll;
using test::writeAll;

// The file the skeleton describes: each shortened chunk replaced by the whole chunk.
QByteArray rebuilt(const WebPSkeleton& skeleton, const QByteArray& whole)
{
    const auto pieces = piecesAroundShortenedChunks(skeleton.bytes, skeleton);
    if (!pieces)
        return {};
    QByteArray out;
    for (qsizetype i = 0; i < skeleton.imageChunks.size(); ++i)
        out += (*pieces)[i] + whole.mid(skeleton.imageChunks[i].offset, skeleton.imageChunks[i].length);
    return out + pieces->last();
}

QString noiseWebP(const QTemporaryDir& dir, const QString& name, const QString& size, const QStringList& options)
{
    const QString path = dir.filePath(name);
    return test::imageMagick(QStringList{QStringLiteral("-size"), size, QStringLiteral("xc:"), QStringLiteral("+noise"),
                                         QStringLiteral("Random")} + options + QStringList{path})
               ? path : QString();
}

// WebPs from ImageMagick (lossy and lossless), ffmpeg (animation frames), exiftool's and a phone's
// samples: the skeleton with its chunks put back is the file, RIFF size included, and exiv2
// reads the same metadata and canvas from it.
TEST(WebPSkeleton, HoldsEverythingButTheBulkOfThePictureAndIsTheFileWithItsChunksBack)
{
    QTemporaryDir dir;
    const QString lossy = noiseWebP(dir, QStringLiteral("lossy.webp"), QStringLiteral("300x200"), {});
    const QString lossless = noiseWebP(dir, QStringLiteral("lossless.webp"), QStringLiteral("300x200"),
                                       {QStringLiteral("-define"), QStringLiteral("webp:lossless=true")});
    const QString animation = dir.filePath(QStringLiteral("animation.webp"));
    ASSERT_TRUE(test::runs(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"),
                                                      QStringLiteral("lavfi"), QStringLiteral("-i"),
                                                      QStringLiteral("testsrc=size=160x120:rate=5"), QStringLiteral("-frames:v"),
                                                      QStringLiteral("3"), animation}));
    ASSERT_FALSE(lossy.isEmpty() || lossless.isEmpty());
    for (const QString& path : {lossy, lossless, animation, dataPath(QStringLiteral("et-RIFF.webp")),
                                dataPath(QStringLiteral("mde-HTC_Desire.webp"))}) {
        SCOPED_TRACE(path.toStdString());
        const QByteArray whole = readAll(path);
        const auto skeleton = readWebPSkeleton(path);
        ASSERT_TRUE(skeleton.has_value());
        EXPECT_EQ(rebuilt(*skeleton, whole), whole);
        EXPECT_TRUE(photoDataComplete(skeleton->bytes, detectPhotoFormat(whole.left(64), QStringLiteral("webp"))));
        const PhotoProperties fromSkeleton = readPhotoProperties(path);
        const PhotoProperties fromWhole = readPhotoProperties(whole, QStringLiteral("webp"));
        ASSERT_TRUE(fromWhole.ok()) << fromWhole.error.toStdString();
        EXPECT_EQ(fromSkeleton.properties, fromWhole.properties);
    }
    EXPECT_LT(readWebPSkeleton(lossy)->bytes.size(), 200);
}

// Anything but the plain structure is rewritten from the whole file; a cut-off file is refused as
// damaged, as before.
TEST(WebPSkeleton, OddFilesAreRewrittenWholeAndDamagedOnesRefused)
{
    QTemporaryDir dir;
    const QByteArray webp = readAll(dataPath(QStringLiteral("mde-HTC_Desire.webp")));
    const auto skeletonOf = [&](const QByteArray& bytes) {
        const QString path = dir.filePath(QStringLiteral("odd.webp"));
        EXPECT_TRUE(writeAll(path, bytes));
        return readWebPSkeleton(path);
    };
    ASSERT_TRUE(skeletonOf(webp).has_value());
    EXPECT_FALSE(skeletonOf(webp + "trailing").has_value());
    EXPECT_FALSE(skeletonOf(webp.left(webp.size() - 100)).has_value());
    QByteArray wrongFirst = webp;
    wrongFirst.replace(12, 4, "JUNK");
    EXPECT_FALSE(skeletonOf(wrongFirst).has_value());

    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{GPS}"), QVariant());
    const QString trailed = dir.filePath(QStringLiteral("trailed.webp"));
    ASSERT_TRUE(writeAll(trailed, webp + QByteArray("after the RIFF")));
    const QString output = dir.filePath(QStringLiteral("out.webp"));
    const PhotoWriteResult rewritten = CopyPhotoWithProperties(trailed, changes, output);
    ASSERT_EQ(rewritten.outcome, PhotoWriteResult::Outcome::Rewritten) << rewritten.reason.toStdString();
    EXPECT_TRUE(test::tagsOf(test::exiftool(output), {QStringLiteral("GPS")}).isEmpty());

    const QString cut = dir.filePath(QStringLiteral("cut.webp"));
    ASSERT_TRUE(writeAll(cut, webp.left(webp.size() - 1000)));
    const QString cutOutput = dir.filePath(QStringLiteral("cut-out.webp"));
    const PhotoWriteResult refused = CopyPhotoWithProperties(cut, changes, cutOutput);
    EXPECT_EQ(refused.outcome, PhotoWriteResult::Outcome::Skipped);
    EXPECT_EQ(refused.reason, damagedPhotoReason());
    EXPECT_FALSE(QFile::exists(cutOutput));
}

// The whole chunks go back only where exiv2 kept every shortened one, unchanged and in order.
TEST(WebPSkeleton, ShortenedChunksMustComeThroughTheRewriteUnchanged)
{
    const auto skeleton = readWebPSkeleton(dataPath(QStringLiteral("et-RIFF.webp")));  // VP8X ALPH VP8 EXIF XMP
    ASSERT_TRUE(skeleton.has_value());
    ASSERT_EQ(skeleton->imageChunks.size(), 2);
    const QByteArray& bytes = skeleton->bytes;
    ASSERT_EQ(piecesAroundShortenedChunks(bytes, *skeleton)->size(), 3);
    const qsizetype alpha = bytes.indexOf("ALPH");
    const qsizetype vp8 = bytes.indexOf("VP8 ");
    ASSERT_TRUE(alpha > 0 && vp8 > alpha);
    const auto withRiffSize = [](QByteArray b) {
        const quint32 size = quint32(b.size() - 8);
        for (int i = 0; i < 4; ++i)
            b[4 + i] = char(size >> (8 * i));
        return b;
    };
    // The two image chunks swapped, one dropped, one byte of one changed.
    const QByteArray alphaChunk = bytes.mid(alpha, vp8 - alpha);
    QByteArray swapped = bytes;
    swapped.remove(alpha, alphaChunk.size());
    swapped.insert(swapped.indexOf("EXIF"), alphaChunk);
    EXPECT_FALSE(piecesAroundShortenedChunks(withRiffSize(swapped), *skeleton).has_value());
    EXPECT_FALSE(piecesAroundShortenedChunks(withRiffSize(QByteArray(bytes).remove(alpha, alphaChunk.size())), *skeleton).has_value());
    QByteArray changed = bytes;
    changed[vp8 + 12] = char(~changed[vp8 + 12]);
    EXPECT_FALSE(piecesAroundShortenedChunks(changed, *skeleton).has_value());
    EXPECT_FALSE(piecesAroundShortenedChunks(bytes + "xx", *skeleton).has_value());
}

// Reading a 5 MB WebP reads its metadata side only, and rewriting it holds only that in memory;
// the image chunk comes out byte for byte and the changes read back in exiftool.
TEST(WebPRewrite, HoldsOnlyTheMetadataSideOfALargeWebPInMemory)
{
    QTemporaryDir dir;
    const QString source = noiseWebP(dir, QStringLiteral("large.webp"), QStringLiteral("3000x2000"),
                                     {QStringLiteral("-quality"), QStringLiteral("90")});
    ASSERT_FALSE(source.isEmpty());
    ASSERT_TRUE(test::exiftoolWrite(source, {QStringLiteral("-GPSLatitude=48.85"), QStringLiteral("-GPSLatitudeRef=N"),
                                             QStringLiteral("-XMP-dc:Title=Noise")}));
    ASSERT_GT(QFileInfo(source).size(), 4'000'000);
    const qint64 readBefore = test::bytesReadByThisProcess();
    const PhotoProperties info = readPhotoProperties(source);
    EXPECT_LT(test::bytesReadByThisProcess() - readBefore, 500'000);
    EXPECT_EQ(info.properties.value(QStringLiteral("PixelWidth")).toLongLong(), 3000);
    EXPECT_TRUE(info.properties.contains(QStringLiteral("{GPS}")));
    rusage before{};
    getrusage(RUSAGE_SELF, &before);
    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{GPS}"), QVariant());
    const QString output = dir.filePath(QStringLiteral("out.webp"));
    const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
    ASSERT_EQ(result.outcome, PhotoWriteResult::Outcome::Rewritten) << result.reason.toStdString();
    rusage after{};
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 3 * 1024);

    const QJsonObject tags = test::exiftool(output);
    EXPECT_TRUE(test::tagsOf(tags, {QStringLiteral("GPS")}).isEmpty());
    EXPECT_EQ(tags.value(QStringLiteral("XMP-dc:Title")).toString(), QStringLiteral("Noise"));
    EXPECT_TRUE(test::newValidationWarnings(source, output).isEmpty());
    const auto in = readWebPSkeleton(source);
    const auto out = readWebPSkeleton(output);
    ASSERT_TRUE(in && out);
    ASSERT_EQ(out->imageChunks.size(), 1);
    EXPECT_EQ(readAll(output).mid(out->imageChunks[0].offset, out->imageChunks[0].length),
              readAll(source).mid(in->imageChunks[0].offset, in->imageChunks[0].length));
}

}  // namespace
}  // namespace pelorin

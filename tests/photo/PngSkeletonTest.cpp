#include "photo/PhotoCompleteness.h"
#include "photo/PhotoProperties.h"
#include "photo/PhotoRewrite.h"
#include "photo/PngSkeleton.h"
#include "model/SafeOutput.h"

#include "ExifTool.h"
#include "FileBytes.h"
#include "ImageMagick.h"
#include "QtPrinters.h"
#include "TestPaths.h"
#include "ToolRun.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

namespace pelorin {
namespace {

using test::dataPath;
using test::readAll;
using test::writeAll;

// A picture of noise, which does not compress: ImageMagick writes it as hundreds of IDAT
// chunks, and its own date texts after them.
QString noisePng(const QTemporaryDir& dir, const QString& name, const QString& size)
{
    const QString path = dir.filePath(name);
    return test::imageMagick({QStringLiteral("-size"), size, QStringLiteral("xc:"), QStringLiteral("+noise"),
                              QStringLiteral("Random"), QStringLiteral("-depth"), QStringLiteral("8"), path})
               ? path : QString();
}

// The same picture with exiftool's GPS (an eXIf chunk), a comment and an XMP title.
bool addGpsAndTexts(const QString& png)
{
    return test::exiftoolWrite(png, {QStringLiteral("-GPSLatitude=48.85"), QStringLiteral("-GPSLatitudeRef=N"),
                                     QStringLiteral("-GPSLongitude=2.29"), QStringLiteral("-GPSLongitudeRef=E"),
                                     QStringLiteral("-PNG:Comment=a comment"), QStringLiteral("-XMP-dc:Title=Noise")});
}

// The file the skeleton describes: each stand-in replaced by the run it stands for.
QByteArray rebuilt(const PngSkeleton& skeleton, const QByteArray& whole)
{
    const auto pieces = piecesAroundStandIns(skeleton.bytes, skeleton.runs.size());
    if (!pieces)
        return {};
    QByteArray out;
    for (qsizetype i = 0; i < skeleton.runs.size(); ++i)
        out += (*pieces)[i] + whole.mid(skeleton.runs[i].offset, skeleton.runs[i].length);
    return out + pieces->last();
}

qint64 peakMemoryKb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// PNGs from exiftool's, exiv2's and exifr's samples (text and eXIf chunks before and after the
// image data), ImageMagick (hundreds of IDAT chunks) and ffmpeg (an animation's frames): the
// skeleton with its runs put back is the file, and reads as the whole file does.
TEST(PngSkeleton, HoldsEverythingButTheImageDataAndReadsAsTheWholeFile)
{
    QTemporaryDir dir;
    const QString noise = noisePng(dir, QStringLiteral("noise.png"), QStringLiteral("600x400"));
    ASSERT_FALSE(noise.isEmpty());
    const QString tagged = dir.filePath(QStringLiteral("tagged.png"));
    ASSERT_TRUE(QFile::copy(noise, tagged) && addGpsAndTexts(tagged));
    const QString animation = dir.filePath(QStringLiteral("animation.png"));
    ASSERT_TRUE(test::runs(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"),
                                                      QStringLiteral("lavfi"), QStringLiteral("-i"),
                                                      QStringLiteral("testsrc=size=160x120:rate=5"), QStringLiteral("-frames:v"),
                                                      QStringLiteral("4"), QStringLiteral("-f"), QStringLiteral("apng"), animation}));
    QStringList files{noise, tagged, animation};
    for (const char* name : {"et-PNG.png", "exiv2-1343_exif.png", "exifr-png_exif_gps.png"})
        files << dataPath(QString::fromLatin1(name));
    for (const QString& path : files) {
        SCOPED_TRACE(path.toStdString());
        const QByteArray whole = readAll(path);
        const auto skeleton = readPngSkeleton(path);
        ASSERT_TRUE(skeleton.has_value());
        EXPECT_EQ(skeleton->fileSize, whole.size());
        EXPECT_EQ(rebuilt(*skeleton, whole), whole);
        EXPECT_FALSE(skeleton->bytes.contains("fdAT"));
        const PhotoProperties fromSkeleton = readPhotoProperties(path);
        const PhotoProperties fromWhole = readPhotoProperties(whole, QStringLiteral("png"));
        ASSERT_TRUE(fromWhole.ok()) << fromWhole.error.toStdString();
        EXPECT_EQ(fromSkeleton.properties, fromWhole.properties);
    }
    EXPECT_EQ(readPngSkeleton(animation)->runs.size(), 1);  // fcTL IDAT fcTL fdAT ... in one run
    EXPECT_LT(readPngSkeleton(noise)->bytes.size(), 4096);
}

// Anything but the plain structure is left to the readers of whole files.
TEST(PngSkeleton, OnlyAPlainWholePngHasASkeleton)
{
    QTemporaryDir dir;
    const QByteArray png = readAll(dataPath(QStringLiteral("exifr-png_exif_gps.png")));
    const auto skeletonOf = [&](const QByteArray& bytes) {
        const QString path = dir.filePath(QStringLiteral("odd.png"));
        EXPECT_TRUE(writeAll(path, bytes));
        return readPngSkeleton(path);
    };
    ASSERT_TRUE(skeletonOf(png).has_value());
    EXPECT_FALSE(skeletonOf(png + "trailing bytes").has_value());
    EXPECT_FALSE(skeletonOf(png.chopped(12)).has_value());      // no IEND
    EXPECT_FALSE(skeletonOf(png.left(png.size() / 2)).has_value());  // cut in the image data
    EXPECT_FALSE(skeletonOf(readAll(dataPath(QStringLiteral("fuzz-png-header-chunk-renamed.png")))).has_value());
    QByteArray noImageData = png;  // the image data renamed to a private chunk
    for (qsizetype at = noImageData.indexOf("IDAT"); at >= 0; at = noImageData.indexOf("IDAT", at))
        noImageData.replace(at, 4, "prIv");
    EXPECT_FALSE(skeletonOf(noImageData).has_value());
    QByteArray tooLong = png;  // the first chunk after the header claims more than the file holds
    tooLong.replace(33, 4, QByteArray("\x7f\xff\xff\xf0", 4));
    EXPECT_FALSE(skeletonOf(tooLong).has_value());
}

// The image data goes back only where every stand-in came through the rewrite, unchanged.
TEST(PngSkeleton, StandInsMustComeThroughTheRewriteUnchanged)
{
    const auto skeleton = readPngSkeleton(dataPath(QStringLiteral("exifr-png_exif_gps.png")));
    ASSERT_TRUE(skeleton.has_value());
    const QByteArray& bytes = skeleton->bytes;
    const QByteArray standIn = pngImageDataStandIn();
    const qsizetype at = bytes.indexOf(standIn);
    ASSERT_GT(at, 0);
    ASSERT_EQ(piecesAroundStandIns(bytes, 1)->size(), 2);
    EXPECT_FALSE(piecesAroundStandIns(bytes, 2).has_value());
    EXPECT_FALSE(piecesAroundStandIns(QByteArray(bytes).remove(at, standIn.size()), 1).has_value());
    EXPECT_FALSE(piecesAroundStandIns(QByteArray(bytes).insert(at, standIn), 1).has_value());
    QByteArray withData = bytes;
    withData.replace(at, standIn.size(), QByteArray("\0\0\0\1IDAT\0\0\0\0\0", 13));
    EXPECT_FALSE(piecesAroundStandIns(withData, 1).has_value());
    EXPECT_FALSE(piecesAroundStandIns(bytes + "x", 1).has_value());
}

// What exiftool -validate finds wrong with an output that its source did not have, but that exiv2
// writes EXIF as a "Raw profile type exif" text, which exiftool calls non-standard.
QStringList newWarnings(const QString& source, const QString& output)
{
    QStringList added = test::newValidationWarnings(source, output);
    added.removeAll(QStringLiteral("[minor] Non-standard EXIF in PNG Raw profile type exif chunk"));
    return added;
}

// Reading and rewriting a 9 MB PNG touches its metadata and chunk headers only: the image
// data is neither read into the process nor held in memory, and comes out byte for byte, with
// the same pixels for ImageMagick and the changes as exiftool reads them.
TEST(PngRewrite, ReadsAndWritesOnlyTheMetadataSideOfALargePng)
{
    QTemporaryDir dir;
    const QString source = noisePng(dir, QStringLiteral("large.png"), QStringLiteral("2000x1500"));
    ASSERT_FALSE(source.isEmpty());
    ASSERT_TRUE(addGpsAndTexts(source));
    const qint64 size = QFileInfo(source).size();
    ASSERT_GT(size, 8'000'000);

    const qint64 readBefore = test::bytesReadByThisProcess();
    const PhotoProperties info = readPhotoProperties(source);
    EXPECT_LT(test::bytesReadByThisProcess() - readBefore, 1'000'000);
    ASSERT_TRUE(info.ok());
    EXPECT_EQ(info.properties.value(QStringLiteral("PixelWidth")).toLongLong(), 2000);
    EXPECT_TRUE(info.properties.contains(QStringLiteral("{GPS}")));

    const qint64 memoryBefore = peakMemoryKb();
    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{GPS}"), QVariant());
    const QString output = dir.filePath(QStringLiteral("out.png"));
    const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
    ASSERT_EQ(result.outcome, PhotoWriteResult::Outcome::Rewritten) << result.reason.toStdString();
    EXPECT_LT(peakMemoryKb() - memoryBefore, 4 * 1024);

    const QJsonObject tags = test::exiftool(output);
    EXPECT_TRUE(test::tagsOf(tags, {QStringLiteral("GPS")}).isEmpty());
    EXPECT_EQ(tags.value(QStringLiteral("XMP-dc:Title")).toString(), QStringLiteral("Noise"));
    const QStringList warnings = newWarnings(source, output);
    EXPECT_TRUE(warnings.isEmpty()) << warnings.join(u'\n').toStdString();
    QProcess compare;
    compare.start(QStringLiteral("compare"), {QStringLiteral("-metric"), QStringLiteral("AE"), source, output, QStringLiteral("null:")});
    ASSERT_TRUE(compare.waitForFinished(60000));
    EXPECT_EQ(compare.readAllStandardError().trimmed(), "0");
    const auto in = readPngSkeleton(source);
    const auto out = readPngSkeleton(output);
    ASSERT_TRUE(in && out);
    EXPECT_EQ(rebuilt(*out, readAll(output)), readAll(output));
    ASSERT_EQ(out->runs.size(), in->runs.size());
    EXPECT_EQ(readAll(output).mid(out->runs[0].offset, out->runs[0].length), readAll(source).mid(in->runs[0].offset, in->runs[0].length));
}

// A PNG with bytes after its end is rewritten from its whole bytes as before; a cut-off one is
// still refused as damaged and leaves no output.
TEST(PngRewrite, OddFilesAreRewrittenWholeAndDamagedOnesRefused)
{
    QTemporaryDir dir;
    const QByteArray png = readAll(dataPath(QStringLiteral("exifr-png_exif_gps.png")));
    const QString trailed = dir.filePath(QStringLiteral("trailed.png"));
    ASSERT_TRUE(writeAll(trailed, png + QByteArray("something after the end")));
    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{GPS}"), QVariant());
    const QString output = dir.filePath(QStringLiteral("out.png"));
    const PhotoWriteResult result = CopyPhotoWithProperties(trailed, changes, output);
    ASSERT_EQ(result.outcome, PhotoWriteResult::Outcome::Rewritten) << result.reason.toStdString();
    EXPECT_TRUE(test::tagsOf(test::exiftool(output), {QStringLiteral("GPS")}).isEmpty());
    EXPECT_TRUE(readPngSkeleton(output).has_value());

    const QString cut = dir.filePath(QStringLiteral("cut.png"));
    ASSERT_TRUE(writeAll(cut, png.left(png.size() - 100)));
    const QString cutOutput = dir.filePath(QStringLiteral("cut-out.png"));
    const PhotoWriteResult refused = CopyPhotoWithProperties(cut, changes, cutOutput);
    EXPECT_EQ(refused.outcome, PhotoWriteResult::Outcome::Skipped);
    EXPECT_EQ(refused.reason, damagedPhotoReason());
    EXPECT_FALSE(QFile::exists(cutOutput));
    EXPECT_EQ(readPhotoProperties(cut).error, damagedPhotoReason());
}

// A fault in the image data copied in the kernel is caught by the read-back before the output
// takes its name.
TEST(PngRewrite, ADamagedCopyOfTheImageDataIsNotKept)
{
    QTemporaryDir dir;
    const QString source = noisePng(dir, QStringLiteral("noise.png"), QStringLiteral("400x300"));
    ASSERT_FALSE(source.isEmpty());
    const auto skeleton = readPngSkeleton(source);
    ASSERT_TRUE(skeleton.has_value());
    // The output keeps the source's layout before the image data but for the chunks exiv2 adds.
    setPendingOutputHookForTests([](int fd) {
        const auto out = readPngSkeleton(QStringLiteral("/proc/self/fd/%1").arg(fd));
        if (!out)
            return;
        const qint64 at = out->runs[0].offset + 100;
        char byte = 0;
        if (::pread(fd, &byte, 1, at) == 1) {
            byte = char(~byte);
            (void)::pwrite(fd, &byte, 1, at);
        }
    });
    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{IPTC}"), QVariantMap{{QStringLiteral("Keywords"), QStringList{QStringLiteral("noise")}}});
    const QString output = dir.filePath(QStringLiteral("out.png"));
    const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
    setPendingOutputHookForTests({});
    EXPECT_EQ(result.outcome, PhotoWriteResult::Outcome::Failed);
    EXPECT_TRUE(result.reason.contains(QStringLiteral("image data differs"))) << result.reason.toStdString();
    EXPECT_FALSE(QFile::exists(output));
}

}  // namespace
}  // namespace pelorin

#include "photo/JpegHead.h"
#include "photo/PhotoProperties.h"
#include "photo/PhotoRewrite.h"

#include "ExifTool.h"
#include "FileBytes.h"
#include "QtPrinters.h"
#include "TestPaths.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

using test::dataPath;
using test::readAll;
using test::writeAll;

// Gives a JPEG an XMP description of `length` letters, which exiftool spreads over extended
// XMP segments: a header of that size.
bool addLongDescription(const QString& jpeg, int length, const QTemporaryDir& dir)
{
    const QString text = dir.filePath(QStringLiteral("description.txt"));
    return writeAll(text, QByteArray(length, 'd'))
           && test::exiftoolWrite(jpeg, {QStringLiteral("-XMP-dc:Description<=") + text});
}

// A JPEG from cameras, a phone and exiftool is read up to its image data, and what the head
// shows is what the whole file shows; a header larger than the first read is read whole.
TEST(JpegHead, HoldsEverythingBeforeTheImageDataAndReadsAsTheWholeFile)
{
    QTemporaryDir dir;
    // exiftool spreads a long XMP over extended segments: some 300 KB of header.
    const QString bigHeader = dir.filePath(QStringLiteral("big-header.jpg"));
    ASSERT_TRUE(QFile::copy(dataPath(QStringLiteral("et-GPS.jpg")), bigHeader));
    ASSERT_TRUE(addLongDescription(bigHeader, 300000, dir));
    QStringList files{bigHeader};
    for (const char* name : {"et-Canon_1DmkIII.jpg", "exiv2-Reagan_all.jpg", "pil-iptc_NokiaN70.jpg",
                             "pil-multiple_exif.jpg", "mde-Sony_Cybershot_orient6.jpg", "et-Apple.jpg"})
        files << dataPath(QString::fromLatin1(name));
    for (const QString& path : files) {
        SCOPED_TRACE(path.toStdString());
        const QByteArray whole = readAll(path);
        const auto head = readJpegHead(path);
        ASSERT_TRUE(head.has_value());
        EXPECT_EQ(head->fileSize, whole.size());
        EXPECT_EQ(head->bytes.chopped(2), whole.left(head->imageDataStart));
        EXPECT_TRUE(head->bytes.endsWith("\xFF\xD9"));
        const PhotoProperties fromHead = readPhotoProperties(path);
        const PhotoProperties fromWhole = readPhotoProperties(whole, QStringLiteral("jpg"));
        ASSERT_TRUE(fromWhole.ok());
        EXPECT_EQ(fromHead.properties, fromWhole.properties);
    }
    EXPECT_GT(readJpegHead(bigHeader)->imageDataStart, 300000);
}

// Anything but the plain structure is left to the readers of whole files: a cut in the header
// or in the image data, a scan that never starts. An end marker is found wherever the search
// of the file's end falls on it, including across the pieces it reads.
TEST(JpegHead, OnlyAPlainWholeJpegHasAHead)
{
    QTemporaryDir dir;
    const QString sample = dataPath(QStringLiteral("mde-Sony_Cybershot_orient6.jpg"));
    const QByteArray jpeg = readAll(sample);
    const auto head = readJpegHead(sample);
    ASSERT_TRUE(head.has_value());
    const auto headOf = [&](const QByteArray& bytes) {
        const QString path = dir.filePath(QStringLiteral("cut.jpg"));
        EXPECT_TRUE(writeAll(path, bytes));
        return readJpegHead(path);
    };
    EXPECT_FALSE(headOf(jpeg.left(head->imageDataStart + 20000)).has_value());  // no end marker
    EXPECT_FALSE(headOf(jpeg.left(head->imageDataStart - 3)).has_value());    // inside the scan header
    EXPECT_FALSE(headOf(jpeg.left(400)).has_value());                          // inside the EXIF
    EXPECT_FALSE(headOf(jpeg.left(2) + QByteArray("\xFF\xD9", 2)).has_value());
    EXPECT_FALSE(headOf(QByteArray("not a jpeg at all")).has_value());
    // Trailing bytes after the end marker put its 0xFF and 0xD9 in different pieces of the search.
    const auto trailed = headOf(jpeg + QByteArray(64 * 1024 - 1, '\0'));
    ASSERT_TRUE(trailed.has_value());
    EXPECT_EQ(trailed->imageDataLength(), jpeg.size() - head->imageDataStart + 64 * 1024 - 1);
    EXPECT_TRUE(headOf(jpeg + QByteArray(64 * 1024, '\0')).has_value());
}

// A rewrite copies the image data and whatever follows it from the file: a header larger than
// the first read and a trailer after the end marker come through, and the changed metadata
// reads back in exiftool.
TEST(JpegHead, ARewriteKeepsTheImageDataAndTrailerOfTheFile)
{
    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("source.jpg"));
    ASSERT_TRUE(QFile::copy(dataPath(QStringLiteral("et-GPS.jpg")), source));
    ASSERT_TRUE(addLongDescription(source, 300000, dir));
    QByteArray bytes = readAll(source);
    const QByteArray trailer = QByteArray("trailing picture data ").repeated(5000);
    ASSERT_TRUE(writeAll(source, bytes + trailer));

    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{GPS}"), QVariant());
    const QString output = dir.filePath(QStringLiteral("out.jpg"));
    const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
    ASSERT_EQ(result.outcome, PhotoWriteResult::Outcome::Rewritten) << result.reason.toStdString();
    const auto in = readJpegHead(source);
    const auto out = readJpegHead(output);
    ASSERT_TRUE(in && out);
    EXPECT_EQ(readAll(output).mid(out->imageDataStart), readAll(source).mid(in->imageDataStart));
    EXPECT_TRUE(readAll(output).endsWith(trailer));
    const QJsonObject tags = test::exiftool(output);
    EXPECT_TRUE(test::tagsOf(tags, {QStringLiteral("GPS:")}).isEmpty());
    EXPECT_EQ(tags.value(QStringLiteral("XMP-dc:Description")).toString().size(), 300000);
}

}  // namespace
}  // namespace pelorin

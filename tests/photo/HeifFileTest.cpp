#include "photo/HeifFile.h"
#include "photo/HeifImage.h"
#include "photo/PhotoProperties.h"

#include "TestPaths.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

QByteArray run(const QString& program, const QStringList& args)
{
    QProcess process;
    process.start(program, args);
    const bool ok = process.waitForFinished(60000) && process.exitCode() == 0;
    return ok ? process.readAllStandardOutput() : QByteArray();
}

QByteArray exiftool(const QStringList& args) { return run(QStringLiteral("exiftool"), args); }

QJsonObject exiftoolJson(const QString& path)
{
    return QJsonDocument::fromJson(exiftool({"-j", "-n", path})).array().at(0).toObject();
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeAll(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

TEST(HeifFileTest, RecognisesHeifAndAvifByTheirBrands)
{
    EXPECT_TRUE(looksLikeHeif(readAll(test::dataPath("exiv2-iPhoneXR_orient6.heic")).left(32)));
    EXPECT_TRUE(looksLikeHeif(readAll(test::dataPath("exiv2-avif_exif_xmp.avif")).left(32)));
    EXPECT_FALSE(looksLikeHeif(readAll(test::dataPath("exiv2-nikon-d70.jpg")).left(32)));
    EXPECT_FALSE(looksLikeHeif(QByteArray("\0\0\0\x14" "ftypisom\0\0\0\0" "mp41" "avif", 24)));
    // A compatible brand counts, but only inside the box's own size.
    QByteArray miaf("\0\0\0\x18" "ftypmiaf\0\0\0\0" "iso8" "avif", 24);
    EXPECT_TRUE(looksLikeHeif(miaf));
    miaf[3] = 0x14;
    EXPECT_FALSE(looksLikeHeif(miaf));
}

TEST(HeifFileTest, IphoneMetadataMatchesExiftool)
{
    const QString path = test::dataPath("exiv2-iPhoneXR_orient6.heic");
    QString error;
    const std::optional<HeifMetadata> metadata = readHeifMetadata(path, &error);
    ASSERT_TRUE(metadata) << error.toStdString();
    const QJsonObject expected = exiftoolJson(path);
    ASSERT_EQ(expected["Make"].toString(), QStringLiteral("Apple")) << "exiftool did not run";
    const bool turned = expected["Rotation"].toInt() % 180 != 0;  // we report it as displayed
    EXPECT_EQ(metadata->width, expected[turned ? "ImageHeight" : "ImageWidth"].toInt());
    EXPECT_EQ(metadata->height, expected[turned ? "ImageWidth" : "ImageHeight"].toInt());
    EXPECT_EQ(metadata->imageCount, 1);
    EXPECT_EQ(metadata->lumaBitDepth, 8);
    EXPECT_FALSE(metadata->hasAlpha);

    // Our Exif block is a TIFF stream exiftool reads on its own, with the HEIC's values.
    QTemporaryDir dir;
    const QString exifPath = dir.filePath(QStringLiteral("block.exif"));
    ASSERT_TRUE(writeAll(exifPath, metadata->exif));
    const QJsonObject fromBlock = exiftoolJson(exifPath);
    for (const char* key : {"Make", "Model", "Orientation", "DateTimeOriginal"})
        EXPECT_EQ(fromBlock[key], expected[key]) << key;
    EXPECT_EQ(metadata->iccProfile, exiftool({"-b", "-ICC_Profile", path}));
    EXPECT_FALSE(metadata->iccProfile.isEmpty());
}

TEST(HeifFileTest, ExifAndXmpOfHeicAndAvifMatchExiftool)
{
    for (const char* name : {"exiv2-Stonehenge.heic", "exiv2-avif_exif_xmp.avif"}) {
        const QString path = test::dataPath(name);
        QString error;
        const std::optional<HeifMetadata> metadata = readHeifMetadata(path, &error);
        ASSERT_TRUE(metadata) << name << ": " << error.toStdString();
        EXPECT_TRUE(metadata->xmp.startsWith("<?xpacket")) << name;
        EXPECT_EQ(metadata->xmp, exiftool({"-b", "-XMP", path})) << name;
        EXPECT_EQ(metadata->exif, exiftool({"-b", "-EXIF", path})) << name;
        EXPECT_TRUE(metadata->iccProfile.isEmpty()) << name;  // nclx colour only
    }
}

TEST(HeifFileTest, DecodesUprightFromThePrimaryImageOrTheThumbnail)
{
    const QString path = test::dataPath("exiv2-iPhoneXR_orient6.heic");
    QString error;
    const QImage full = decodeHeifImage(path, 0, &error);
    ASSERT_EQ(full.size(), QSize(3024, 4032)) << error.toStdString();
    const QImage fullCells = full.scaled(4, 4, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    // 300 is within the file's 240 x 320 thumbnail, 1000 is not; both must show the same.
    for (int side : {300, 1000}) {
        const QImage small = decodeHeifImage(path, side, &error);
        ASSERT_EQ(small.size(), QSize(side * 3 / 4, side)) << side;
        const QImage cells = small.scaled(4, 4, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        for (int i = 0; i < 16; ++i)
            EXPECT_NEAR(qGray(cells.pixel(i % 4, i / 4)), qGray(fullCells.pixel(i % 4, i / 4)), 12)
                << "cell " << i << " at " << side;
    }
}

TEST(HeifFileTest, AlphaAndImageCountOfAnEncodedFile)
{
    const QString encoder = QStandardPaths::findExecutable(QStringLiteral("heif-enc"));
    if (encoder.isEmpty())
        GTEST_SKIP() << "heif-enc is not installed";
    QTemporaryDir dir;
    QImage picture(40, 30, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    for (int y = 0; y < 30; ++y)
        for (int x = 20; x < 40; ++x)
            picture.setPixel(x, y, qRgba(200, 40, 40, 255));
    const QString png = dir.filePath(QStringLiteral("a.png"));
    const QString heic = dir.filePath(QStringLiteral("a.heic"));
    ASSERT_TRUE(picture.save(png));
    run(encoder, {"-q", "90", "-o", heic, png, png});

    QString error;
    const std::optional<HeifMetadata> metadata = readHeifMetadata(heic, &error);
    ASSERT_TRUE(metadata) << error.toStdString();
    EXPECT_EQ(metadata->imageCount, 2);
    EXPECT_TRUE(metadata->hasAlpha);
    EXPECT_TRUE(metadata->exif.isEmpty());
    const QImage decoded = decodeHeifImage(heic, 0, &error);
    ASSERT_EQ(decoded.size(), QSize(40, 30)) << error.toStdString();
    EXPECT_LT(qAlpha(decoded.pixel(5, 15)), 16);
    EXPECT_GT(qAlpha(decoded.pixel(35, 15)), 240);
    EXPECT_GT(qRed(decoded.pixel(35, 15)), 150);
}

// An image sequence may name no brand but 'avis'. It goes to libheif, which gives its reason; it
// is never taken for a QuickTime movie by exiv2 (which trusts the box sizes of such files and
// showed movie fields as the photo's XMP).
TEST(HeifFileTest, AvifSequenceNamingOnlyItsSequenceBrandIsNotReadAsAMovie)
{
    if (QStandardPaths::findExecutable(QStringLiteral("ffmpeg")).isEmpty())
        GTEST_SKIP() << "ffmpeg is not installed";
    QTemporaryDir dir;
    const QString avif = dir.filePath(QStringLiteral("sequence.avif"));
    run(QStringLiteral("ffmpeg"), {"-v", "error", "-f", "lavfi", "-i", "testsrc=size=64x48:rate=10:d=0.3",
                                   "-c:v", "libaom-av1", "-cpu-used", "8", avif});
    QByteArray bytes = readAll(avif);
    ASSERT_EQ(bytes.mid(4, 8), QByteArray("ftypavis"));
    const int ftypSize = int(qFromBigEndian<quint32>(bytes.constData()));
    for (int at = 16; at + 4 <= ftypSize; at += 4)
        bytes.replace(at, 4, "avis");
    ASSERT_TRUE(writeAll(avif, bytes));
    EXPECT_TRUE(looksLikeHeif(bytes.left(64)));

    for (const PhotoProperties& photo : {readPhotoProperties(avif), readPhotoProperties(bytes, QStringLiteral("avif"))}) {
        EXPECT_FALSE(photo.ok());
        EXPECT_FALSE(photo.error.isEmpty());
        EXPECT_FALSE(photo.properties.contains(QStringLiteral("{XMP}")));
    }
}

TEST(HeifFileTest, DamagedOrForeignFilesGiveErrors)
{
    // A valid file whose image claims 25000 x 25000 pixels: refused before any allocation.
    QByteArray forged = readAll(test::dataPath("exiv2-Stonehenge.heic"));
    const qsizetype ispe = forged.indexOf("ispe");
    ASSERT_GT(ispe, 0);
    forged.replace(ispe + 8, 8, QByteArray("\0\0\x61\xa8\0\0\x61\xa8", 8));
    QTemporaryDir dir;
    const QString forgedPath = dir.filePath(QStringLiteral("forged.heic"));
    ASSERT_TRUE(writeAll(forgedPath, forged));
    QString error;
    EXPECT_TRUE(decodeHeifImage(forgedPath, 85, &error).isNull());
    EXPECT_TRUE(error.contains(QStringLiteral("too large"))) << error.toStdString();

    for (const char* name :
         {"exiv2-issue_1793_poc.heic", "exiv2-pr_2612_poc.heic", "libheif-clap-overflow.heic",
          "libheif-clusterfuzz-5120279175102464.heic", "libheif-github_15.heic",
          "mde-HeifReader_IllegalArgument.heif", "exiv2-issue_1570_poc.bmff", "exiv2-nikon-d70.jpg",
          "no-such-file.heic"}) {
        const QString path = test::dataPath(name);
        QString metadataError, imageError;
        EXPECT_FALSE(readHeifMetadata(path, &metadataError)) << name;
        EXPECT_TRUE(decodeHeifImage(path, 85, &imageError).isNull()) << name;
        EXPECT_FALSE(metadataError.isEmpty() || imageError.isEmpty()) << name;
    }
}

}  // namespace
}  // namespace pelorin

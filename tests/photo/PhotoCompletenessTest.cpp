#include "photo/PhotoCompleteness.h"
#include "photo/PhotoRewrite.h"

#include "ExifTool.h"
#include "ImageMagick.h"
#include "TestPaths.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Whole files from cameras, phones, exiftool, ImageMagick and libheif's tests pass, and every
// cut of them is caught, wherever it falls.
TEST(PhotoCompleteness, WholeFilesPassAndEveryCutIsCaught)
{
    QTemporaryDir dir;
    const QString magick = dir.filePath(QStringLiteral("magick.tif"));
    ASSERT_TRUE(test::imageMagick({QStringLiteral("-size"), QStringLiteral("40x30"), QStringLiteral("gradient:red-blue"), magick}));
    const QString tiled = dir.filePath(QStringLiteral("tiled.tif"));
    ASSERT_TRUE(test::imageMagick({QStringLiteral("-size"), QStringLiteral("64x64"), QStringLiteral("gradient:red-blue"),
                                   QStringLiteral("-define"), QStringLiteral("tiff:tile-geometry=16x16"), tiled}));
    const QString moved = dir.filePath(QStringLiteral("moved.tif"));  // exiftool puts the directory first
    ASSERT_TRUE(QFile::copy(magick, moved));
    ASSERT_TRUE(test::exiftoolWrite(moved, {QStringLiteral("-Artist=someone")}));
    const QString webp = dir.filePath(QStringLiteral("magick.webp"));
    ASSERT_TRUE(test::imageMagick({QStringLiteral("-size"), QStringLiteral("40x30"), QStringLiteral("gradient:red-blue"), webp}));
    QStringList files{magick, tiled, moved, webp};
    for (const char* name : {"et-GPS.jpg", "exiv2-Reagan_all.jpg", "mde-Sony_Cybershot_orient6.jpg", "et-PNG.png",
                             "exiv2-1343_exif.png", "exiv2-Stonehenge.heic", "exiv2-iPhoneXR_orient6.heic",
                             "exiv2-avif_exif_xmp.avif"})
        files << test::dataPath(QString::fromLatin1(name));
    for (const QString& file : files) {
        const QByteArray bytes = contents(file);
        ASSERT_FALSE(bytes.isEmpty()) << file.toStdString();
        const PhotoFormat format = detectPhotoFormat(bytes.left(64), QFileInfo(file).suffix());
        EXPECT_TRUE(photoDataComplete(bytes, format)) << file.toStdString();
        for (qsizetype cut = 1; cut < bytes.size(); cut += qMax<qsizetype>(1, bytes.size() / 97))
            EXPECT_FALSE(photoDataComplete(bytes.left(cut), format)) << file.toStdString() << " cut at " << cut;
    }
    // A RIFF whose chunks do not start with the picture's header (a fuzzed WebP) is damaged.
    QByteArray headless = contents(webp);
    headless.replace(12, 4, QByteArray("\x07\0\0\0", 4));
    EXPECT_FALSE(photoDataComplete(headless, detectPhotoFormat(headless.left(64), QStringLiteral("webp"))));
    // Camera RAW kinds built on TIFF: whole ones pass, a DNG cut short by its source does not.
    for (const char* name : {"et-Canon350D.dng", "et-Nikon_D70.nef", "et-Canon_350D.cr2"})
        EXPECT_TRUE(photoFileComplete(test::dataPath(QString::fromLatin1(name)))) << name;
    EXPECT_FALSE(photoFileComplete(test::dataPath(QStringLiteral("ft-Leica_M10_truncated.dng"))));
    EXPECT_TRUE(photoFileComplete(magick));
    EXPECT_FALSE(photoFileComplete(dir.filePath(QStringLiteral("missing.tif"))));
}

// A directory that points back at itself and strip tables claiming billions of entries end at
// once.
// A PNG whose first chunk is no header (a fuzzed copy of exiv2's sample): exiv2 wrote a copy
// without its metadata and without the edit, so the photo is skipped as damaged instead.
TEST(PhotoCompleteness, APngNotStartingWithItsHeaderIsSkippedNotStripped)
{
    const QString path = test::dataPath(QStringLiteral("fuzz-png-header-chunk-renamed.png"));
    const QJsonObject tags = test::exiftool(path);
    ASSERT_EQ(tags.value(QStringLiteral("IFD0:ImageDescription")).toString(), QStringLiteral("Can you read me?"));
    EXPECT_EQ(tags.value(QStringLiteral("ExifTool:Warning")).toString(), QStringLiteral("PNG image did not start with IHDR"));

    QTemporaryDir dir;
    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{TIFF}"), QVariantMap{{QStringLiteral("Artist"), QStringLiteral("Jane")}});
    const QString output = dir.filePath(QStringLiteral("headless.png"));
    const PhotoWriteResult result = CopyPhotoWithProperties(path, changes, output);
    EXPECT_EQ(result.outcome, PhotoWriteResult::Outcome::Skipped);
    EXPECT_FALSE(QFileInfo::exists(output)) << "exiftool finds in it: "
                                             << QJsonDocument(test::exiftool(output)).toJson().toStdString();
}

TEST(PhotoCompleteness, HostileTiffDirectoriesEndQuickly)
{
    QByteArray tiff("II*\0\x08\0\0\0", 8);
    auto entry = [&](quint16 tag, quint16 type, quint32 count, quint32 value) {
        char raw[12];
        qToLittleEndian(tag, raw);
        qToLittleEndian(type, raw + 2);
        qToLittleEndian(count, raw + 4);
        qToLittleEndian(value, raw + 8);
        tiff.append(raw, 12);
    };
    tiff.append("\x02\0", 2);
    entry(273, 4, 1, 0);  // one strip at offset 0, 8 bytes long: inside the file
    entry(279, 4, 1, 8);
    tiff.append("\x08\0\0\0", 4);  // the next directory is this one again
    PhotoFormat format = detectPhotoFormat(tiff, QStringLiteral("tif"));
    EXPECT_TRUE(photoDataComplete(tiff, format));

    tiff.resize(8);
    tiff.append("\x02\0", 2);
    entry(273, 4, 0xFFFFFFFF, 100);
    entry(279, 4, 0xFFFFFFFF, 100);
    tiff.append(QByteArray(4, '\0'));
    EXPECT_FALSE(photoDataComplete(tiff, format));
}

}  // namespace
}  // namespace pelorin

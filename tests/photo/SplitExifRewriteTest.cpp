#include "photo/PhotoProperties.h"
#include "photo/PhotoRewrite.h"

#include "EncodedPicture.h"
#include "ExifTool.h"
#include "FileBytes.h"
#include "QtPrinters.h"
#include "TestPaths.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

using test::dataPath;
using test::readAll;

// Pillow's sample whose IFD0 ImageDescription ("firstsecond") starts in one Exif APP1 segment
// and ends in the next; IFD0 is all its EXIF has.
const QString kSplitExif = QStringLiteral("pil-multiple_exif.jpg");

QString descriptionOf(const QString& path)
{
    return test::exiftool(path).value(QStringLiteral("IFD0:ImageDescription")).toString();
}

TEST(SplitExifRewrite, AnExifSplitOverSegmentsIsReadWholeAndWrittenAsOne)
{
    const QString source = dataPath(kSplitExif);
    ASSERT_EQ(descriptionOf(source), QStringLiteral("firstsecond"));
    const QVariantMap tiff = readPhotoProperties(source).properties.value(QStringLiteral("{TIFF}")).toMap();
    EXPECT_EQ(tiff.value(QStringLiteral("ImageDescription")).toString(), QStringLiteral("firstsecond"));

    // What apply sends (the group as read, plus the artist), a GPS removal (nothing to remove,
    // yet a rewrite) and a small copy: each keeps the whole description, in one valid segment.
    PhotoChanges artist;
    QVariantMap withArtist = tiff;
    withArtist.insert(QStringLiteral("Artist"), QStringLiteral("Someone"));
    artist.groups.insert(QStringLiteral("{TIFF}"), withArtist);
    PhotoChanges noGps;
    noGps.groups.insert(QStringLiteral("{GPS}"), QVariant());
    QTemporaryDir out;
    for (const auto& [label, changes] : {std::pair{QStringLiteral("artist"), artist}, std::pair{QStringLiteral("gps"), noGps}}) {
        SCOPED_TRACE(label.toStdString());
        const QString output = out.filePath(label + QStringLiteral(".jpg"));
        const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
        ASSERT_EQ(result.outcome, PhotoWriteResult::Outcome::Rewritten) << result.reason.toStdString();
        EXPECT_EQ(descriptionOf(output), QStringLiteral("firstsecond"));
        EXPECT_EQ(test::newValidationWarnings(source, output), QStringList());
        EXPECT_EQ(readAll(output).count(QByteArray("Exif\0\0", 6)), 1);
    }

    const QByteArray small = test::plainJpeg(8, 8, Qt::white);
    ASSERT_FALSE(small.isEmpty());
    QString error;
    const auto carried = carryMetadataOver(readAll(source), small, {}, &error);
    ASSERT_TRUE(carried) << error.toStdString();
    const QString copy = out.filePath(QStringLiteral("small.jpg"));
    ASSERT_TRUE(test::writeAll(copy, *carried));
    EXPECT_EQ(descriptionOf(copy), QStringLiteral("firstsecond"));
}

// A date set in a JPEG whose EXIF has no Exif directory creates one; it gets what the EXIF
// standard requires of it, as exiftool's validation checks, and IFD0 stays as it was.
TEST(SplitExifRewrite, ANewExifDirectoryGetsTheTagsAJpegRequires)
{
    const QString source = dataPath(kSplitExif);
    PhotoChanges date;
    date.groups.insert(QStringLiteral("{Exif}"),
                       QVariantMap{{QStringLiteral("DateTimeOriginal"), QStringLiteral("2001:02:03 04:05:06")}});
    QTemporaryDir out;
    const QString output = out.filePath(QStringLiteral("dated.jpg"));
    const PhotoWriteResult result = CopyPhotoWithProperties(source, date, output);
    ASSERT_EQ(result.outcome, PhotoWriteResult::Outcome::Rewritten) << result.reason.toStdString();
    EXPECT_EQ(test::newValidationWarnings(source, output), QStringList());
    const QJsonObject tags = test::exiftool(output);
    EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("2001:02:03 04:05:06"));
    EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:ExifImageWidth")).toInt(), 1);  // the JPEG's own frame
    EXPECT_FALSE(tags.contains(QStringLiteral("IFD0:XResolution")));  // IFD0 was not the change's to complete
}

}  // namespace
}  // namespace pelorin

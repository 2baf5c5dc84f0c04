#include "photo/PhotoRewrite.h"

#include "ExifTool.h"
#include "ImageMagick.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

// WebP holds Exif and XMP but no IPTC: an edit that also sets IPTC values writes them as their
// XMP counterparts, and the read-back does not refuse the output for the missing IPTC record.
TEST(WebpRewriteTest, AnEditWithIptcValuesIsWrittenIntoTheXmp)
{
    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("red.webp"));
    ASSERT_TRUE(test::imageMagick({"-size", "32x24", "gradient:red-blue", source}));
    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{IPTC}"), QVariantMap{{QStringLiteral("ObjectName"), QStringLiteral("Harbour")}});
    changes.groups.insert(QStringLiteral("{TIFF}"), QVariantMap{{QStringLiteral("Artist"), QStringLiteral("Jane")}});
    const QString output = dir.filePath(QStringLiteral("out.webp"));

    const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
    ASSERT_EQ(result.outcome, PhotoWriteResult::Outcome::Rewritten) << result.reason.toStdString();
    EXPECT_TRUE(result.warnings.isEmpty()) << result.warnings.join(QLatin1Char(' ')).toStdString();
    const QJsonObject tags = test::exiftool(output);
    EXPECT_EQ(tags.value(QStringLiteral("IFD0:Artist")).toString(), QStringLiteral("Jane"));
    EXPECT_FALSE(tags.contains(QStringLiteral("IPTC:ObjectName")));
    EXPECT_EQ(tags.value(QStringLiteral("XMP-dc:Title")).toString(), QStringLiteral("Harbour"));
    EXPECT_FALSE(tags.contains(QStringLiteral("ExifTool:Warning"))) << tags.value(QStringLiteral("ExifTool:Warning")).toString().toStdString();
}

// exiv2's WebP writer keeps the XMP packet it read when every XMP value is removed: a removal of
// everything (exiftool puts the XMP and EXIF into ImageMagick's WebP) must leave none.
TEST(WebpRewriteTest, RemovingEverythingLeavesNoXmp)
{
    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("red.webp"));
    ASSERT_TRUE(test::imageMagick({"-size", "32x24", "gradient:red-blue", source}));
    ASSERT_TRUE(test::exiftoolWrite(source, {QStringLiteral("-XMP-dc:Title=Harbour"), QStringLiteral("-EXIF:Artist=Jane")}));
    ASSERT_EQ(test::exiftool(source).value(QStringLiteral("XMP-dc:Title")).toString(), QStringLiteral("Harbour"));
    PhotoChanges changes;
    changes.removeAllMetadata = true;
    const QString output = dir.filePath(QStringLiteral("out.webp"));
    const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
    ASSERT_EQ(result.outcome, PhotoWriteResult::Outcome::Rewritten) << result.reason.toStdString();
    const QJsonObject tags = test::exiftool(output);
    for (auto it = tags.begin(); it != tags.end(); ++it)
        EXPECT_FALSE(it.key().startsWith(QLatin1String("XMP")) || it.key() == QLatin1String("IFD0:Artist")) << it.key().toStdString();
}

}  // namespace
}  // namespace pelorin

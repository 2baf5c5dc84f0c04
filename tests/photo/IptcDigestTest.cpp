// Photoshop's segments, the IPTC record and its digest, and the XMP packet after rewrites,
// checked with exiftool: blocks a command does not change keep the source's own bytes, since
// exiv2 would write them anew in forms other programs read differently.
#include "photo/PhotoRewrite.h"

#include "ExifTool.h"
#include "FileBytes.h"
#include "ImageMagick.h"
#include "TestPaths.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

using test::exiftool;
using test::readAll;

QByteArray binaryTag(const QString& path, const QString& tag)
{
    QProcess process;
    process.start(QStringLiteral("exiftool"), {QStringLiteral("-b"), QStringLiteral("-") + tag, path});
    return process.waitForFinished(60000) ? process.readAllStandardOutput() : QByteArray();
}

// The Photoshop (APP13) segments of a JPEG, as they stand in the file.
QByteArray photoshopSegments(const QByteArray& jpeg)
{
    QByteArray found;
    qsizetype pos = 2;
    while (pos + 4 <= jpeg.size() && quint8(jpeg[pos]) == 0xFF && quint8(jpeg[pos + 1]) != 0xDA) {
        const qsizetype length = (quint8(jpeg[pos + 2]) << 8) | quint8(jpeg[pos + 3]);
        if (quint8(jpeg[pos + 1]) == 0xED)
            found += jpeg.mid(pos, 2 + length);
        pos += 2 + length;
    }
    return found;
}


class IptcDigestTest : public ::testing::Test {
protected:
    QString copyOf(const QString& name)
    {
        const QString path = dir.filePath(QStringLiteral("in-") + name);
        QFile::copy(test::dataPath(name), path);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
        return path;
    }
    QString rewrite(const QString& source, const PhotoChanges& changes)
    {
        const QString output = dir.filePath(QStringLiteral("out-%1.jpg").arg(++outputs));
        const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
        EXPECT_TRUE(result.ok()) << result.reason.toStdString();
        return output;
    }
    static bool digestCurrent(const QJsonObject& tags)
    {
        const QString digest = tags.value(QStringLiteral("Photoshop:IPTCDigest")).toString();
        return !digest.isEmpty() && digest == tags.value(QStringLiteral("File:CurrentIPTCDigest")).toString();
    }
    QTemporaryDir dir;
    int outputs = 0;
};

// Photoshop Elements saved this photo with its IPTC, XMP and a current digest.
TEST_F(IptcDigestTest, EditedIptcGetsACurrentDigestAndTheXmpMirrorsFollow)
{
    const QString source = copyOf(QStringLiteral("exiv2-Reagan_all.jpg"));
    ASSERT_TRUE(digestCurrent(exiftool(source)));
    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{IPTC}"),
                          QVariantMap{{QStringLiteral("ObjectName"), QStringLiteral("New title")},
                                      {QStringLiteral("Keywords"), QVariantList{QStringLiteral("alpha"), QStringLiteral("beta")}}});
    const QJsonObject after = exiftool(rewrite(source, changes));
    EXPECT_EQ(after.value(QStringLiteral("IPTC:ObjectName")).toString(), QStringLiteral("New title"));
    // Photoshop takes the XMP for up to date while the digest is current: it must say the same.
    EXPECT_EQ(after.value(QStringLiteral("XMP-dc:Title")).toString(), QStringLiteral("New title"));
    EXPECT_EQ(after.value(QStringLiteral("XMP-dc:Subject")).toVariant(), (QVariantList{QStringLiteral("alpha"), QStringLiteral("beta")}));
    EXPECT_TRUE(digestCurrent(after));
    for (const QString& warning : test::validationWarnings(dir.filePath(QStringLiteral("out-1.jpg"))))
        EXPECT_FALSE(warning.contains(QLatin1String("IPTCDigest"))) << warning.toStdString();
}

TEST_F(IptcDigestTest, RewritesThatLeaveTheIptcAloneKeepTheDigestCurrentAndRemovalDropsIt)
{
    const QString source = copyOf(QStringLiteral("exiv2-Reagan_all.jpg"));
    PhotoChanges gps;
    gps.groups.insert(QStringLiteral("{GPS}"), QVariant());
    EXPECT_TRUE(digestCurrent(exiftool(rewrite(source, gps))));

    PhotoChanges noIptc;
    noIptc.groups.insert(QStringLiteral("{IPTC}"), QVariant());
    const QJsonObject stripped = exiftool(rewrite(source, noIptc));
    EXPECT_TRUE(test::tagsOf(stripped, {QStringLiteral("IPTC:")}).isEmpty());
    EXPECT_FALSE(stripped.contains(QStringLiteral("Photoshop:IPTCDigest")));
    // The other Photoshop resources stay.
    EXPECT_EQ(stripped.value(QStringLiteral("Photoshop:WriterName")).toString(), QStringLiteral("Adobe Photoshop Elements"));
}

// A digest that was already out of date still says the IPTC is the newer.
TEST_F(IptcDigestTest, ADigestOutOfDateInTheSourceIsLeftAsItWas)
{
    const QString source = copyOf(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"));
    const QJsonObject before = exiftool(source);
    ASSERT_FALSE(digestCurrent(before));
    PhotoChanges gps;
    gps.groups.insert(QStringLiteral("{GPS}"), QVariant());
    const QJsonObject after = exiftool(rewrite(source, gps));
    EXPECT_EQ(after.value(QStringLiteral("Photoshop:IPTCDigest")), before.value(QStringLiteral("Photoshop:IPTCDigest")));
}

// exiftool writes Windows' MicrosoftPhoto namespace without a trailing slash, as Windows does;
// exiv2 adds one when it writes the packet, which makes it another namespace to strict readers.
TEST_F(IptcDigestTest, XmpAndIptcTheCommandLeftAloneAreTheSourcesBytes)
{
    const QString source = copyOf(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"));
    ASSERT_TRUE(test::exiftoolWrite(source, {QStringLiteral("-XMP-microsoft:LastKeywordXMP=People/Marie"),
                                             QStringLiteral("-XMP-dc:Title=Furnace Creek"),
                                             QStringLiteral("-IPTC:Keywords=alpha")}));
    const QByteArray packet = binaryTag(source, QStringLiteral("XMP"));
    ASSERT_TRUE(packet.contains("http://ns.microsoft.com/photo/1.0'") || packet.contains("http://ns.microsoft.com/photo/1.0\""));

    PhotoChanges gpsRemoval;
    gpsRemoval.groups.insert(QStringLiteral("{GPS}"), QVariant());
    const QString output = rewrite(source, gpsRemoval);
    EXPECT_EQ(binaryTag(output, QStringLiteral("XMP")), packet);
    EXPECT_EQ(photoshopSegments(readAll(output)), photoshopSegments(readAll(source)));
    EXPECT_TRUE(exiftool(output).value(QStringLiteral("GPS:GPSLatitude")).isUndefined());
    EXPECT_EQ(test::newValidationWarnings(source, output), QStringList{});

    // A block that is edited is written anew, with the edit (an IPTC title, which XMP mirrors)...
    PhotoChanges titled;
    titled.groups.insert(QStringLiteral("{IPTC}"), QVariantMap{{QStringLiteral("ObjectName"), QStringLiteral("New")},
                                                              {QStringLiteral("Keywords"), QVariantList{QStringLiteral("alpha")}}});
    const QString edited = rewrite(source, titled);
    EXPECT_EQ(exiftool(edited).value(QStringLiteral("XMP-dc:Title")).toString(), QStringLiteral("New"));
    // ... in the source's namespaces.
    EXPECT_FALSE(binaryTag(edited, QStringLiteral("XMP")).contains("http://ns.microsoft.com/photo/1.0/"));
    EXPECT_EQ(exiftool(edited).value(QStringLiteral("XMP-microsoft:LastKeywordXMP")).toVariant().toStringList(), QStringList{QStringLiteral("People/Marie")});
    EXPECT_EQ(test::newValidationWarnings(source, edited), QStringList{});
}

// A capture date into a JPEG whose EXIF held only IFD0 makes an Exif directory, which must hold
// what the EXIF standard requires of it in a JPEG; the same for a TIFF from ImageMagick.
TEST_F(IptcDigestTest, ANewExifDirectoryGetsWhatAJpegRequires)
{
    const QString source = copyOf(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"));
    ASSERT_TRUE(test::exiftoolWrite(source, {QStringLiteral("-EXIF:all="), QStringLiteral("-IFD0:Make=Canon"),
                                             QStringLiteral("-IFD0:XResolution=72"), QStringLiteral("-IFD0:YResolution=72"),
                                             QStringLiteral("-IFD0:ResolutionUnit=inches"),
                                             QStringLiteral("-IFD0:YCbCrPositioning=Centered")}));
    ASSERT_TRUE(exiftool(source).value(QStringLiteral("ExifIFD:ExifVersion")).isUndefined());
    PhotoChanges dated;
    dated.groups.insert(QStringLiteral("{Exif}"), QVariantMap{{QStringLiteral("DateTimeOriginal"), QStringLiteral("2001:02:03 04:05:06")}});
    const QString output = rewrite(source, dated);
    const QJsonObject after = exiftool(output);
    EXPECT_EQ(after.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("2001:02:03 04:05:06"));
    EXPECT_EQ(test::newValidationWarnings(source, output), QStringList{});

    const QString tiff = dir.filePath(QStringLiteral("magick.tif"));
    ASSERT_TRUE(test::imageMagick({QStringLiteral("-size"), QStringLiteral("40x30"), QStringLiteral("gradient:red-blue"), tiff}));
    PhotoChanges placed = dated;
    placed.groups.insert(QStringLiteral("{GPS}"), QVariantMap{{QStringLiteral("Latitude"), 12.5}, {QStringLiteral("LatitudeRef"), QStringLiteral("N")},
                                                            {QStringLiteral("Longitude"), 45.25}, {QStringLiteral("LongitudeRef"), QStringLiteral("E")}});
    const QString tiffOut = dir.filePath(QStringLiteral("out.tif"));
    const PhotoWriteResult written = CopyPhotoWithProperties(tiff, placed, tiffOut);
    ASSERT_TRUE(written.ok()) << written.reason.toStdString();
    EXPECT_EQ(test::exiftool(tiffOut).value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("2001:02:03 04:05:06"));
    EXPECT_EQ(test::newValidationWarnings(tiff, tiffOut), QStringList{});
}

// Photoshop saved this file with two Photoshop segments, each holding an IPTC record.
TEST_F(IptcDigestTest, EveryIptcRecordGoesOnRemovalAndStaysOnOtherCommands)
{
    const QString source = copyOf(QStringLiteral("exiv2-iptc-two-APP13.jpg"));
    ASSERT_EQ(exiftool(source, {QStringLiteral("-a")}).value(QStringLiteral("IPTC:Credit")).toString().isEmpty(), false);

    PhotoChanges iptcRemoval;
    iptcRemoval.groups.insert(QStringLiteral("{IPTC}"), QVariant());
    const QJsonObject stripped = exiftool(rewrite(source, iptcRemoval), {QStringLiteral("-a"), QStringLiteral("-G1")});
    for (auto it = stripped.begin(); it != stripped.end(); ++it)
        EXPECT_FALSE(it.key().startsWith(QLatin1String("IPTC"))) << it.key().toStdString();
    EXPECT_FALSE(stripped.value(QStringLiteral("Photoshop:PhotoshopThumbnail")).isUndefined());

    // A new JPEG encoded from it keeps both records as they were.
    QImage picture;
    ASSERT_TRUE(picture.load(source));
    QByteArray encoded;
    {
        QBuffer buffer(&encoded);
        ASSERT_TRUE(buffer.open(QIODevice::WriteOnly) && picture.save(&buffer, "JPEG", 90));
    }
    QString error;
    const auto carried = carryMetadataOver(readAll(source), encoded, {}, &error);
    ASSERT_TRUE(carried) << error.toStdString();
    const QString recompressed = dir.filePath(QStringLiteral("recompressed.jpg"));
    QFile file(recompressed);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(*carried) == carried->size());
    file.close();
    QProcess credits;
    credits.start(QStringLiteral("exiftool"), {QStringLiteral("-a"), QStringLiteral("-s3"), QStringLiteral("-IPTC:Credit"), recompressed});
    ASSERT_TRUE(credits.waitForFinished(60000));
    QProcess sourceCredits;
    sourceCredits.start(QStringLiteral("exiftool"), {QStringLiteral("-a"), QStringLiteral("-s3"), QStringLiteral("-IPTC:Credit"), source});
    ASSERT_TRUE(sourceCredits.waitForFinished(60000));
    EXPECT_EQ(credits.readAllStandardOutput(), sourceCredits.readAllStandardOutput());
}

}  // namespace
}  // namespace pelorin

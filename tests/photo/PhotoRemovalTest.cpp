#include "photo/PhotoProperties.h"
#include "photo/PhotoRemoval.h"
#include "photo/PhotoRewrite.h"

#include "ExifTool.h"
#include "QtPrinters.h"
#include "TestPaths.h"
#include "TestSelection.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

using test::dataPath;
using test::exiftool;
using test::tagsOf;

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// The entropy-coded image data: from the first start-of-scan marker to the end.
QByteArray scanData(const QByteArray& jpeg)
{
    const qsizetype sos = jpeg.indexOf(QByteArray("\xFF\xDA", 2));
    return sos < 0 ? QByteArray() : jpeg.mid(sos);
}

QStringList entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
}

class PhotoRemovalTest : public ::testing::Test {
protected:
    // A scoped copy of a sample, so nothing a test does can reach tests/data.
    QString copyOf(const QString& name, const QString& as = {})
    {
        const QString path = inputs.filePath(as.isEmpty() ? name : as);
        QFile::copy(dataPath(name), path);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
        return path;
    }
    PhotoSelection select(const QStringList& paths, PhotoSource source = PhotoSource::Computer)
    {
        return test::selectionOf(paths, source);
    }
    CommandContext context()
    {
        CommandContext c;
        c.storageFolder = store.path();
        c.reveal.revealFile = [this](const QString& f) { revealed << f; };
        c.reveal.openFolder = [this](const QString& f) { opened << f; };
        return c;
    }
    QTemporaryDir inputs;
    QTemporaryDir store;
    QStringList revealed;
    QStringList opened;
};

TEST_F(PhotoRemovalTest, GpsRemovalLeavesNoLocationAndEverythingElseAsItWas)
{
    const QString source = copyOf(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"));
    // The sample has GPS in EXIF only; put it into XMP too, as phone apps do.
    ASSERT_TRUE(test::exiftoolWrite(source, {QStringLiteral("-XMP-exif:GPSLatitude=36.46"),
                                             QStringLiteral("-XMP-exif:GPSLongitude=-116.87"),
                                             QStringLiteral("-XMP-dc:Title=Furnace Creek")}));
    const QByteArray before = readAll(source);
    const QJsonObject tagsBefore = exiftool(source);
    ASSERT_FALSE(tagsOf(tagsBefore, {QStringLiteral("GPS")}).isEmpty());
    ASSERT_TRUE(tagsBefore.contains(QStringLiteral("XMP-exif:GPSLatitude")));

    const CommandResult result = removePhotoMetadata(MetadataRemoval::Gps, select({source}), context());
    ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
    const QString output = store.filePath(QFileInfo(source).fileName());
    EXPECT_EQ(result.written, QStringList{output});
    EXPECT_EQ(revealed, QStringList{output});

    const QJsonObject tagsAfter = exiftool(output);
    for (auto it = tagsAfter.begin(); it != tagsAfter.end(); ++it)
        EXPECT_FALSE(it.key().contains(QLatin1String("GPS"))) << it.key().toStdString();
    // Every EXIF, IPTC and non-GPS XMP value is still there, unchanged.
    for (const QString& group : {QStringLiteral("IFD0:"), QStringLiteral("ExifIFD:"), QStringLiteral("IPTC:"),
                                 QStringLiteral("XMP-dc:"), QStringLiteral("XMP-aux:"), QStringLiteral("Photoshop:")}) {
        const QJsonObject wanted = tagsOf(tagsBefore, {group});
        for (auto it = wanted.begin(); it != wanted.end(); ++it) {
            if (!it.key().contains(QLatin1String("GPS"))) {
                EXPECT_EQ(tagsAfter.value(it.key()), it.value()) << it.key().toStdString();
            }
        }
    }
    EXPECT_EQ(scanData(readAll(output)), scanData(before));
    EXPECT_EQ(readAll(source), before);
}

TEST_F(PhotoRemovalTest, RemovingAllKeepsOnlyTheColourProfileAndTheOrientation)
{
    const QString source = copyOf(QStringLiteral("exiv2-Reagan_all.jpg"));
    ASSERT_TRUE(test::exiftoolWrite(source, {QStringLiteral("-IFD0:Orientation#=6"),
                                             QStringLiteral("-Comment=private note")}));
    const QJsonObject before = exiftool(source);
    const CommandResult result = removePhotoMetadata(MetadataRemoval::All, select({source}), context());
    ASSERT_TRUE(result.succeeded());
    EXPECT_EQ(opened, QStringList{store.path()});
    const QString output = store.filePath(QStringLiteral("exiv2-Reagan_all.jpg"));
    const QJsonObject after = exiftool(output);
    for (auto it = after.begin(); it != after.end(); ++it) {
        const QString group = it.key().section(QLatin1Char(':'), 0, 0);
        const bool allowed = group == QLatin1String("SourceFile") || group == QLatin1String("ExifTool")
                             || group == QLatin1String("System") || group == QLatin1String("File")
                             || group == QLatin1String("Composite") || group == QLatin1String("JFIF")
                             || group == QLatin1String("Adobe") || group.startsWith(QLatin1String("ICC"))
                             || it.key() == QLatin1String("IFD0:Orientation");
        EXPECT_TRUE(allowed) << it.key().toStdString();
    }
    EXPECT_EQ(after.value(QStringLiteral("IFD0:Orientation")).toInt(), 6);
    EXPECT_EQ(after.value(QStringLiteral("ICC_Profile:ProfileDescription")),
              before.value(QStringLiteral("ICC_Profile:ProfileDescription")));
    // The same picture: identical pixels once decoded.
    EXPECT_EQ(QImage(output).convertToFormat(QImage::Format_RGB32),
              QImage(source).convertToFormat(QImage::Format_RGB32));
}

TEST_F(PhotoRemovalTest, ExifAndIptcRemovalsTakeTheirGroupsAndMirrors)
{
    const QString source = copyOf(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"));
    ASSERT_TRUE(test::exiftoolWrite(source, {QStringLiteral("-XMP-exif:DateTimeOriginal=2010:01:02 03:04:05"),
                                             QStringLiteral("-XMP-tiff:Make=Canon")}));
    ASSERT_TRUE(removePhotoMetadata(MetadataRemoval::Exif, select({source}), context()).succeeded());
    const QJsonObject noExif = exiftool(store.filePath(QFileInfo(source).fileName()));
    EXPECT_TRUE(tagsOf(noExif, {QStringLiteral("ExifIFD:"), QStringLiteral("XMP-exif:"),
                                QStringLiteral("XMP-tiff:"), QStringLiteral("XMP-aux:")}).isEmpty());
    EXPECT_FALSE(tagsOf(noExif, {QStringLiteral("GPS:")}).isEmpty());
    EXPECT_FALSE(tagsOf(noExif, {QStringLiteral("IPTC:")}).isEmpty());

    ASSERT_TRUE(removePhotoMetadata(MetadataRemoval::Iptc, select({source}), context()).succeeded());
    const QJsonObject noIptc = exiftool(store.filePath(QFileInfo(source).fileName()));
    EXPECT_TRUE(tagsOf(noIptc, {QStringLiteral("IPTC:")}).isEmpty());
    EXPECT_FALSE(tagsOf(noIptc, {QStringLiteral("ExifIFD:")}).isEmpty());
}


TEST_F(PhotoRemovalTest, ExifRemovalFromADngTakesTheMakerNotesKeptInItsPrivateData)
{
    // A DNG keeps the camera's maker notes (with its serial number) in IFD0's
    // DNGPrivateData, outside the Exif directory.
    const QString source = copyOf(QStringLiteral("et-Canon350D.dng"));
    ASSERT_FALSE(tagsOf(exiftool(source, {QStringLiteral("-MakerNotes:all")}),
                        {QStringLiteral("Canon")}).isEmpty());
    for (MetadataRemoval what : {MetadataRemoval::Exif, MetadataRemoval::ExifAndGps}) {
        ASSERT_TRUE(removePhotoMetadata(what, select({source}), context()).succeeded());
        const QString output = store.filePath(QFileInfo(source).fileName());
        const QJsonObject makerNotes = exiftool(output, {QStringLiteral("-MakerNotes:all"),
                                                         QStringLiteral("-DNGPrivateData")});
        EXPECT_EQ(makerNotes.keys(), QStringList{QStringLiteral("SourceFile")});
        const QJsonObject kept = exiftool(output);
        EXPECT_EQ(kept.value(QStringLiteral("IFD0:Model")).toString(), QStringLiteral("Canon EOS 350D DIGITAL"));
        EXPECT_FALSE(kept.value(QStringLiteral("IFD0:DNGVersion")).isUndefined());
        QFile::remove(output);
    }
}
TEST_F(PhotoRemovalTest, CameraPhotosAreTakenFromTheStorageFolderUnderPrefixedNames)
{
    QFile::copy(dataPath(QStringLiteral("et-GPS.jpg")), store.filePath(QStringLiteral("IMG_1.jpg")));
    PhotoSelection selection = select({QStringLiteral("/camera/IMG_1.jpg"), QStringLiteral("/camera/IMG_2.jpg")},
                                      PhotoSource::Camera);
    const CommandResult gps = removePhotoMetadata(MetadataRemoval::Gps, selection, context());
    EXPECT_EQ(gps.written, QStringList{store.filePath(QStringLiteral("NoGPS_IMG_1.jpg"))});
    ASSERT_EQ(gps.skipped.size(), 1);  // IMG_2 was never downloaded
    EXPECT_TRUE(revealed.isEmpty());
    EXPECT_EQ(opened, QStringList{store.path()});
    const CommandResult all = removePhotoMetadata(MetadataRemoval::All, selection, context());
    EXPECT_EQ(all.written, QStringList{store.filePath(QStringLiteral("NoExifAndGPS_IMG_1.jpg"))});
    EXPECT_TRUE(tagsOf(exiftool(all.written.value(0)), {QStringLiteral("IPTC:"), QStringLiteral("ExifIFD:")}).isEmpty());
}

TEST_F(PhotoRemovalTest, KindsThatCannotBeRewrittenAreSkippedAndWriteNothing)
{
    const QString raf = copyOf(QStringLiteral("et-Fuji_S5Pro.raf"));
    const CommandResult result = removePhotoMetadata(MetadataRemoval::Gps, select({raf}), context());
    ASSERT_EQ(result.skipped.size(), 1);
    EXPECT_EQ(result.skipped[0].reason, QStringLiteral("cannot remove metadata from RAF files"));
    EXPECT_TRUE(entries(store.path()).isEmpty());

    const CommandResult none = removePhotoMetadata(MetadataRemoval::Gps, PhotoSelection{}, context());
    ASSERT_TRUE(none.alert);
    EXPECT_EQ(none.alert->message, QStringLiteral("No Item has been selected"));
}

TEST_F(PhotoRemovalTest, ChangesToKindsThatCannotBeRewrittenGoToASidecar)
{
    for (const QString& name : {QStringLiteral("et-Fuji_S5Pro.raf")}) {
        const QString source = copyOf(name);
        PhotoChanges changes;
        changes.groups.insert(QStringLiteral("{Exif}"),
                              QVariantMap{{QStringLiteral("DateTimeOriginal"), QStringLiteral("2001:02:03 04:05:06")}});
        const QString output = store.filePath(name);
        const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
        ASSERT_EQ(result.outcome, PhotoWriteResult::Outcome::CopiedWithSidecar) << result.reason.toStdString();
        EXPECT_EQ(readAll(output), readAll(source));
        const QJsonObject sidecar = exiftool(output + QStringLiteral(".xmp"));
        EXPECT_EQ(sidecar.value(QStringLiteral("XMP-exif:DateTimeOriginal")).toString(), QStringLiteral("2001:02:03 04:05:06"))
            << name.toStdString();
    }
    for (const QString& file : entries(store.path()))
        EXPECT_GT(QFileInfo(store.filePath(file)).size(), 0) << file.toStdString();
}

TEST_F(PhotoRemovalTest, ReplacingAGroupChangesOnlyWhatDiffersAndKeepsMakerNotes)
{
    const QString source = copyOf(QStringLiteral("et-Canon_1DmkIII.jpg"));
    ASSERT_TRUE(test::exiftoolWrite(source, {QStringLiteral("-XMP-exif:GPSLatitude=1.5"), QStringLiteral("-XMP-exif:GPSLongitude=2.5")}));
    const QJsonObject before = exiftool(source);
    ASSERT_FALSE(tagsOf(before, {QStringLiteral("Canon:")}).isEmpty());
    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{GPS}"),
                          QVariantMap{{QStringLiteral("Latitude"), 33.45}, {QStringLiteral("LatitudeRef"), QStringLiteral("S")},
                                      {QStringLiteral("Longitude"), 70.66}, {QStringLiteral("LongitudeRef"), QStringLiteral("W")},
                                      {QStringLiteral("Altitude"), 5.0}, {QStringLiteral("AltitudeRef"), 1},
                                      {QStringLiteral("GPSVersion"), QVariantList{2, 2, 0, 0}},
                                      {QStringLiteral("TimeStamp"), QStringLiteral("10:20:30")}});
    const QString output = store.filePath(QStringLiteral("canon.jpg"));
    const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
    ASSERT_TRUE(result.ok()) << result.reason.toStdString();
    EXPECT_TRUE(result.warnings.isEmpty()) << result.warnings.join(QLatin1Char(';')).toStdString();
    const QJsonObject after = exiftool(output);
    EXPECT_NEAR(after.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 33.45, 1e-6);
    EXPECT_EQ(after.value(QStringLiteral("GPS:GPSLatitudeRef")).toString(), QStringLiteral("S"));
    EXPECT_NEAR(after.value(QStringLiteral("GPS:GPSLongitude")).toDouble(), 70.66, 1e-6);
    EXPECT_EQ(after.value(QStringLiteral("GPS:GPSAltitudeRef")).toInt(), 1);
    EXPECT_EQ(after.value(QStringLiteral("GPS:GPSVersionID")).toString(), QStringLiteral("2 2 0 0"));
    EXPECT_EQ(after.value(QStringLiteral("GPS:GPSTimeStamp")).toString(), QStringLiteral("10:20:30"));
    // The XMP copy of the location follows the new GPS group.
    EXPECT_NEAR(after.value(QStringLiteral("XMP-exif:GPSLatitude")).toDouble(), -33.45, 1e-6);
    EXPECT_NEAR(after.value(QStringLiteral("XMP-exif:GPSLongitude")).toDouble(), -70.66, 1e-6);
    for (const QString& group : {QStringLiteral("Canon:"), QStringLiteral("ExifIFD:"), QStringLiteral("IFD0:")}) {
        const QJsonObject wanted = tagsOf(before, {group});
        EXPECT_EQ(tagsOf(after, {group}), wanted) << group.toStdString();
    }
}

TEST_F(PhotoRemovalTest, DateChangesKeepXmpDatesInStep)
{
    const QString source = copyOf(QStringLiteral("et-GPS.jpg"));
    ASSERT_TRUE(test::exiftoolWrite(source, {QStringLiteral("-XMP-photoshop:DateCreated=2002:07:13 15:58:28+02:00"),
                                             QStringLiteral("-XMP-xmp:CreateDate=2002:07:13 15:58:28")}));
    PhotoProperties photo = readPhotoProperties(source);
    QVariantMap exif = photo.properties.value(QStringLiteral("{Exif}")).toMap();
    exif.insert(QStringLiteral("DateTimeOriginal"), QStringLiteral("2003:08:14 16:59:29"));
    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{Exif}"), exif);
    const QString output = store.filePath(QStringLiteral("dated.jpg"));
    ASSERT_TRUE(CopyPhotoWithProperties(source, changes, output).ok());
    const QJsonObject after = exiftool(output);
    EXPECT_EQ(after.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("2003:08:14 16:59:29"));
    EXPECT_EQ(after.value(QStringLiteral("XMP-photoshop:DateCreated")).toString(), QStringLiteral("2003:08:14 16:59:29+02:00"));
    // The digitized date did not change, and neither does its mirror.
    EXPECT_EQ(after.value(QStringLiteral("XMP-xmp:CreateDate")).toString(), QStringLiteral("2002:07:13 15:58:28"));
}

}  // namespace
}  // namespace pelorin

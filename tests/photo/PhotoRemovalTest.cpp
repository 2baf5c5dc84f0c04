#include "FileBytes.h"
#include "photo/PhotoProperties.h"
#include "photo/PhotoRemoval.h"
#include "photo/PhotoRewrite.h"

#include "ExifTool.h"
#include "ImageMagick.h"
#include "QtPrinters.h"
#include "TestPaths.h"
#include "TestSelection.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QMap>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

using test::dataPath;
using test::exiftool;
using test::tagsOf;

using pelorin::test::readAll;
using pelorin::test::scanData;

QStringList entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
}

// The bytes of every strip, tile and embedded image exiftool finds in the image directories of
// a TIFF-based file, by directory: where exiftool says they lie, read from the file itself.
QMap<QString, QByteArray> imageDataByDirectory(const QString& path)
{
    const QJsonObject tags = exiftool(path);
    const QByteArray bytes = readAll(path);
    static const QList<QPair<QString, QString>> pairs{
        {QStringLiteral("StripOffsets"), QStringLiteral("StripByteCounts")},
        {QStringLiteral("TileOffsets"), QStringLiteral("TileByteCounts")},
        {QStringLiteral("PreviewImageStart"), QStringLiteral("PreviewImageLength")},
        {QStringLiteral("JpgFromRawStart"), QStringLiteral("JpgFromRawLength")},
        {QStringLiteral("ThumbnailOffset"), QStringLiteral("ThumbnailLength")},
        {QStringLiteral("OtherImageStart"), QStringLiteral("OtherImageLength")}};
    QMap<QString, QByteArray> data;
    for (auto it = tags.begin(); it != tags.end(); ++it) {
        const QString group = it.key().section(QLatin1Char(':'), 0, 0);
        const QString name = it.key().section(QLatin1Char(':'), 1);
        if (!group.startsWith(QLatin1String("IFD")) && !group.startsWith(QLatin1String("SubIFD")))
            continue;
        for (const auto& [offsetsName, lengthsName] : pairs) {
            if (name != offsetsName)
                continue;
            const QStringList offsets = it.value().toVariant().toString().split(QLatin1Char(' '));
            const QStringList lengths = tags.value(group + QLatin1Char(':') + lengthsName).toVariant().toString().split(QLatin1Char(' '));
            for (qsizetype i = 0; i < offsets.size(); ++i)
                data[group + QLatin1Char(':') + name] += bytes.mid(offsets[i].toLongLong(), lengths.value(i).toLongLong());
        }
    }
    return data;
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

// Some cameras write an IFD0 entry of no defined field type (a Sony compact: tag 0x0001, type
// 0). Kept, it sorts first in the rewritten directory, and readers that meet an unknown type
// first drop the whole directory: camera, dates and GPS gone from the output.
TEST_F(PhotoRemovalTest, AnEntryOfUnknownTypeIsDroppedRatherThanHidingItsDirectory)
{
    const QString source = copyOf(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"));
    QByteArray bytes = readAll(source);
    const qsizetype tiff = bytes.indexOf(QByteArray("Exif\0\0", 6)) + 6;
    ASSERT_GT(tiff, 5);
    const bool little = bytes.at(tiff) == 'I';
    auto number = [&](qsizetype at, int size) {
        quint32 v = 0;
        for (int i = 0; i < size; ++i)
            v |= quint32(quint8(bytes.at(at + (little ? i : size - 1 - i)))) << (8 * i);
        return v;
    };
    auto put16 = [&](qsizetype at, quint16 v) {
        bytes[at + (little ? 0 : 1)] = char(v & 0xFF);
        bytes[at + (little ? 1 : 0)] = char(v >> 8);
    };
    const qsizetype ifd0 = tiff + number(tiff + 4, 4);
    const int count = int(number(ifd0, 2));
    qsizetype damaged = -1;
    for (int i = 0; i < count && damaged < 0; ++i) {
        if (number(ifd0 + 2 + 12 * i, 2) == 0x011A)  // XResolution
            damaged = ifd0 + 2 + 12 * i;
    }
    ASSERT_GE(damaged, 0);
    put16(damaged, 0x0001);
    put16(damaged + 2, 0);
    QFile file(source);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    file.close();
    const QJsonObject before = exiftool(source);
    ASSERT_TRUE(before.contains(QStringLiteral("IFD0:Make")));

    const CommandResult result = removePhotoMetadata(MetadataRemoval::Gps, select({source}), context());
    ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
    const QString output = store.filePath(QFileInfo(source).fileName());
    const QJsonObject after = exiftool(output);
    for (const QString& key : {QStringLiteral("IFD0:Make"), QStringLiteral("IFD0:Model"),
                               QStringLiteral("ExifIFD:DateTimeOriginal")})
        EXPECT_EQ(after.value(key), before.value(key)) << key.toStdString();
    EXPECT_TRUE(tagsOf(after, {QStringLiteral("GPS:")}).isEmpty());
    EXPECT_EQ(test::newValidationWarnings(source, output), QStringList{});
}

// Canon compacts keep a CIFF heap in an APP0 segment and Qualcomm phones their camera attributes
// in APP7: dates, owner and settings beside the EXIF, which an EXIF removal must take too, and
// a GPS removal leave.
TEST_F(PhotoRemovalTest, ExifRemovalTakesTheCamerasOwnRecordSegments)
{
    const QString source = copyOf(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"));
    QByteArray bytes = readAll(source);
    auto segment = [](char marker, const QByteArray& payload) {
        QByteArray s("\xFF", 1);
        s.append(marker).append(char((payload.size() + 2) >> 8)).append(char((payload.size() + 2) & 0xFF));
        return s + payload;
    };
    const QByteArray ciff = segment(char(0xE0), QByteArray("II\x1a\0\0\0HEAPJPGM", 14) + QByteArray(32, '\0'));
    const QByteArray qualcomm = segment(char(0xE7), QByteArray("\x1aQualcomm Camera Attributes", 27) + QByteArray(40, '\x07'));
    bytes.insert(2, ciff + qualcomm);
    QFile file(source);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    file.close();

    const CommandResult gps = removePhotoMetadata(MetadataRemoval::Gps, select({source}), context());
    ASSERT_TRUE(gps.succeeded()) << gps.skipped.value(0).reason.toStdString();
    const QByteArray withoutGps = readAll(gps.written.value(0));
    EXPECT_TRUE(withoutGps.contains(ciff) && withoutGps.contains(qualcomm));
    QFile::remove(gps.written.value(0));

    const CommandResult exif = removePhotoMetadata(MetadataRemoval::Exif, select({source}), context());
    ASSERT_TRUE(exif.succeeded()) << exif.skipped.value(0).reason.toStdString();
    const QByteArray withoutExif = readAll(exif.written.value(0));
    EXPECT_FALSE(withoutExif.contains("HEAPJPGM"));
    EXPECT_FALSE(withoutExif.contains("Qualcomm Camera Attributes"));
    EXPECT_EQ(scanData(withoutExif), scanData(bytes));
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
    // Tags every EXIF block of a JPEG must hold; they tell nothing about the people or places.
    const QStringList requiredInJpegExif{QStringLiteral("IFD0:XResolution"), QStringLiteral("IFD0:YResolution"),
                                         QStringLiteral("IFD0:ResolutionUnit"), QStringLiteral("IFD0:YCbCrPositioning")};
    const QString output = store.filePath(QStringLiteral("exiv2-Reagan_all.jpg"));
    const QJsonObject after = exiftool(output);
    for (auto it = after.begin(); it != after.end(); ++it) {
        const QString group = it.key().section(QLatin1Char(':'), 0, 0);
        const bool allowed = group == QLatin1String("SourceFile") || group == QLatin1String("ExifTool")
                             || group == QLatin1String("System") || group == QLatin1String("File")
                             || group == QLatin1String("Composite") || group == QLatin1String("JFIF")
                             || group == QLatin1String("Adobe") || group.startsWith(QLatin1String("ICC"))
                             || it.key() == QLatin1String("IFD0:Orientation")
                             || requiredInJpegExif.contains(it.key());
        EXPECT_TRUE(allowed) << it.key().toStdString();
    }
    EXPECT_EQ(after.value(QStringLiteral("IFD0:Orientation")).toInt(), 6);
    // The EXIF block that holds the orientation is still a valid one, with the photo's own
    // resolution.
    for (const QString& warning : test::newValidationWarnings(source, output))
        EXPECT_FALSE(warning.contains(QLatin1String("Missing required"))) << warning.toStdString();
    for (const QString& key : requiredInJpegExif) {
        if (before.contains(key)) {
            EXPECT_EQ(after.value(key), before.value(key)) << key.toStdString();
        }
    }
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
TEST_F(PhotoRemovalTest, RemovingAllFromRawsKeepsTheirImageAndWhatDecodesIt)
{
    // A DNG from Adobe's converter (raw tiles in a SubIFD, previews in two more, a thumbnail in
    // IFD0) and a NEF from Nikon Capture (thumbnail in IFD0, raw strip and a JPEG in SubIFDs).
    for (const QString& name : {QStringLiteral("et-Canon350D.dng"), QStringLiteral("et-Nikon_D70.nef")}) {
        SCOPED_TRACE(name.toStdString());
        const QString source = copyOf(name);
        const QJsonObject before = exiftool(source);
        const CommandResult result = removePhotoMetadata(MetadataRemoval::All, select({source}), context());
        ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
        const QString output = store.filePath(name);

        const QMap<QString, QByteArray> data = imageDataByDirectory(source);
        ASSERT_GE(data.size(), 3);
        EXPECT_EQ(imageDataByDirectory(output), data);
        const QJsonObject after = exiftool(output);
        // What a raw developer needs to decode the image is there as it was.
        for (const QString& key : {QStringLiteral("ImageWidth"), QStringLiteral("ImageHeight"), QStringLiteral("BitsPerSample"),
                                   QStringLiteral("Compression"), QStringLiteral("PhotometricInterpretation"),
                                   QStringLiteral("CFARepeatPatternDim"), QStringLiteral("CFAPattern2"), QStringLiteral("SubfileType"),
                                   QStringLiteral("DNGVersion"), QStringLiteral("UniqueCameraModel"), QStringLiteral("ColorMatrix1"),
                                   QStringLiteral("AsShotNeutral"), QStringLiteral("BlackLevel"), QStringLiteral("WhiteLevel"),
                                   QStringLiteral("ActiveArea"), QStringLiteral("DefaultCropSize"), QStringLiteral("CalibrationIlluminant1")}) {
            for (const QString& group : {QStringLiteral("IFD0:"), QStringLiteral("SubIFD:"), QStringLiteral("SubIFD1:"), QStringLiteral("SubIFD2:")}) {
                EXPECT_EQ(after.value(group + key), before.value(group + key)) << (group + key).toStdString();
            }
        }
        // What tells about the photo is gone.
        for (const QString& key : {QStringLiteral("IFD0:Make"), QStringLiteral("IFD0:Model"), QStringLiteral("IFD0:Software"),
                                   QStringLiteral("IFD0:ModifyDate"), QStringLiteral("IFD0:Artist"), QStringLiteral("IFD0:DateTimeOriginal"),
                                   QStringLiteral("IFD0:CameraSerialNumber"), QStringLiteral("IFD0:OriginalRawFileName"),
                                   QStringLiteral("IFD0:LocalizedCameraModel")}) {
            EXPECT_FALSE(after.contains(key)) << key.toStdString();
        }
        EXPECT_TRUE(tagsOf(after, {QStringLiteral("ExifIFD:"), QStringLiteral("IPTC"), QStringLiteral("XMP"),
                                   QStringLiteral("GPS:"), QStringLiteral("Nikon"), QStringLiteral("Canon")}).isEmpty());
        EXPECT_EQ(test::newValidationWarnings(source, output), QStringList{});
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

// WebP holds no IPTC record: the title and keywords the editor keeps in IPTC go into its XMP,
// where photo managers read them (ImageMagick writes the WebP, exiftool reads it back).
TEST_F(PhotoRemovalTest, TitleAndKeywordsOfAWebPGoIntoItsXmp)
{
    const QString source = inputs.filePath(QStringLiteral("drawn.webp"));
    ASSERT_TRUE(test::imageMagick({QStringLiteral("-size"), QStringLiteral("64x48"), QStringLiteral("gradient:red-blue"), source}));
    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{IPTC}"),
                          QVariantMap{{QStringLiteral("ObjectName"), QStringLiteral("Dunes")},
                                      {QStringLiteral("Keywords"), QVariantList{QStringLiteral("sand"), QStringLiteral("wind")}}});
    const QString output = store.filePath(QStringLiteral("drawn.webp"));
    const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
    ASSERT_TRUE(result.ok()) << result.reason.toStdString();
    EXPECT_TRUE(result.warnings.isEmpty()) << result.warnings.join(QLatin1Char('\n')).toStdString();
    const QJsonObject after = exiftool(output);
    EXPECT_EQ(after.value(QStringLiteral("XMP-dc:Title")).toString(), QStringLiteral("Dunes"));
    EXPECT_EQ(after.value(QStringLiteral("XMP-dc:Subject")).toVariant(), (QVariantList{QStringLiteral("sand"), QStringLiteral("wind")}));
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

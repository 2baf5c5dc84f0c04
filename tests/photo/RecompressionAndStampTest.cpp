#include "photo/JpegRecompression.h"
#include "photo/PhotoDateStamp.h"

#include "model/DateText.h"
#include "model/FileDates.h"
#include "model/LocalTime.h"

#include "ExifTool.h"
#include "ImageMagick.h"
#include "QtPrinters.h"
#include "ScopedTimeZone.h"
#include "TestPaths.h"
#include "TestSelection.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

using test::dataPath;

// Fonts need a GUI application; the offscreen platform gives one without a display.
class RecompressionTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        if (!QGuiApplication::instance()) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
            static int argc = 1;
            static char name[] = "photo_tests";
            static char* argv[] = {name, nullptr};
            new QGuiApplication(argc, argv);
        }
    }
    CommandContext context()
    {
        CommandContext c;
        c.storageFolder = store.path();
        return c;
    }
    // Stamped or plain small copies of the sources, into an emptied storage folder.
    CommandResult smallCopies(const QStringList& sources, bool stamp)
    {
        QDir(store.path()).removeRecursively();
        QDir().mkpath(store.path());
        return stamp ? stampPhotoDates(test::selectionOf(sources), DateStampStyle{}, context())
                     : recompressPhotos(sources, context());
    }
    QTemporaryDir store;
};

TEST_F(RecompressionTest, PortraitPhotosComeOutUprightWithTheirMetadataAndDate)
{
    test::ScopedTimeZone tz("America/Santiago");
    const QString source = dataPath(QStringLiteral("mde-Sony_Cybershot_orient6.jpg"));
    const QJsonObject before = test::exiftool(source);
    ASSERT_EQ(before.value(QStringLiteral("IFD0:Orientation")).toInt(), 6);
    const CommandResult result = recompressPhotos({source}, context());
    ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
    const QString output = store.filePath(QStringLiteral("mde-Sony_Cybershot_orient6_date.jpg"));
    ASSERT_EQ(result.written, QStringList{output});

    const QJsonObject after = test::exiftool(output);
    EXPECT_EQ(after.value(QStringLiteral("IFD0:Orientation")).toInt(), 1);
    // The stored pixels were on their side; the copy's are upright, width and height swapped.
    EXPECT_EQ(after.value(QStringLiteral("File:ImageWidth")).toInt(), before.value(QStringLiteral("File:ImageHeight")).toInt());
    EXPECT_EQ(after.value(QStringLiteral("File:ImageHeight")).toInt(), before.value(QStringLiteral("File:ImageWidth")).toInt());
    EXPECT_EQ(after.value(QStringLiteral("ExifIFD:ExifImageWidth")).toInt(), after.value(QStringLiteral("File:ImageWidth")).toInt());
    EXPECT_EQ(after.value(QStringLiteral("ExifIFD:DateTimeOriginal")), before.value(QStringLiteral("ExifIFD:DateTimeOriginal")));
    EXPECT_EQ(after.value(QStringLiteral("IFD0:Make")), before.value(QStringLiteral("IFD0:Make")));
    EXPECT_TRUE(test::tagsOf(after, {QStringLiteral("IFD1:")}).isEmpty());  // no stale thumbnail
    EXPECT_LT(QFileInfo(output).size(), QFileInfo(source).size());
    // The file date is the capture date on this computer's clock.
    const auto capture = parseDateText(before.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString());
    ASSERT_TRUE(capture);
    EXPECT_EQ(readFileDates(output).modified, instantFromWallClock(*capture));
}

// exiv2 reads nothing from a GIF; the XMP an editor put into one (ImageMagick makes the GIF,
// exiftool the XMP) must still reach the small copy. Lens tags of EXIF 2.3 under an older
// ExifVersion (as phones write them) come with a version that admits them.
TEST_F(RecompressionTest, GifXmpAndNewerExifTagsTravelIntoTheCopy)
{
    QTemporaryDir dir;
    const QString gif = dir.filePath(QStringLiteral("drawing.gif"));
    ASSERT_TRUE(test::imageMagick({QStringLiteral("-size"), QStringLiteral("64x48"), QStringLiteral("gradient:red-blue"), gif}));
    ASSERT_TRUE(test::exiftoolWrite(gif, {QStringLiteral("-XMP-dc:Title=Drawn by hand"), QStringLiteral("-XMP-dc:Subject=sketch")}));
    const CommandResult result = smallCopies({gif}, false);
    ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
    const QJsonObject after = test::exiftool(result.written.value(0));
    EXPECT_EQ(after.value(QStringLiteral("XMP-dc:Title")).toString(), QStringLiteral("Drawn by hand"));
    EXPECT_EQ(after.value(QStringLiteral("XMP-dc:Subject")).toVariant().toStringList(), QStringList{QStringLiteral("sketch")});

    const QString photo = dir.filePath(QStringLiteral("lens.jpg"));
    ASSERT_TRUE(QFile::copy(dataPath(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg")), photo));
    QFile::setPermissions(photo, QFile::ReadOwner | QFile::WriteOwner);
    ASSERT_TRUE(test::exiftoolWrite(photo, {QStringLiteral("-ExifIFD:ExifVersion=0221"), QStringLiteral("-ExifIFD:LensModel=Zoom 6-72mm")}));
    const CommandResult lens = smallCopies({photo}, false);
    ASSERT_TRUE(lens.succeeded()) << lens.skipped.value(0).reason.toStdString();
    const QJsonObject copy = test::exiftool(lens.written.value(0));
    EXPECT_EQ(copy.value(QStringLiteral("ExifIFD:LensModel")).toString(), QStringLiteral("Zoom 6-72mm"));
    EXPECT_EQ(copy.value(QStringLiteral("ExifIFD:ExifVersion")).toString(), QStringLiteral("0232"));
}

TEST_F(RecompressionTest, NamesFollowTheSourceAndPngBecomesJpg)
{
    EXPECT_EQ(recompressedOutputPath(QStringLiteral("/a/IMG_1.JPG")), QStringLiteral("/a/IMG_1_date.JPG"));
    EXPECT_EQ(recompressedOutputPath(QStringLiteral("/a/shot.png"), QStringLiteral("/out")), QStringLiteral("/out/shot_date.jpg"));
    EXPECT_EQ(recompressedOutputPath(QStringLiteral("/a/name")), QStringLiteral("/a/name_date."));

    const CommandResult result = recompressPhotos({dataPath(QStringLiteral("et-PNG.png"))}, context());
    ASSERT_EQ(result.written.size(), 1);
    QFile out(result.written[0]);
    ASSERT_TRUE(out.open(QIODevice::ReadOnly));
    EXPECT_TRUE(out.read(3).startsWith("\xFF\xD8\xFF"));
    EXPECT_TRUE(recompressPhotos({}, context()).alert);
    const CommandResult broken = recompressPhotos({dataPath(QStringLiteral("pil-truncated_jpeg.jpg")),
                                                   dataPath(QStringLiteral("et-MP3.mp3"))}, context());
    EXPECT_EQ(broken.skipped.size() + broken.written.size(), 2);
    EXPECT_GE(broken.skipped.size(), 1);
}

TEST_F(RecompressionTest, DateTextsFollowTheChosenFormat)
{
    const WallClock date = *parseDateText(QStringLiteral("2019:05:06 07:08:09"));
    EXPECT_EQ(dateStampText(date, QStringLiteral("MM/DD/YYYY HH:MM")), QStringLiteral("05/06/2019 07:08"));
    EXPECT_EQ(dateStampText(date, QStringLiteral("DD/MM/YYYY HH:MM")), QStringLiteral("06/05/2019 07:08"));
    EXPECT_EQ(dateStampText(date, QStringLiteral("YYYY/MM/DD HH:MM")), QStringLiteral("2019/05/06 07:08"));
}

// Mean brightness of a square in one corner of a picture.
double cornerBrightness(const QImage& image, bool right, bool bottom)
{
    const int size = image.height() / 6;
    const int x0 = right ? image.width() - size : 0;
    const int y0 = bottom ? image.height() - size : 0;
    double sum = 0;
    for (int y = y0; y < y0 + size; ++y)
        for (int x = x0; x < x0 + size; ++x)
            sum += qGray(image.pixel(x, y));
    return sum / (size * size);
}

TEST_F(RecompressionTest, TheStampLandsInTheChosenCorner)
{
    QImage dark(600, 400, QImage::Format_RGB32);
    dark.fill(QColor(20, 20, 20));
    DateStampStyle style;
    style.fontSize = 80;
    for (const char* corner : {"Upper left corner", "Upper right corner", "Lower left corner", "lower RIGHT corner"}) {
        style.corner = QString::fromLatin1(corner);
        const QImage stamped = drawDateStamp(dark, QStringLiteral("05/06/2019 07:08"), style);
        const bool right = style.corner.contains(QLatin1String("right"), Qt::CaseInsensitive);
        const bool bottom = style.corner.startsWith(QLatin1String("lower"), Qt::CaseInsensitive);
        EXPECT_GT(cornerBrightness(stamped, right, bottom), cornerBrightness(stamped, !right, !bottom) + 5) << corner;
    }
}

TEST_F(RecompressionTest, StampingWritesOneSmallCopyAndNothingElse)
{
    PhotoSelection selection;
    IKImageItem item;
    item.filePath = dataPath(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"));
    item.fileName = QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg");
    selection.items << item;
    const CommandResult result = stampPhotoDates(selection, DateStampStyle{}, context());
    ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
    EXPECT_EQ(QDir(store.path()).entryList(QDir::Files | QDir::Hidden),
              QStringList{QStringLiteral("exiv2-FurnaceCreekInn_gps_date.jpg")});
    const QImage stamped(result.written.value(0));
    const QImage plain(item.filePath);
    ASSERT_EQ(stamped.size(), plain.size());
    // The lower left corner got the (white) text; the upper right one only recompression noise.
    EXPECT_GT(cornerBrightness(stamped, false, true) - cornerBrightness(plain, false, true), 2.0);
    EXPECT_LT(std::abs(cornerBrightness(stamped, true, false) - cornerBrightness(plain, true, false)), 2.0);
    EXPECT_FALSE(test::exiftool(result.written.value(0)).value(QStringLiteral("GPS:GPSLatitude")).isUndefined());

    EXPECT_TRUE(stampPhotoDates(PhotoSelection{}, DateStampStyle{}, context()).alert);
}

// Wide-gamut photos from a camera (Adobe RGB JPEG), a phone (Display P3 HEIC) and ImageMagick
// (PNG with EXIF dates or only a PNG creation time added by exiftool, TIFF converted from the
// camera JPEG, which keeps only the XMP dates): both kinds of copy keep the profile and take
// the capture date.
TEST_F(RecompressionTest, CopiesKeepTheColourProfileAndTakeTheCaptureDate)
{
    test::ScopedTimeZone tz("Europe/Berlin");
    QTemporaryDir inputs;
    const QString camera = inputs.filePath(QStringLiteral("camera.jpg"));
    ASSERT_TRUE(QFile::copy(dataPath(QStringLiteral("exiv2-Reagan_all.jpg")), camera));
    const QString phone = inputs.filePath(QStringLiteral("phone.heic"));
    ASSERT_TRUE(QFile::copy(dataPath(QStringLiteral("exiv2-iPhoneXR_orient6.heic")), phone));
    const QString profile = inputs.filePath(QStringLiteral("adobe.icc"));
    QProcess extract;
    extract.setStandardOutputFile(profile);
    extract.start(QStringLiteral("exiftool"), {QStringLiteral("-b"), QStringLiteral("-ICC_Profile"), camera});
    ASSERT_TRUE(extract.waitForFinished(60000));
    const QString png = inputs.filePath(QStringLiteral("drawn.png"));
    ASSERT_TRUE(test::imageMagick({QStringLiteral("-size"), QStringLiteral("64x48"), QStringLiteral("gradient:red-blue"),
                                   QStringLiteral("-profile"), profile, png}));
    ASSERT_TRUE(test::exiftoolWrite(png, {QStringLiteral("-DateTimeOriginal=2011:02:03 04:05:06"),
                                          QStringLiteral("-CreateDate=2011:02:03 04:05:06")}));
    const QString described = inputs.filePath(QStringLiteral("described.png"));  // only PNG text says when
    ASSERT_TRUE(QFile::copy(png, described));
    ASSERT_TRUE(test::exiftoolWrite(described, {QStringLiteral("-EXIF:all="), QStringLiteral("-PNG:CreationTime=2009:08:07 06:05:04")}));
    const QString tiff = inputs.filePath(QStringLiteral("converted.tif"));
    ASSERT_TRUE(test::imageMagick({camera, QStringLiteral("-resize"), QStringLiteral("160x"), tiff}));
    ASSERT_FALSE(test::exiftool(tiff).contains(QStringLiteral("ExifIFD:DateTimeOriginal")));

    const QMap<QString, QString> dates{{QStringLiteral("camera"), QStringLiteral("2004:06:21 23:37:53")},
                                       {QStringLiteral("phone"), QStringLiteral("2021:02:13 11:03:31")},
                                       {QStringLiteral("drawn"), QStringLiteral("2011:02:03 04:05:06")},
                                       {QStringLiteral("described"), QStringLiteral("2009:08:07 06:05:04")},
                                       {QStringLiteral("converted"), QStringLiteral("2004:06:21 23:37:53")}};
    const QStringList sources{camera, phone, png, described, tiff};
    for (const bool stamp : {false, true}) {
        const CommandResult result = smallCopies(sources, stamp);
        ASSERT_EQ(result.written.size(), sources.size()) << result.skipped.value(0).reason.toStdString();
        for (const QString& source : sources) {
            const QString base = QFileInfo(source).completeBaseName();
            const QString output = store.filePath(base + QStringLiteral("_date.jpg"));
            SCOPED_TRACE((base + (stamp ? QStringLiteral(" stamped") : QStringLiteral(" recompressed"))).toStdString());
            const QString description = QStringLiteral("ICC_Profile:ProfileDescription");
            const QJsonObject from = test::exiftool(source);
            const QJsonObject to = test::exiftool(output);
            const QString wanted = from.value(description).toString();
            ASSERT_FALSE(wanted.isEmpty());
            EXPECT_EQ(to.value(description).toString(), wanted);
            // The EXIF comes along too, from HEIF as from the rest.
            const QString original = QStringLiteral("ExifIFD:DateTimeOriginal");
            EXPECT_EQ(to.value(original).toString(), from.value(original).toString());
            const auto capture = parseDateText(dates.value(base));
            ASSERT_TRUE(capture);
            EXPECT_EQ(readFileDates(output).modified, instantFromWallClock(*capture));
        }
    }
}

// A raw from Adobe's DNG converter, an AVIF from GIMP and a TIFF from ImageMagick hold their
// image's structure in IFD0 (a DNG also its DNG tags); a JPEG made from them takes only what
// describes the photo, in an EXIF block with every tag a JPEG's EXIF requires.
TEST_F(RecompressionTest, CopiesCarryOnlyTheDescriptiveExifInAValidJpegExif)
{
    QTemporaryDir inputs;
    const QString dng = inputs.filePath(QStringLiteral("raw.dng"));
    ASSERT_TRUE(QFile::copy(dataPath(QStringLiteral("et-Canon350D.dng")), dng));
    const QString avif = inputs.filePath(QStringLiteral("gimp.avif"));
    ASSERT_TRUE(QFile::copy(dataPath(QStringLiteral("exiv2-avif_exif_xmp.avif")), avif));
    const QString tiff = inputs.filePath(QStringLiteral("drawn.tif"));
    ASSERT_TRUE(test::imageMagick({QStringLiteral("-size"), QStringLiteral("64x48"), QStringLiteral("gradient:red-blue"), tiff}));
    ASSERT_TRUE(test::exiftoolWrite(tiff, {QStringLiteral("-IFD0:Artist=Ann Example"), QStringLiteral("-IFD0:Make=Example"),
                                           QStringLiteral("-ExifIFD:DateTimeOriginal=2011:02:03 04:05:06")}));
    const QStringList sources{dng, avif, tiff};
    for (const bool stamp : {false, true}) {
        const CommandResult result = smallCopies(sources, stamp);
        ASSERT_EQ(result.written.size(), sources.size()) << result.skipped.value(0).reason.toStdString();
        for (const QString& source : sources) {
            const QString output = store.filePath(QFileInfo(source).completeBaseName() + QStringLiteral("_date.jpg"));
            SCOPED_TRACE((QFileInfo(source).fileName() + (stamp ? QStringLiteral(" stamped") : QStringLiteral(" recompressed"))).toStdString());
            const QJsonObject from = test::exiftool(source);
            const QJsonObject to = test::exiftool(output);
            EXPECT_EQ(to.value(QStringLiteral("File:FileType")).toString(), QStringLiteral("JPEG"));
            for (const QString& key : {QStringLiteral("ImageWidth"), QStringLiteral("ImageHeight"), QStringLiteral("BitsPerSample"),
                                       QStringLiteral("Compression"), QStringLiteral("PhotometricInterpretation"),
                                       QStringLiteral("StripOffsets"), QStringLiteral("SubfileType"), QStringLiteral("SamplesPerPixel"),
                                       QStringLiteral("PlanarConfiguration"), QStringLiteral("RowsPerStrip"),
                                       QStringLiteral("DNGVersion"), QStringLiteral("ColorMatrix1"), QStringLiteral("UniqueCameraModel")})
                EXPECT_FALSE(to.contains(QStringLiteral("IFD0:") + key)) << key.toStdString();
            EXPECT_TRUE(test::tagsOf(to, {QStringLiteral("SubIFD")}).isEmpty());
            for (const QString& key : {QStringLiteral("IFD0:Make"), QStringLiteral("IFD0:Model"), QStringLiteral("IFD0:Artist"),
                                       QStringLiteral("IFD0:ImageDescription"), QStringLiteral("IFD0:Software"),
                                       QStringLiteral("IFD0:XResolution"), QStringLiteral("ExifIFD:DateTimeOriginal"),
                                       QStringLiteral("ExifIFD:UserComment"), QStringLiteral("GPS:GPSAltitude")}) {
                if (from.contains(key)) {
                    EXPECT_EQ(to.value(key), from.value(key)) << key.toStdString();
                }
            }
            EXPECT_EQ(test::newValidationWarnings(source, output), QStringList{});
        }
    }
}

}  // namespace
}  // namespace pelorin

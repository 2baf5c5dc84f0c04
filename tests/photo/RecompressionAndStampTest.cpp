#include "photo/JpegRecompression.h"
#include "photo/PhotoDateStamp.h"

#include "model/DateText.h"
#include "model/FileDates.h"
#include "model/LocalTime.h"

#include "ExifTool.h"
#include "QtPrinters.h"
#include "ScopedTimeZone.h"
#include "TestPaths.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
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

}  // namespace
}  // namespace pelorin

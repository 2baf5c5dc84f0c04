#include "DateTestFiles.h"
#include "ScopedTimeZone.h"
#include "dates/PhotoDateShift.h"

namespace pelorin {
namespace {

using test::clockOf;
using test::DatePhotos;

struct ThreePhotos {
    DatePhotos photos;
    QStringList paths;
    QList<QByteArray> hashes;

    ThreePhotos()
    {
        for (const char* sample : {"exiv2-nikon-d70.jpg", "et-Canon_1DmkIII.jpg", "exiv2-FurnaceCreekInn_gps.jpg"}) {
            paths << photos.add(QString::fromLatin1(sample));
            hashes << test::fileHash(paths.last());
        }
    }
    CommandContext context() const
    {
        CommandContext c;
        c.storageFolder = photos.storage();
        return c;
    }
    void expectSourcesUntouched() const
    {
        for (int i = 0; i < paths.size(); ++i)
            EXPECT_EQ(test::fileHash(paths[i]), hashes[i]) << paths[i].toStdString();
    }
};

TEST(DateBatchModes, ReferenceModeMovesEachPhotoByTheTwoDifferences)
{
    test::ScopedTimeZone tz("America/Santiago");
    ThreePhotos three;
    BatchDateRequest request;
    request.referencePhoto = three.paths[0];  // its dates, 2004:03:30 10:43:46, are read from it
    request.afterOriginal = QStringLiteral("2004:03:31 10:43:46");   // one day later
    request.afterDigitized = QStringLiteral("2004-03-30 12:43:46");  // two hours later, dash form
    request.fixedDate = QStringLiteral("1999:01:01 00:00:00");       // the reference photo wins
    const CommandResult result = shiftPhotoDates(DatePhotos::select(three.paths), request, three.context());
    ASSERT_TRUE(result.succeeded());

    const QString befores[] = {QStringLiteral("2004:03:30 10:43:46"), QStringLiteral("2007:02:22 17:02:42"),
                               QStringLiteral("2008:05:08 09:54:28")};
    for (int i = 0; i < 3; ++i) {
        const QString output = three.photos.output(three.paths[i]);
        EXPECT_TRUE(result.written.contains(output));
        const QJsonObject tags = test::exiftool(output);
        const WallClock original = *clockOf(befores[i]).addSeconds(86400);
        const WallClock digitized = *clockOf(befores[i]).addSeconds(7200);
        EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), renderDateText(original, DateTextForm::Exif));
        EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:CreateDate")).toString(), renderDateText(digitized, DateTextForm::Exif));
        EXPECT_EQ(tags.value(QStringLiteral("IFD0:ModifyDate")).toString(), renderDateText(original, DateTextForm::Exif));
        EXPECT_EQ(test::localModified(output), digitized);
    }
    three.expectSourcesUntouched();
}

TEST(DateBatchModes, FixedModeGivesEveryPhotoTheDateAndABadDateWritesNothing)
{
    test::ScopedTimeZone tz("Pacific/Chatham");
    ThreePhotos three;
    BatchDateRequest request;
    request.fixedDate = QStringLiteral("2015-06-01 10:00:00");
    request.span.days = 3;  // a fixed date wins over the span
    const CommandResult result = shiftPhotoDates(DatePhotos::select(three.paths), request, three.context());
    ASSERT_TRUE(result.succeeded());
    for (const QString& path : three.paths) {
        const QString output = three.photos.output(path);
        const QJsonObject tags = test::exiftool(output);
        EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("2015:06:01 10:00:00"));
        EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:CreateDate")).toString(), QStringLiteral("2015:06:01 10:00:00"));
        EXPECT_EQ(test::localModified(output), clockOf(QStringLiteral("2015:06:01 10:00:00")));
    }
    three.expectSourcesUntouched();

    ThreePhotos again;
    request.fixedDate = QStringLiteral("2015/06/01 10:00");
    const CommandResult rejected = shiftPhotoDates(DatePhotos::select(again.paths), request, again.context());
    ASSERT_TRUE(rejected.alert);
    EXPECT_EQ(*rejected.alert, Alerts::invalidDateFormat());
    EXPECT_FALSE(QFileInfo::exists(again.photos.storage()));
}

TEST(DateBatchModes, FileDatesOnlyCopiesTheBytesAndMovesTheCopysDates)
{
    test::ScopedTimeZone tz("America/Santiago");
    ThreePhotos three;
    for (const QString& path : three.paths)
        test::setLocalModified(path, QStringLiteral("2023:09:02 12:00:00"));
    BatchDateRequest request;
    request.span.days = 1;
    request.add = true;
    const CommandResult result = shiftPhotoFileDates(DatePhotos::select(three.paths), request, three.context());
    ASSERT_TRUE(result.succeeded());
    for (const QString& path : three.paths) {
        const QString output = three.photos.output(path);
        EXPECT_EQ(test::fileHash(output), test::fileHash(path));
        EXPECT_EQ(test::localModified(output), clockOf(QStringLiteral("2023:09:03 12:00:00")));
    }
    three.expectSourcesUntouched();
}

TEST(DateBatchModes, EmptySelectionAlertsAndCameraPhotosNotDownloadedAreSkipped)
{
    ThreePhotos three;
    BatchDateRequest request;
    request.span.hours = 1;
    const CommandResult none = shiftPhotoDates({}, request, three.context());
    ASSERT_TRUE(none.alert);
    EXPECT_EQ(*none.alert, Alerts::noSelection());

    const CommandResult camera = shiftPhotoDates(DatePhotos::select({three.paths[0]}, PhotoSource::Camera), request, three.context());
    ASSERT_EQ(camera.skipped.size(), 1);
    EXPECT_TRUE(camera.written.isEmpty());
    three.expectSourcesUntouched();
}

}  // namespace
}  // namespace pelorin

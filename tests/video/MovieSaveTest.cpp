#include "video/MovieSave.h"

#include "ExifTool.h"
#include "QtPrinters.h"
#include "TestPaths.h"
#include "model/FileDates.h"
#include "video/MovieReader.h"
#include "model/ItemPictureImage.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace pelorin;

TEST(MovieSave, WritesTheFieldsUnderTheMoviesNameWithItsDates)
{
    QTemporaryDir storage;
    CommandContext context;
    context.storageFolder = storage.filePath("out");
    MovieChanges edits;
    edits.texts[MovieField::Title] = "Title";
    edits.texts[MovieField::Album] = "Album";
    edits.texts[MovieField::Director] = "Director";
    edits.texts[MovieField::Copyright] = "(c) me";
    const QString source = test::dataPath("ft-MacBook_keys.mov");
    const CommandResult result = saveMovieFields({source}, edits, context);
    ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
    const QString output = context.storageFolder + "/ft-MacBook_keys.mov";
    ASSERT_EQ(result.written, QStringList{output});
    const QJsonObject tags = test::exiftool(output);
    EXPECT_EQ(tags.value("ItemList:Title").toString(), "Title");
    EXPECT_EQ(tags.value("ItemList:Album").toString(), "Album");
    EXPECT_EQ(tags.value("ItemList:Copyright").toString(), "(c) me");
    EXPECT_EQ(tags.value("Keys:Director").toString(), "Director");
    EXPECT_EQ(tags.value("Keys:Make").toString(), "Apple");
    EXPECT_EQ(readFileDates(output).modified, readFileDates(source).modified);
}

TEST(MovieSave, DryRunPlansAndOtherContainersAreSkipped)
{
    QTemporaryDir storage;
    CommandContext context;
    context.storageFolder = storage.path();
    context.dryRun = true;
    MovieChanges edits;
    edits.texts[MovieField::Title] = "New";
    CommandResult planned = saveMovieFields({test::dataPath("ft-imovie.mp4")}, edits, context);
    // The movie's title is a 3GPP title box, which takes the new one.
    ASSERT_EQ(planned.planned.size(), 1);
    EXPECT_EQ(planned.planned[0].property, "uiso/titl");
    EXPECT_EQ(planned.planned[0].before, "fixture");
    EXPECT_EQ(planned.planned[0].after, "New");
    EXPECT_TRUE(QDir(storage.path()).isEmpty());

    context.dryRun = false;
    const CommandResult skipped = saveMovieFields(
        {test::dataPath("et-Canon_RIFF.avi"), test::dataPath("mutagen-truncated-64bit.mp4")}, edits, context);
    ASSERT_EQ(skipped.skipped.size(), 2);
    EXPECT_TRUE(skipped.skipped[0].reason.contains("only MP4-family, Matroska and WebM"));
    EXPECT_TRUE(skipped.skipped[1].reason.contains("damaged"));
    EXPECT_TRUE(QDir(storage.path()).isEmpty());
}

TEST(MovieSave, LocationDateArtworkAndCreatedDateGoEverywhere)
{
    QTemporaryDir storage;
    CommandContext context;
    context.storageFolder = storage.path();
    QImage picture(16, 9, QImage::Format_RGB32);
    picture.fill(Qt::green);
    const QString artwork = storage.filePath("cover.bmp");
    ASSERT_TRUE(picture.save(artwork, "BMP"));
    MovieChanges edits;
    edits.location = MovieLocationText{"-33.9", "-70.25", "10"};
    edits.recordingDate = "2016-05-01 12:30:45";
    edits.createdDate = "2017:01:02 03:04:05";
    edits.artworkPath = artwork;
    const CommandResult result = saveMovieFields({test::dataPath("ft-imovie.mp4")}, edits, context);
    ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
    const QString output = result.written.value(0);
    const QJsonObject tags = test::exiftool(output);
    EXPECT_NEAR(tags.value("Keys:GPSCoordinates").toString().split(' ').value(0).toDouble(), -33.9, 1e-4);
    EXPECT_NEAR(tags.value("Composite:GPSLongitude").toDouble(), -70.25, 1e-4);
    EXPECT_EQ(tags.value("Keys:CreationDate").toString().left(19), "2016:05:01 12:30:45");
    EXPECT_TRUE(tags.contains("ItemList:CoverArt"));
    EXPECT_EQ(readFileDates(output).modified, QDateTime(QDate(2017, 1, 2), QTime(3, 4, 5), Qt::LocalTime));
    const MovieReading reading = readMovieFile(output);
    EXPECT_EQ(reading.item.latitudeFormat + reading.item.longtitudeFormat, "--");
    EXPECT_EQ(pictureImage(reading.item.fileImage).size(), QSize(16, 9));
    QStringList identifiers;
    for (const MediaMetadataItem& item : reading.item.fileMetaArray)
        identifiers.append(item.identifier);
    EXPECT_EQ(identifiers.filter("loci").size() + identifiers.filter("ISO6709").size() + identifiers.filter("%A9xyz").size(), 3);
}

TEST(MovieSave, InvalidValuesRaiseTheAlertAndWriteNothing)
{
    QTemporaryDir storage;
    CommandContext context;
    context.storageFolder = storage.path();
    MovieChanges date;
    date.recordingDate = "yesterday";
    EXPECT_EQ(saveMovieFields({test::dataPath("ft-imovie.mp4")}, date, context).alert, Alerts::invalidDateFormat());
    MovieChanges half;
    half.location = MovieLocationText{"12", "", ""};
    EXPECT_EQ(saveMovieFields({test::dataPath("ft-imovie.mp4")}, half, context).alert->message, "Vaule Error");
    MovieChanges far;
    far.location = MovieLocationText{"95", "0", ""};
    EXPECT_TRUE(saveMovieFields({test::dataPath("ft-imovie.mp4")}, far, context).alert.has_value());
    EXPECT_TRUE(QDir(storage.path()).isEmpty());
}

#include "video/MovieDateCommands.h"
#include "video/MovieReader.h"

#include "ExifTool.h"
#include "QtPrinters.h"
#include "ScopedTimeZone.h"
#include "TestPaths.h"
#include "ToolMovies.h"
#include "model/FileDates.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace pelorin;

TEST(MovieDateWrite, DateFromTheNameGoesIntoEveryDatePlace)
{
    const test::ScopedTimeZone zone("Europe/Berlin");
    QTemporaryDir dir;
    const QString named = dir.filePath("VID_20160501_123045.mp4");
    ASSERT_TRUE(QFile::copy(test::dataPath("ft-imovie.mp4"), named));
    CommandContext context;
    context.storageFolder = dir.filePath("out");
    const CommandResult result = movieDatesFromFileNames({named, dir.filePath("holiday.mp4")}, context);
    ASSERT_EQ(result.written.size(), 1);
    ASSERT_EQ(result.skipped.size(), 1);
    EXPECT_EQ(result.skipped[0].reason, "the file name holds no date");

    const QString output = result.written[0];
    QProcess exiftool;
    exiftool.start("exiftool", {"-j", "-G1", "-a", "-api", "QuickTimeUTC", output});
    ASSERT_TRUE(exiftool.waitForFinished(60000));
    const QJsonObject tags = QJsonDocument::fromJson(exiftool.readAllStandardOutput()).array().at(0).toObject();
    EXPECT_EQ(tags.value("QuickTime:CreateDate").toString(), "2016:05:01 12:30:45+02:00");
    EXPECT_EQ(tags.value("Track1:TrackCreateDate").toString(), "2016:05:01 12:30:45+02:00");
    EXPECT_EQ(tags.value("Track2:MediaCreateDate").toString(), "2016:05:01 12:30:45+02:00");
    EXPECT_EQ(tags.value("Keys:CreationDate").toString(), "2016:05:01 12:30:45+02:00");
    EXPECT_EQ(tags.value("UserData:DateTimeOriginal").toString(), "2016:05:01 12:30:45");

    const MovieReading reading = readMovieFile(output);
    // The QuickTime creation date comes last in the movie box, so it is the one the record shows.
    EXPECT_EQ(reading.item.shootDateStr, "2016-05-01 12:30:45");
    EXPECT_EQ(reading.item.shootDate, QDateTime(QDate(2016, 5, 1), QTime(12, 30, 45)));
    EXPECT_EQ(readFileDates(output).modified, QDateTime(QDate(2016, 5, 1), QTime(12, 30, 45), Qt::LocalTime));
}

TEST(MovieDateWrite, DateOfANameWithDottedDateAndWordsIsWritten)
{
    const test::ScopedTimeZone zone("Europe/Berlin");
    QTemporaryDir dir;
    const QString named = dir.filePath("2016.05.01 beach_day.mp4");
    ASSERT_TRUE(test::makeFfmpegFile(named, {}));
    CommandContext context;
    context.storageFolder = dir.filePath("out");
    const CommandResult result = movieDatesFromFileNames({named}, context);
    ASSERT_EQ(result.written.size(), 1) << result.skipped.value(0).reason.toStdString();
    const QJsonObject tags = test::exiftool(result.written[0], {"-api", "QuickTimeUTC"});
    EXPECT_EQ(tags.value("QuickTime:CreateDate").toString(), "2016:05:01 00:00:00+02:00");
}

TEST(MovieDateWrite, DryRunPlansTheDatesAndWritesNothing)
{
    const test::ScopedTimeZone zone("America/New_York");
    QTemporaryDir dir;
    const QString named = dir.filePath("PXL_20210101_123456789.mov");
    ASSERT_TRUE(QFile::copy(test::dataPath("ft-MacBook_keys.mov"), named));
    CommandContext context;
    context.storageFolder = dir.filePath("out");
    context.dryRun = true;
    const CommandResult result = movieDatesFromFileNames({named}, context);
    QStringList properties;
    for (const PlannedChange& change : result.planned)
        properties.append(change.property + "=" + change.after);
    EXPECT_TRUE(properties.contains("uiso/date=2021:01:01 12:34:56"));
    EXPECT_TRUE(properties.contains("mdta/com.apple.quicktime.creationdate=2021-01-01T12:34:56-0500"));
    EXPECT_TRUE(properties.contains("movie header creation time=2021-01-01T17:34:56Z"));
    EXPECT_FALSE(QFile::exists(dir.filePath("out")));
}

TEST(MovieDateWrite, RecordingDateToFileDatesAndCreationDateToRecordingDate)
{
    const test::ScopedTimeZone zone("Asia/Tokyo");
    QTemporaryDir dir;
    CommandContext context;
    context.storageFolder = dir.filePath("copies");
    const CommandResult copies =
        movieShootDatesToFileDates({test::dataPath("ft-MacBook_keys.mov"), test::dataPath("ft-lavf.m4v")}, context);
    ASSERT_EQ(copies.written.size(), 1);
    EXPECT_EQ(copies.skipped.value(0).reason, "the movie has no recording date");
    EXPECT_EQ(readFileDates(copies.written[0]).modified,
              QDateTime(QDate(2014, 12, 19), QTime(7, 39, 6), Qt::LocalTime));
    QFile source(test::dataPath("ft-MacBook_keys.mov"));
    QFile copy(copies.written[0]);
    ASSERT_TRUE(source.open(QIODevice::ReadOnly) && copy.open(QIODevice::ReadOnly));
    EXPECT_EQ(copy.readAll(), source.readAll());

    context.storageFolder = dir.filePath("dated");
    const QString movie = dir.filePath("movie.mp4");
    ASSERT_TRUE(QFile::copy(test::dataPath("ft-imovie.mp4"), movie));
    const QDateTime created = readFileDates(movie).created;
    const CommandResult dated = movieCreationDatesToRecordingDates({movie}, context);
    if (!created.isValid()) {
        EXPECT_EQ(dated.skipped.size(), 1);
        GTEST_SKIP() << "this file system keeps no creation dates";
    }
    ASSERT_EQ(dated.written.size(), 1) << dated.skipped.value(0).reason.toStdString();
    const MovieReading reading = readMovieFile(dated.written[0]);
    QString isoDate;
    for (const MediaMetadataItem& item : reading.item.fileMetaArray) {
        if (item.identifier == "uiso/date")
            isoDate = item.value.toString();
    }
    EXPECT_EQ(isoDate, created.toLocalTime().toString("yyyy:MM:dd HH:mm:ss"));
}

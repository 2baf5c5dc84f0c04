// Movies as FFmpeg and exiftool write them, read and written by us and checked by ffprobe and
// exiftool.
#include "ExifTool.h"
#include "ScopedTimeZone.h"
#include "ToolMovies.h"
#include "isobmff/BoxTree.h"
#include "video/MovieDateCommands.h"
#include "video/MovieRecordFill.h"
#include "video/MovieReader.h"
#include "video/MovieRemoval.h"
#include "video/MovieSave.h"
#include "model/ItemPictureImage.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/resource.h>

using namespace pelorin;

namespace {

// How many 'meta' boxes the movie box and its user data hold.
std::pair<std::size_t, std::size_t> metaBoxCounts(const QString& path)
{
    FileByteSource source(path);
    if (!source.open(nullptr))
        return {99, 99};
    const BoxTree tree = readBoxTree(source);
    const Box* moov = tree.top("moov");
    const Box* udta = moov ? moov->child("udta") : nullptr;
    return {moov ? moov->childrenOfType("meta").size() : 99, udta ? udta->childrenOfType("meta").size() : 0};
}

QStringList identifiers(const IKImageItem& item)
{
    QStringList out;
    for (const MediaMetadataItem& entry : item.fileMetaArray)
        out.append(entry.identifier);
    return out;
}

CommandContext contextIn(const QTemporaryDir& dir)
{
    CommandContext context;
    context.storageFolder = dir.filePath(QStringLiteral("out"));
    return context;
}

}  // namespace

TEST(MoviesFromTools, KeysInTheUserDataAreReadAndChangedWhereTheyAre)
{
    const test::ScopedTimeZone utc("UTC");
    for (const QString& extension : {QStringLiteral("mov"), QStringLiteral("mp4")}) {
        SCOPED_TRACE(extension.toStdString());
        QTemporaryDir dir;
        const QString source = dir.filePath("keys." + extension);
        ASSERT_TRUE(test::makeFfmpegFile(source, {"-movflags", "use_metadata_tags", "-metadata", "title=Keys Title",
                                                  "-metadata", "artist=Keys Artist", "-metadata",
                                                  "creation_time=2020-06-01T10:00:00Z"}, true, true));
        const MovieReading reading = readMovieFile(source);
        EXPECT_EQ(reading.item.fileTitle, "Keys Title");
        EXPECT_EQ(reading.item.fileArist, "Keys Artist");
        EXPECT_EQ(reading.item.shootDateStr, "2020-06-01 10:00:00");
        EXPECT_TRUE(identifiers(reading.item).contains("mdta/encoder"));

        CommandContext context = contextIn(dir);
        MovieChanges edits;
        edits.texts[MovieField::Title] = "Rio";
        edits.location = MovieLocationText{"-22.95", "-43.21", ""};
        context.dryRun = true;
        const CommandResult plan = saveMovieFields({source}, edits, context);
        ASSERT_FALSE(plan.planned.isEmpty());
        EXPECT_EQ(plan.planned[0].property, "mdta/title");
        EXPECT_EQ(plan.planned[0].before, "Keys Title");
        EXPECT_EQ(plan.planned[0].after, "Rio");

        context.dryRun = false;
        context.outputNames = std::make_shared<OutputNames>();  // a new command after the plan
        const CommandResult result = saveMovieFields({source}, edits, context);
        ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
        const QString output = context.storageFolder + "/keys." + extension;
        const QMap<QString, QString> probed = test::ffprobeTags(output);
        EXPECT_EQ(probed.value("title"), "Rio");
        EXPECT_EQ(probed.value("artist"), "Keys Artist");
        EXPECT_EQ(probed.value("encoder"), test::ffprobeTags(source).value("encoder"));
        EXPECT_EQ(probed.value("creation_time"), "2020-06-01T10:00:00Z");
        const QJsonObject tags = test::exiftool(output);
        EXPECT_EQ(tags.value("Keys:Title").toString(), "Rio");
        EXPECT_FALSE(tags.contains("ItemList:Title"));
        EXPECT_NEAR(tags.value("Keys:GPSCoordinates").toString().section(' ', 0, 0).toDouble(), -22.95, 1e-4);
        // One key table, where FFmpeg put it: no second 'meta' in the movie box.
        EXPECT_EQ(metaBoxCounts(output), std::make_pair(std::size_t(0), std::size_t(1)));
        EXPECT_EQ(test::streamHash(output), test::streamHash(source));
        EXPECT_EQ(readMovieFile(output).item.fileTitle, "Rio");
    }
}

TEST(MoviesFromTools, NewFieldsOfAKeysMovieJoinItsKeyTable)
{
    QTemporaryDir dir;
    const QString source = dir.filePath("keys.mov");
    ASSERT_TRUE(test::makeFfmpegFile(source, {"-movflags", "use_metadata_tags", "-metadata", "title=T"}));
    QImage cover(8, 8, QImage::Format_RGB32);
    cover.fill(Qt::red);
    ASSERT_TRUE(cover.save(dir.filePath("cover.png")));
    CommandContext context = contextIn(dir);
    MovieChanges edits;
    edits.texts[MovieField::Album] = "Album";
    edits.artworkPath = dir.filePath("cover.png");
    ASSERT_TRUE(saveMovieFields({source}, edits, context).succeeded());
    const QString output = context.storageFolder + "/keys.mov";
    EXPECT_EQ(test::ffprobeTags(output).value("album"), "Album");
    EXPECT_TRUE(test::exiftool(output).contains("Keys:Artwork"));
    EXPECT_EQ(metaBoxCounts(output), std::make_pair(std::size_t(0), std::size_t(1)));
    const IKImageItem item = readMovieFile(output).item;
    EXPECT_EQ(item.fileTitle, "T");
    EXPECT_EQ(item.fileAblumName, "Album");
    EXPECT_EQ(pictureImage(item.fileImage).size(), QSize(8, 8));
}

TEST(MoviesFromTools, KeysInTheMovieBoxAsExiftoolWritesThemStayThere)
{
    QTemporaryDir dir;
    const QString source = dir.filePath("apple.mp4");
    ASSERT_TRUE(test::makeFfmpegFile(source, {}));
    ASSERT_TRUE(test::exiftoolWrite(source, {"-Keys:Title=Old", "-Keys:Make=Apple", "-Keys:Model=iPhone"}));
    ASSERT_EQ(readMovieFile(source).item.fileTitle, "Old");
    CommandContext context = contextIn(dir);
    MovieChanges edits;
    edits.texts[MovieField::Title] = "New";
    ASSERT_TRUE(saveMovieFields({source}, edits, context).succeeded());
    const QString output = context.storageFolder + "/apple.mp4";
    const QJsonObject tags = test::exiftool(output);
    EXPECT_EQ(tags.value("Keys:Title").toString(), "New");
    EXPECT_EQ(tags.value("Keys:Make").toString(), "Apple");
    EXPECT_FALSE(tags.contains("ItemList:Title"));
    EXPECT_EQ(metaBoxCounts(output).first, 1u);
}

TEST(MoviesFromTools, PlainTitlesArtistsAndHeaderDatesFillTheFields)
{
    const test::ScopedTimeZone utc("UTC");
    QTemporaryDir dir;
    const QStringList metadata = {"-metadata", "title=Plain Title", "-metadata", "artist=Plain Artist", "-metadata",
                                  "creation_time=2019-05-06T07:08:09Z"};
    for (const QString& extension : {QStringLiteral("mov"), QStringLiteral("mp4"), QStringLiteral("3gp")}) {
        SCOPED_TRACE(extension.toStdString());
        const QString source = dir.filePath("plain." + extension);
        ASSERT_TRUE(test::makeFfmpegFile(source, metadata));
        const IKImageItem item = readMovieFile(source).item;
        EXPECT_EQ(item.fileTitle, "Plain Title");
        // 3GPP files keep the artist as the performer, and exiftool reads it so.
        EXPECT_EQ(extension == "3gp" ? item.fileActor : item.fileArist, "Plain Artist");
        // No date item: the movie header's creation time, as exiftool's CreateDate.
        EXPECT_EQ(item.shootDateStr, "2019:05:06 07:08:09");
        EXPECT_EQ(item.shootDateStr, test::exiftool(source).value("QuickTime:CreateDate").toString());
    }
    // A new title replaces the user-data title instead of hiding behind a second one.
    CommandContext context = contextIn(dir);
    MovieChanges edits;
    edits.texts[MovieField::Title] = "New Title";
    ASSERT_TRUE(saveMovieFields({dir.filePath("plain.mov")}, edits, context).succeeded());
    const QString output = context.storageFolder + "/plain.mov";
    EXPECT_EQ(test::ffprobeTags(output).value("title"), "New Title");
    const QJsonObject tags = test::exiftool(output);
    EXPECT_EQ(tags.value("UserData:Title").toString(), "New Title");
    EXPECT_FALSE(tags.contains("ItemList:Title"));
    EXPECT_EQ(tags.value("UserData:Artist").toString(), "Plain Artist");
}

TEST(MoviesFromTools, TheBestDateWinsWhateverItsPlace)
{
    IKImageItem item;
    applyMovieItems(item, {{"mdta", "com.apple.quicktime.creationdate", "mdta/com.apple.quicktime.creationdate",
                            "2021-07-01T09:00:00+0200", "UTF-8", {}},
                           {"mdta", "creation_time", "mdta/creation_time", "2021-07-01T07:00:05Z", "UTF-8", {}}});
    EXPECT_EQ(item.shootDateStr, "2021-07-01 09:00:00");
}

TEST(MoviesFromTools, RemovalKeepsCameraAndEncoderKeysWhereverTheyAre)
{
    QTemporaryDir dir;
    const QString userData = dir.filePath("phone.mov");
    ASSERT_TRUE(test::makeFfmpegFile(userData, {"-movflags", "use_metadata_tags", "-metadata", "title=Trip",
                                                "-metadata", "com.apple.quicktime.make=Apple", "-metadata",
                                                "com.apple.quicktime.model=iPhone 12", "-metadata",
                                                "com.apple.quicktime.software=16.1"}));
    const QString movieBox = dir.filePath("phone.mp4");
    ASSERT_TRUE(test::makeFfmpegFile(movieBox, {}));
    ASSERT_TRUE(test::exiftoolWrite(movieBox, {"-Keys:Title=Trip", "-Keys:Make=Apple", "-Keys:Model=iPhone 12",
                                               "-Keys:Software=16.1"}));
    CommandContext context = contextIn(dir);
    const CommandResult result = removeMovieMetadata({userData, movieBox}, context);
    ASSERT_EQ(result.written.size(), 2) << result.skipped.value(0).reason.toStdString();
    for (const QString& output : result.written) {
        SCOPED_TRACE(output.toStdString());
        const QJsonObject tags = test::exiftool(output);
        EXPECT_EQ(tags.value("Keys:Make").toString(), "Apple");
        EXPECT_EQ(tags.value("Keys:Model").toString(), "iPhone 12");
        EXPECT_EQ(tags.value("Keys:Software").toVariant().toString(), "16.1");
        EXPECT_FALSE(tags.contains("Keys:Title"));
        EXPECT_FALSE(test::ffprobeTags(output).contains("title"));
        // The header's creation time would show as the recording date: it goes as well.
        EXPECT_EQ(tags.value("QuickTime:CreateDate").toString(), "0000:00:00 00:00:00");
    }
    EXPECT_EQ(test::exiftool(result.written[0]).value("Keys:Encoder").toString(),
              test::exiftool(userData).value("Keys:Encoder").toString());
}

TEST(MoviesFromTools, ADateInTheSpringGapKeepsItsWallClockWithTheLaterOffset)
{
    const test::ScopedTimeZone berlin("Europe/Berlin");
    QTemporaryDir dir;
    const QString source = dir.filePath("keys.mov");
    ASSERT_TRUE(test::makeFfmpegFile(source, {"-movflags", "use_metadata_tags", "-metadata", "title=T",
                                              "-metadata", "creation_time=2020-06-01T10:00:00Z"}));
    const QString named = dir.filePath("VID_20210328_023000.mov");
    ASSERT_TRUE(QFile::copy(source, named));
    CommandContext context = contextIn(dir);
    MovieChanges edits;
    edits.recordingDate = "2021-03-28 02:30:00";
    const CommandResult saved = saveMovieFields({source}, edits, context);
    context.outputNames = std::make_shared<OutputNames>();  // a second command
    const CommandResult fromName = movieDatesFromFileNames({named}, context);
    ASSERT_EQ(saved.written.size() + fromName.written.size(), 2u);
    for (const QString& output : {saved.written[0], fromName.written[0]}) {
        SCOPED_TRACE(output.toStdString());
        const QJsonObject tags = test::exiftool(output);
        EXPECT_EQ(tags.value("Keys:CreationDate").toString(), "2021:03:28 02:30:00+02:00");
        // FFmpeg's own date key follows instead of keeping the old date.
        EXPECT_EQ(test::ffprobeTags(output).value("creation_time"), "2021-03-28T02:30:00+0200");
        EXPECT_EQ(tags.value("QuickTime:CreateDate").toString(), "2021:03:28 00:30:00");
        EXPECT_EQ(readMovieFile(output).item.shootDateStr, "2021-03-28 02:30:00");
        EXPECT_EQ(metaBoxCounts(output).first, 0u);
    }

    edits.recordingDate = "2021-02-30 10:00:00";
    const CommandResult refused = saveMovieFields({source}, edits, contextIn(dir));
    EXPECT_TRUE(refused.alert.has_value());
    EXPECT_TRUE(refused.written.isEmpty());
}

TEST(MoviesFromTools, ADurationBeyondAnyClockShowsAsTheLongest)
{
    // Headers that state 4294967280 seconds (a damaged movie): the shown duration stays a
    // duration, not a negative number wrapped around.
    QTemporaryDir dir;
    const QString path = dir.filePath("endless.mp4");
    ASSERT_TRUE(test::makeFfmpegFile(path, {}));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    QByteArray bytes = file.readAll();
    for (const char* header : {"mvhd", "mdhd"}) {
        const qsizetype at = bytes.indexOf(header);
        ASSERT_GT(at, 0);
        // Version 0: timescale and duration follow the two times.
        bytes.replace(at + 16, 8, QByteArray::fromHex("00000001fffffff0"));
    }
    file.seek(0);
    file.write(bytes);
    file.close();
    QProcess ffprobe;
    ffprobe.start("ffprobe", {"-v", "error", "-show_entries", "format=duration", "-of", "default=nw=1:nk=1", path});
    ASSERT_TRUE(ffprobe.waitForFinished(60000));
    EXPECT_EQ(ffprobe.readAllStandardOutput().trimmed(), "4294967280.000000");

    const MovieReading reading = readMovieFile(path);
    EXPECT_EQ(reading.item.fileduratStr, "596523h:14m:7s");
}

TEST(MoviesFromTools, AKeyTableCountingMillionsOfKeysCostsNoMemory)
{
    // FFmpeg's keys, with the table's count raised to 50 million: FFmpeg would zero a table of
    // 400 MB for it before finding the second entry missing.
    QTemporaryDir dir;
    const QString path = dir.filePath("keys.mp4");
    ASSERT_TRUE(test::makeFfmpegFile(path, {"-movflags", "use_metadata_tags", "-metadata", "title=Quay"}));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    QByteArray bytes = file.readAll();
    const qsizetype keys = bytes.indexOf("keys");
    ASSERT_GT(keys, 0);
    bytes.replace(keys + 8, 4, QByteArray::fromHex("02faf080"));
    file.seek(0);
    file.write(bytes);
    file.close();

    rusage before {};
    getrusage(RUSAGE_SELF, &before);
    const MovieReading reading = readMovieFile(path);
    rusage after {};
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 100 * 1024) << "kilobytes more at the peak";
    EXPECT_FALSE(reading.problems.isEmpty());
}

// A short clip's last chunks are only a few bytes long, right before the movie box at the end;
// the read-back compares them as far as the media data goes, not into the changed movie box.
TEST(MoviesFromTools, AShortClipWithTinyLastChunksIsWritten)
{
    QTemporaryDir dir;
    for (const QString& extension : {QStringLiteral("mov"), QStringLiteral("mp4")}) {
        SCOPED_TRACE(extension.toStdString());
        const QString source = dir.filePath("short." + extension);
        // A still picture and silence: chunks of a few bytes each.
        ASSERT_EQ(QProcess::execute("ffmpeg", {"-y", "-v", "error", "-f", "lavfi", "-i", "color=black:size=64x48:rate=5",
                                               "-f", "lavfi", "-i", "anullsrc=r=8000", "-t", "1", "-c:v", "mpeg4",
                                               "-c:a", "aac", source}),
                  0);
        CommandContext context = contextIn(dir);
        MovieChanges edits;
        edits.texts[MovieField::Title] = "Harbour";
        const CommandResult result = saveMovieFields({source}, edits, context);
        ASSERT_TRUE(result.succeeded()) << (result.skipped.isEmpty() ? std::string() : result.skipped.first().reason.toStdString());
        const QString output = context.storageFolder + "/short." + extension;
        EXPECT_EQ(test::ffprobeTags(output).value("title"), "Harbour");
        EXPECT_EQ(test::streamHash(output), test::streamHash(source));
    }
}

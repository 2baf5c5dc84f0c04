#include "video/MovieRemux.h"
#include "video/MovieRemoval.h"
#include "video/MovieSave.h"

#include "ExifTool.h"
#include "TestPaths.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace pelorin;

namespace {

QByteArray run(const QStringList& arguments, const char* program = "ffprobe")
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(60000);
    return process.readAllStandardOutput();
}

QJsonObject formatTags(const QString& path)
{
    return QJsonDocument::fromJson(run({"-v", "error", "-show_entries", "format_tags", "-of", "json", path}))
        .object()
        .value("format")
        .toObject()
        .value("tags")
        .toObject();
}

QByteArray streamHashes(const QString& path)
{
    return run({"-v", "error", "-i", path, "-map", "0", "-c", "copy", "-f", "streamhash", "-"}, "ffmpeg");
}

}  // namespace

TEST(MovieRemux, MatroskaTagsChangeAndEveryPacketStays)
{
    QTemporaryDir dir;
    CommandContext context;
    context.storageFolder = dir.path();
    MovieChanges edits;
    edits.texts[MovieField::Title] = "Neu";
    edits.texts[MovieField::Director] = "Someone";
    const QString source = test::dataPath("taglib-optimized.mkv");
    const CommandResult result = saveMovieFields({source}, edits, context);
    ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
    const QString output = result.written.value(0);
    const QJsonObject tags = formatTags(output);
    EXPECT_EQ(tags.value("title").toString(), "Neu");
    EXPECT_EQ(tags.value("DIRECTOR").toString(), "Someone");
    EXPECT_EQ(tags.value("GENRE").toString(), "Genre");
    EXPECT_EQ(tags.value("ARTIST").toString(), "Actors");
    const QByteArray hashes = streamHashes(source);
    ASSERT_FALSE(hashes.isEmpty());
    EXPECT_EQ(streamHashes(output), hashes);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 1);

    // A location is not among the tags this container takes.
    MovieChanges located;
    located.location = MovieLocationText{"1", "2", ""};
    context.storageFolder = dir.filePath("located");
    const CommandResult refused = saveMovieFields({source}, located, context);
    ASSERT_EQ(refused.skipped.size(), 1);
    EXPECT_TRUE(refused.skipped[0].reason.contains("text fields only"));
}

TEST(MovieRemux, RemovalKeepsOnlyTheEncoderAndOtherContainersAreRefused)
{
    QTemporaryDir dir;
    CommandContext context;
    context.storageFolder = dir.path();
    const CommandResult result = removeMovieMetadata({test::dataPath("taglib-optimized.mkv")}, context);
    ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
    EXPECT_EQ(formatTags(result.written.value(0)).keys(), QStringList{"ENCODER"});

    EXPECT_FALSE(canRemuxWithTags(test::dataPath("ft-imovie.mp4")));
    EXPECT_FALSE(canRemuxWithTags(test::dataPath("et-Canon_RIFF.avi")));
    const RewriteReport avi = remuxWithTags(test::dataPath("et-Canon_RIFF.avi"), {{"title", "x"}}, dir.filePath("x.avi"));
    EXPECT_FALSE(avi.written);
    EXPECT_TRUE(avi.error.contains("cannot be written")) << avi.error.toStdString();
    EXPECT_FALSE(QFile::exists(dir.filePath("x.avi")));

    // Never onto the source itself.
    const QString copy = dir.filePath("self.mkv");
    ASSERT_TRUE(QFile::copy(test::dataPath("taglib-optimized.mkv"), copy));
    const RewriteReport self = remuxWithTags(copy, {{"title", "x"}}, copy);
    EXPECT_FALSE(self.written);
    EXPECT_EQ(formatTags(copy).value("title").toString(), "handbrake");
}

// A remux carries what the source's Matroska tracks say and adds nothing that FFmpeg found by
// decoding: mkvmerge left the field order undetermined and the AAC track without a bit depth.
TEST(MovieRemux, TrackParametersAreTheContainersOwn)
{
    QTemporaryDir dir;
    CommandContext context;
    context.storageFolder = dir.path();
    const QString mkvmerge = test::dataPath("ft-mkvmerge.mkv");
    const CommandResult result = removeMovieMetadata({mkvmerge}, context);
    ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
    const QJsonObject out = test::exiftool(result.written.value(0));
    // FlagInterlaced 0 is undetermined, as absent; 2 would claim progressive.
    EXPECT_EQ(out.value("Track1:VideoScanType").toInt(0), 0);
    EXPECT_FALSE(out.contains("Track2:AudioBitsPerSample"));
    EXPECT_NEAR(out.value("Track1:VideoFrameRate").toDouble(), 23.976024, 1e-5);
    // 720x404 shown at 720x404: written or left to its default, never another aspect.
    EXPECT_EQ(out.value("Track1:DisplayWidth").toInt(720), 720);
    EXPECT_EQ(out.value("Track1:DisplayHeight").toInt(404), 404);
    EXPECT_EQ(streamHashes(result.written.value(0)), streamHashes(mkvmerge));

    // Anamorphic video made by FFmpeg (720x576 shown at 16:9) keeps its display aspect.
    const QString wide = dir.filePath("wide-source.mkv");
    run({"-v", "error", "-f", "lavfi", "-i", "testsrc=size=720x576:rate=25", "-t", "0.4", "-c:v", "mpeg4",
         "-aspect", "16:9", wide},
        "ffmpeg");
    context.storageFolder = dir.filePath("wide");
    const CommandResult widened = removeMovieMetadata({wide}, context);
    ASSERT_TRUE(widened.succeeded()) << widened.skipped.value(0).reason.toStdString();
    const auto aspect = [](const QString& path) {
        return run({"-v", "error", "-select_streams", "v", "-show_entries", "stream=sample_aspect_ratio,display_aspect_ratio",
                    "-of", "csv=p=0", path});
    };
    EXPECT_EQ(aspect(widened.written.value(0)), "64:45,16:9\n");
    EXPECT_EQ(aspect(widened.written.value(0)), aspect(wide));
}

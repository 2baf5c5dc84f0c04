#include "video/MovieRemux.h"
#include "video/MovieRemoval.h"
#include "video/MovieSave.h"

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
    MovieFieldEdits edits;
    edits.title = "Neu";
    edits.director = "Someone";
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
    MovieFieldEdits located;
    located.latitude = "1";
    located.longitude = "2";
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

#include "TestPaths.h"
#include "media/ImportRecords.h"
#include "media/MediaRemoval.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace pelorin;

namespace {

// What ffprobe, an independent reader, finds of the entries asked for ("format_tags=title").
QString ffprobe(const QString& path, const QString& entries)
{
    QProcess probe;
    probe.start(QStringLiteral("ffprobe"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
                                            entries, QStringLiteral("-of"), QStringLiteral("csv=p=0"), path});
    probe.waitForFinished(60000);
    return QString::fromUtf8(probe.readAllStandardOutput()).trimmed();
}

// A folder tree as people bring it: photos, songs and movies among other files, in sub-folders.
TEST(MediaBatchesTest, ImportCoversTheKindsOfItsScopeInNameOrder)
{
    QTemporaryDir dir;
    const QDir root(dir.path());
    ASSERT_TRUE(root.mkpath(QStringLiteral("b/inner")));
    for (const char* name : {"b/inner/z.mp3", "b/a.JPG", "b/notes.txt", "c.mov", "a.m4a"})
        ASSERT_TRUE(QFile::copy(test::dataPath(QStringLiteral("ft-imovie.mp4")), root.filePath(QString::fromLatin1(name))));
    const QStringList given = {root.filePath(QStringLiteral("b")), root.filePath(QStringLiteral("c.mov")),
                               root.filePath(QStringLiteral("a.m4a"))};
    const auto names = [&](const QStringList& files) {
        QStringList relative;
        for (const QString& file : files)
            relative << root.relativeFilePath(file);
        return relative;
    };
    EXPECT_EQ(names(expandImportPaths(given, ImportScope::AllMedia, nullptr)),
              (QStringList{"b/a.JPG", "b/inner/z.mp3", "c.mov", "a.m4a"}));
    EXPECT_EQ(names(expandImportPaths(given, ImportScope::PhotosAndMovies, nullptr)),
              (QStringList{"b/a.JPG", "c.mov"}));
    const std::atomic_bool cancelled{true};
    EXPECT_TRUE(expandImportPaths(given, ImportScope::AllMedia, &cancelled).isEmpty());
}

// Songs and movies lose their tags through their own kind's removal, photos are passed over with
// the reason, and progress counts every song and movie.
TEST(MediaBatchesTest, RemovalSplitsTheFilesByKind)
{
    QTemporaryDir dir;
    CommandContext context;
    context.storageFolder = dir.filePath(QStringLiteral("out"));
    QList<std::pair<int, int>> progress;
    context.progress = [&](int done, int total) { progress.append({done, total}); };
    const QString song = test::dataPath(QStringLiteral("atl-id3v23_utf16_apic.mp3"));
    const QString movie = test::dataPath(QStringLiteral("ft-imovie.mp4"));
    const QString photo = test::dataPath(QStringLiteral("et-GPS.jpg"));
    const QString title = QStringLiteral("format_tags=title");
    ASSERT_FALSE(ffprobe(song, title).isEmpty());

    const CommandResult result = removeMediaMetadata({photo, song, movie}, context);
    ASSERT_EQ(result.written.size(), 2);
    ASSERT_EQ(result.skipped.size(), 1);
    EXPECT_EQ(result.skipped.first().path, photo);
    EXPECT_EQ(ffprobe(result.written.value(0), title), QString());
    EXPECT_EQ(ffprobe(result.written.value(1), QStringLiteral("format=duration")),
              ffprobe(movie, QStringLiteral("format=duration")));  // the movie is whole
    ASSERT_FALSE(progress.isEmpty());
    EXPECT_EQ(progress.last(), std::make_pair(2, 2));
}

}  // namespace

#include "isobmff/BoxRewrite.h"

#include "TestPaths.h"
#include "ToolMovies.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace pelorin;

namespace {

BoxTree treeOfFile(const QString& path)
{
    FileByteSource source(path);
    EXPECT_TRUE(source.open(nullptr));
    return readBoxTree(source);
}

// A QuickTime user-data text: length, language, text.
BoxNode titleAtom(const QByteArray& text)
{
    QByteArray payload;
    payload.append(char(text.size() >> 8)).append(char(text.size())).append("\x55\xc4", 2).append(text);
    return BoxNode::leaf("\xa9nam", payload);
}

struct Edited {
    RewriteReport report;
    QString path;
};

// Rewrites source into dir/name with the movie box changed by the edit function.
template <typename Edit>
Edited rewriteMovie(const QString& source, const QTemporaryDir& dir, const QString& name, Edit edit)
{
    FileByteSource input(source);
    EXPECT_TRUE(input.open(nullptr));
    const BoxTree tree = readBoxTree(input);
    std::size_t index = 0;
    while (index < tree.boxes.size() && !tree.boxes[index].is("moov"))
        ++index;
    EXPECT_LT(index, tree.boxes.size());
    std::optional<BoxNode> moov = loadBoxNode(input, tree.boxes[index], tree.fileSize);
    EXPECT_TRUE(moov.has_value());
    edit(*moov);
    const QString target = dir.filePath(name);
    return {rewriteTopLevelBoxes(source, tree, {{index, std::move(*moov), {}, {}}}, target), target};
}

void setTitle(BoxNode& moov, const QByteArray& title)
{
    if (!moov.child("udta"))
        moov.children.push_back(BoxNode::parent("udta", {}));
    moov.child("udta")->setChild(titleAtom(title));
}

std::int64_t mdatOffset(const QString& path)
{
    const BoxTree tree = treeOfFile(path);
    const Box* mdat = tree.top("mdat");
    return mdat ? mdat->offset : -1;
}

}  // namespace

TEST(BoxRewrite, MovieBeforeMediaGrowsAndTheChunkOffsetsFollow)
{
    QTemporaryDir dir;
    const QString source = test::dataPath("ft-imovie.mp4");
    const Edited out = rewriteMovie(source, dir, "titled.mp4",
                                    [](BoxNode& moov) { setTitle(moov, QByteArray(300, 'T') + " end"); });
    ASSERT_TRUE(out.report.written) << out.report.error.toStdString();
    EXPECT_TRUE(out.report.offsetsShifted);
    EXPECT_GT(mdatOffset(out.path), mdatOffset(source));
    EXPECT_TRUE(treeOfFile(out.path).clean());
    const QByteArray hashes = test::streamHash(source);
    ASSERT_FALSE(hashes.isEmpty());
    EXPECT_EQ(test::streamHash(out.path), hashes);
    EXPECT_TRUE(test::ffprobeTags(out.path).value("title").endsWith(" end"));
}

TEST(BoxRewrite, MovieAfterMediaLeavesTheMediaInPlace)
{
    QTemporaryDir dir;
    for (const QString& name : QStringList{"ft-lavf.m4v", "ft-MacBook_keys.mov"}) {
        SCOPED_TRACE(name.toStdString());
        const QString source = test::dataPath(name);
        const Edited out = rewriteMovie(source, dir, name, [](BoxNode& moov) { setTitle(moov, "Ein Titel ü"); });
        ASSERT_TRUE(out.report.written) << out.report.error.toStdString();
        EXPECT_FALSE(out.report.offsetsShifted);
        EXPECT_EQ(mdatOffset(out.path), mdatOffset(source));
        EXPECT_EQ(test::streamHash(out.path), test::streamHash(source));
        EXPECT_EQ(test::ffprobeTags(out.path).value("title"), QStringLiteral("Ein Titel ü"));
    }
}

TEST(BoxRewrite, FreeSpaceAbsorbsShrinkingAndLaterGrowth)
{
    QTemporaryDir dir;
    const QString source = test::dataPath("ft-imovie.mp4");
    const Edited shrunk = rewriteMovie(source, dir, "shrunk.mp4", [](BoxNode& moov) { moov.removeChildren("udta"); });
    ASSERT_TRUE(shrunk.report.written) << shrunk.report.error.toStdString();
    EXPECT_TRUE(shrunk.report.paddingUsed);
    EXPECT_FALSE(shrunk.report.offsetsShifted);
    EXPECT_EQ(mdatOffset(shrunk.path), mdatOffset(source));
    EXPECT_TRUE(test::ffprobeTags(shrunk.path).value("title").isEmpty());

    // The 'free' box left behind takes a small title without moving the media.
    const Edited grown = rewriteMovie(shrunk.path, dir, "grown.mp4", [](BoxNode& moov) { setTitle(moov, "Short"); });
    ASSERT_TRUE(grown.report.written) << grown.report.error.toStdString();
    EXPECT_TRUE(grown.report.paddingUsed);
    EXPECT_FALSE(grown.report.offsetsShifted);
    EXPECT_EQ(mdatOffset(grown.path), mdatOffset(source));
    EXPECT_EQ(QFile(grown.path).size(), QFile(source).size());
    EXPECT_EQ(test::ffprobeTags(grown.path).value("title"), "Short");
    EXPECT_EQ(test::streamHash(grown.path), test::streamHash(source));
}

// Large media that has to move moves by whole blocks (a 'free' box of ours takes up the rest), so
// that XFS and btrfs clone it instead of copying; media that a shrinking movie box would pull
// forward stays where it was.
TEST(BoxRewrite, LargeMediaMovesByWholeBlocksOrNotAtAll)
{
    QTemporaryDir dir;
    const QString source = dir.filePath("large.mp4");
    ASSERT_EQ(QProcess::execute("ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "testsrc=d=2:s=640x360:r=25,noise=alls=80:allf=t", "-c:v",
                                           "mpeg4", "-q:v", "3", "-movflags", "+faststart", source}),
              0);
    ASSERT_GT(QFile(source).size(), 1024 * 1024);
    const std::int64_t before = mdatOffset(source);
    ASSERT_GT(before, 0);
    const QByteArray hashes = test::streamHash(source);
    ASSERT_FALSE(hashes.isEmpty());

    const Edited grown = rewriteMovie(source, dir, "grown.mp4", [](BoxNode& moov) { setTitle(moov, QByteArray(300, 'T')); });
    ASSERT_TRUE(grown.report.written) << grown.report.error.toStdString();
    EXPECT_TRUE(grown.report.offsetsShifted);
    const std::int64_t moved = mdatOffset(grown.path) - before;
    EXPECT_GT(moved, 0);
    EXPECT_EQ(moved % 4096, 0);
    EXPECT_TRUE(treeOfFile(grown.path).top("free"));
    EXPECT_EQ(test::streamHash(grown.path), hashes);
    EXPECT_EQ(test::ffprobeTags(grown.path).value("title"), QString(300, 'T'));

    const Edited shrunk = rewriteMovie(source, dir, "shrunk.mp4", [](BoxNode& moov) { moov.removeChildren("udta"); });
    ASSERT_TRUE(shrunk.report.written) << shrunk.report.error.toStdString();
    EXPECT_FALSE(shrunk.report.offsetsShifted);
    EXPECT_EQ(mdatOffset(shrunk.path), before);
    EXPECT_EQ(test::streamHash(shrunk.path), hashes);
}

TEST(BoxRewrite, RefusesFragmentedAndDamagedFilesWithoutWriting)
{
    QTemporaryDir dir;
    const QString fragmented = dir.filePath("fragmented.mp4");
    ASSERT_EQ(QProcess::execute("ffmpeg", {"-v", "error", "-i", test::dataPath("ft-imovie.mp4"), "-c", "copy",
                                           "-movflags", "frag_keyframe+empty_moov", fragmented}),
              0);
    const Edited refused = rewriteMovie(fragmented, dir, "out.mp4", [](BoxNode& moov) { setTitle(moov, "x"); });
    EXPECT_FALSE(refused.report.written);
    EXPECT_TRUE(refused.report.error.contains("fragmented"));
    EXPECT_FALSE(QFile::exists(refused.path));

    const QString truncated = test::dataPath("mutagen-truncated-64bit.mp4");
    const BoxTree tree = treeOfFile(truncated);
    const RewriteReport damaged = rewriteTopLevelBoxes(truncated, tree, {}, dir.filePath("t.mp4"));
    EXPECT_FALSE(damaged.written);
    EXPECT_TRUE(damaged.error.contains("damaged"));
    EXPECT_FALSE(QFile::exists(dir.filePath("t.mp4")));

    // An edit whose type does not match the box it replaces.
    const QString plain = test::dataPath("ft-lavf.m4v");
    const RewriteReport mismatched =
        rewriteTopLevelBoxes(plain, treeOfFile(plain), {{0, BoxNode::leaf("moov", {}), {}, {}}}, dir.filePath("m.m4v"));
    EXPECT_FALSE(mismatched.written);
    EXPECT_FALSE(QFile::exists(dir.filePath("m.m4v")));
}

#include "isobmff/BoxNode.h"
#include "isobmff/BoxTree.h"

#include "TestPaths.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>

#include <gtest/gtest.h>

using namespace pelorin;

namespace {

QByteArray box(const char* type, const QByteArray& payload)
{
    return BoxNode::leaf(type, payload).serialize();
}

QByteArray rawBox(std::uint32_t size, const char* type, const QByteArray& payload = {})
{
    QByteArray out;
    appendU32(out, size);
    out.append(type, 4);
    return out + payload;
}

BoxTree treeOf(const QByteArray& bytes)
{
    MemoryByteSource source(bytes);
    return readBoxTree(source);
}

BoxTree treeOfFile(const QString& name)
{
    FileByteSource source(test::dataPath(name));
    QString error;
    EXPECT_TRUE(source.open(&error)) << error.toStdString();
    return readBoxTree(source);
}

}  // namespace

TEST(BoxTree, ReadsTheMovieStructureOfRealFiles)
{
    const BoxTree keys = treeOfFile("ft-MacBook_keys.mov");
    EXPECT_TRUE(keys.clean()) << keys.problems.join("; ").toStdString();
    ASSERT_EQ(keys.boxes.size(), 4u);
    EXPECT_EQ(keys.boxes[2].type, "mdat");
    EXPECT_EQ(keys.boxes[3].end(), keys.fileSize);
    ASSERT_NE(keys.find("moov/meta/keys"), nullptr);
    ASSERT_NE(keys.find("moov/meta/ilst"), nullptr);
    EXPECT_FALSE(keys.find("moov/meta/ilst")->children.empty());
    EXPECT_NE(keys.find("moov/trak/mdia/minf/stbl/stco"), nullptr);

    // iTunes-style metadata sits in udta/meta, an ISO full box.
    const BoxTree lavf = treeOfFile("ft-lavf.m4v");
    const Box* meta = lavf.find("moov/udta/meta");
    ASSERT_NE(meta, nullptr);
    EXPECT_EQ(meta->childrenStart, 4);
    EXPECT_NE(lavf.find("moov/udta/meta/ilst"), nullptr);
}

TEST(BoxTree, LoadedBoxesSerializeToTheirOriginalBytes)
{
    for (const QString& name : QStringList{"ft-MacBook_keys.mov", "ft-imovie.mp4", "ft-lavf.m4v", "mde-sample.3gp",
                                "et-QuickTime.mov", "exiv2-iPhoneXR_orient6.heic"}) {
        SCOPED_TRACE(name.toStdString());
        FileByteSource source(test::dataPath(name));
        ASSERT_TRUE(source.open(nullptr));
        const BoxTree tree = readBoxTree(source);
        EXPECT_TRUE(tree.clean()) << tree.problems.join("; ").toStdString();
        for (const Box& top : tree.boxes) {
            if (top.is("mdat"))
                continue;
            const auto node = loadBoxNode(source, top, tree.fileSize);
            ASSERT_TRUE(node.has_value());
            EXPECT_EQ(node->serialize(), source.read(top.offset, top.size)) << boxTypeName(top.type).toStdString();
        }
    }
}

TEST(BoxTree, HandlesLargeSizesUuidAndSizeZero)
{
    QByteArray large;
    appendU32(large, 1);
    large.append("mdat");
    appendU64(large, 16 + 4);
    large.append("abcd");
    const QByteArray uuid = rawBox(8 + 16 + 2, "uuid", QByteArray(16, '\x7f') + "xy");
    const QByteArray last = rawBox(0, "free", "tail");
    const BoxTree tree = treeOf(box("ftyp", "isom") + large + uuid + last);
    EXPECT_TRUE(tree.clean()) << tree.problems.join("; ").toStdString();
    ASSERT_EQ(tree.boxes.size(), 4u);
    EXPECT_EQ(tree.boxes[1].headerSize, 16);
    EXPECT_EQ(tree.boxes[1].payloadSize(), 4);
    EXPECT_EQ(tree.boxes[2].userType, QByteArray(16, '\x7f'));
    EXPECT_EQ(tree.boxes[2].payloadSize(), 2);
    EXPECT_EQ(tree.boxes[3].size, 12);
}

TEST(BoxTree, StopsAtHostileSizesAndKeepsWhatCameBefore)
{
    // A child claiming more than its parent holds.
    const QByteArray moov = box("moov", box("mvhd", QByteArray(8, '\0')) + rawBox(500, "trak"));
    BoxTree tree = treeOf(moov);
    ASSERT_EQ(tree.boxes.size(), 1u);
    EXPECT_EQ(tree.boxes[0].children.size(), 1u);
    ASSERT_FALSE(tree.clean());
    EXPECT_TRUE(tree.problems[0].contains("larger than its parent"));

    // A size smaller than a header cannot advance: reading stops there.
    tree = treeOf(box("ftyp", "isom") + rawBox(4, "junk") + box("free", ""));
    EXPECT_EQ(tree.boxes.size(), 1u);
    EXPECT_TRUE(tree.problems.join(" ").contains("impossible size"));

    // A 64-bit size beyond the file: the box is cut at the end and the file called truncated.
    QByteArray huge;
    appendU32(huge, 1);
    huge.append("mdat");
    appendU64(huge, 0xffffffffffffff00ull);
    tree = treeOf(box("ftyp", "isom") + huge + "data");
    ASSERT_EQ(tree.boxes.size(), 2u);
    EXPECT_EQ(tree.boxes[1].end(), tree.fileSize);
    EXPECT_TRUE(tree.problems.join(" ").contains("truncated"));

    // Nothing but garbage.
    EXPECT_FALSE(treeOf("\x01\x02\x03").clean());
    EXPECT_FALSE(treeOf({}).clean());
}

TEST(BoxTree, BoundsNestingAndAcceptsTheUserDataTerminator)
{
    QByteArray nested = box("free", "");
    for (int i = 0; i < 200; ++i)
        nested = box("moov", nested);
    const BoxTree deep = treeOf(nested);
    ASSERT_EQ(deep.boxes.size(), 1u);
    EXPECT_TRUE(deep.problems.join(" ").contains("nested too deeply"));

    const QByteArray udta = box("udta", box("\xa9nam", QByteArray("\x00\x01\x55\xc4x", 5)) + QByteArray(4, '\0'));
    const BoxTree terminated = treeOf(box("moov", udta));
    EXPECT_TRUE(terminated.clean()) << terminated.problems.join("; ").toStdString();
    const Box* title = terminated.find("moov/udta/\xa9nam");
    ASSERT_NE(title, nullptr);
    EXPECT_EQ(boxTypeName(title->type), "%A9nam");
}

TEST(BoxTree, DamagedFilesGiveReasonsNotCrashes)
{
    for (const QString& name : QStringList{"mutagen-truncated-64bit.mp4", "mde-fuzz-isom.mp4", "exiv2-issue_1793_poc.heic",
                                "libheif-github_15.heic"}) {
        SCOPED_TRACE(name.toStdString());
        const BoxTree tree = treeOfFile(name);
        EXPECT_FALSE(tree.clean());
        for (const QString& problem : tree.problems)
            EXPECT_FALSE(problem.isEmpty());
    }
    // Every other sample reads too, whatever it is.
    for (const QString& name : QDir(test::dataPath("")).entryList(QDir::Files))
        treeOfFile(name);
}

// The file source serves small reads from a window of the file; whatever the order and size of
// the reads, each must give exactly the file's bytes there.
TEST(BoxTree, FileReadsGiveTheFileBytesInAnyOrder)
{
    const QString path = test::dataPath("exiv2-iPhoneXR_orient6.heic");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll();
    FileByteSource source(path);
    ASSERT_TRUE(source.open(nullptr));
    ASSERT_EQ(source.size(), whole.size());
    const std::int64_t size = whole.size();
    struct Read {
        std::int64_t offset;
        std::int64_t length;
    };
    std::vector<Read> reads{{10, 8},           {20, 100},        {65540, 16},      {10, 65530},  {5, 4},
                            {5, 200000},       {65536, 65536},   {size - 3, 10},   {size, 1},    {size - 70000, 70000},
                            {0, size},         {-1, 4},          {100, 0}};
    QRandomGenerator random(7);
    for (int i = 0; i < 2000; ++i)
        reads.push_back({random.bounded(int(size)), random.bounded(i % 10 == 0 ? 200000 : 600)});
    for (const Read& read : reads) {
        SCOPED_TRACE(std::to_string(read.offset) + "+" + std::to_string(read.length));
        const QByteArray expected = read.offset < 0 || read.length <= 0 ? QByteArray()
                                                                         : whole.mid(read.offset, read.length);
        ASSERT_EQ(source.read(read.offset, read.length), expected);
    }
}

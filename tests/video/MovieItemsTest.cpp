#include "isobmff/BoxNode.h"
#include "video/MovieItems.h"

#include <gtest/gtest.h>

using namespace pelorin;

namespace {

QByteArray u32(std::uint32_t value)
{
    QByteArray out;
    appendU32(out, value);
    return out;
}

// Version and flags, then the packed language "eng".
QByteArray isoHeader()
{
    return QByteArray(4, '\0') + QByteArray("\x15\xc7", 2);
}

BoxNode dataBox(std::uint32_t type, const QByteArray& value)
{
    return BoxNode::leaf("data", u32(type) + u32(0) + value);
}

MediaMetadataItems itemsOf(const BoxNode& moov, QStringList* problems = nullptr)
{
    MemoryByteSource source(BoxNode::leaf("ftyp", "qt  ").serialize() + moov.serialize());
    const BoxTree tree = readBoxTree(source);
    EXPECT_TRUE(tree.clean()) << tree.problems.join("; ").toStdString();
    return readMovieItems(source, tree, problems);
}

}  // namespace

TEST(MovieItems, ThirdGenerationUserDataBoxesDecode)
{
    const QByteArray loci = isoHeader() + QByteArray("Home\0", 5) + QByteArray(1, '\0')
                            + u32(std::uint32_t(std::int32_t(-122.5 * 65536))) + u32(std::uint32_t(37.25 * 65536))
                            + u32(std::uint32_t(10 * 65536)) + QByteArray("earth\0\0", 7);
    const QByteArray keywords = isoHeader() + QByteArray("\x02\x04sea\0\x05sand\0", 13);
    const QByteArray utf16Title = isoHeader() + QByteArray("\xfe\xff\x00T\x00i\x00\xe9\x00\x00", 10);
    const BoxNode moov = BoxNode::parent("moov", {BoxNode::parent("udta", {
        BoxNode::leaf("loci", loci),
        BoxNode::leaf("kywd", keywords),
        BoxNode::leaf("titl", utf16Title),
        BoxNode::leaf("yrrc", isoHeader().left(4) + QByteArray("\x07\xe0", 2)),
        BoxNode::leaf("auth", isoHeader() + QByteArray("Ann\0", 4)),
        BoxNode::leaf("\xa9nam", QByteArray("\x00\x03\x15\xc7" "Cat", 7)),
    })});
    const MediaMetadataItems items = itemsOf(moov);
    ASSERT_EQ(items.size(), 6);
    EXPECT_EQ(items[0].identifier, "uiso/loci");
    EXPECT_EQ(items[0].value.toString(), "+37.2500-122.5000+010.000/");
    EXPECT_EQ(items[0].extendedLanguageTag, "eng");
    EXPECT_EQ(items[1].value.toString(), "sea, sand");
    EXPECT_EQ(items[2].value.toString(), QString::fromUtf8("Tié")) << items[2].identifier.toStdString();
    EXPECT_EQ(items[3].value.toInt(), 2016);
    EXPECT_EQ(items[4].identifier, "uiso/auth");
    EXPECT_EQ(items[5].identifier, "udta/%A9nam");
    EXPECT_EQ(items[5].value.toString(), "Cat");
}

TEST(MovieItems, QuickTimeKeysAndTypedValues)
{
    const QByteArray keys = QByteArray(4, '\0') + u32(3) + u32(8 + 24) + "mdta" + "com.apple.quicktime.make"
                            + u32(8 + 4) + "mdta" + "rate" + u32(8 + 5) + "mdta" + "count";
    const BoxNode ilst = BoxNode::parent("ilst", {
        BoxNode::parent(u32(1), {dataBox(1, "Apple")}),
        BoxNode::parent(u32(2), {dataBox(23, u32(0x40490fdb))}),
        BoxNode::parent(u32(3), {dataBox(21, QByteArray("\xff\xfe", 2))}),
        BoxNode::parent(u32(9), {dataBox(1, "orphan")}),
    });
    const BoxNode meta = BoxNode::parent("meta", {
        BoxNode::leaf("hdlr", QByteArray(8, '\0') + "mdta" + QByteArray(13, '\0')),
        BoxNode::leaf("keys", keys),
        ilst,
    });
    QStringList problems;
    const MediaMetadataItems items = itemsOf(BoxNode::parent("moov", {meta}), &problems);
    ASSERT_EQ(items.size(), 3);
    EXPECT_EQ(items[0].identifier, "mdta/com.apple.quicktime.make");
    EXPECT_EQ(items[0].value.toString(), "Apple");
    EXPECT_NEAR(items[1].value.toDouble(), 3.14159, 1e-5);
    EXPECT_EQ(items[1].dataType, "BE Float32");
    EXPECT_EQ(items[2].value.toLongLong(), -2);
    ASSERT_EQ(problems.size(), 1);
    EXPECT_TRUE(problems[0].contains("names no key"));
}

TEST(MovieItems, DamagedTablesGiveProblemsNotItems)
{
    // A key entry claiming more bytes than the table holds.
    const QByteArray keys = QByteArray(4, '\0') + u32(1) + u32(400) + "mdta" + "x";
    const BoxNode meta = BoxNode::parent("meta", {
        BoxNode::leaf("hdlr", QByteArray(8, '\0') + "mdta" + QByteArray(13, '\0')),
        BoxNode::leaf("keys", keys),
        BoxNode::parent("ilst", {BoxNode::parent(u32(1), {dataBox(1, "lost")})}),
    });
    const BoxNode udta = BoxNode::parent("udta", {
        BoxNode::leaf("\xa9nam", QByteArray("\x00\x50\x15\xc7short", 9)),
        BoxNode::leaf("loci", isoHeader() + "x"),
    });
    QStringList problems;
    const MediaMetadataItems items = itemsOf(BoxNode::parent("moov", {meta, udta}), &problems);
    EXPECT_TRUE(items.isEmpty());
    EXPECT_EQ(problems.size(), 4);  // the key table, the orphan item, the text and the location
}

#include "isobmff/QuickTimeKeys.h"

#include <QMap>

#include <gtest/gtest.h>

using namespace pelorin;

namespace {

QByteArray be32(std::uint32_t value)
{
    QByteArray out;
    appendU32(out, value);
    return out;
}

// A QuickTime 'meta' box with the keys and their texts, as FFmpeg and Apple write it.
BoxNode keysMeta(const QList<std::pair<QString, QString>>& entries)
{
    QByteArray table = be32(0) + be32(std::uint32_t(entries.size()));
    std::vector<BoxNode> list;
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const QByteArray name = entries[i].first.toUtf8();
        table += be32(std::uint32_t(8 + name.size())) + "mdta" + name;
        list.push_back(BoxNode::parent(be32(std::uint32_t(i + 1)), {metadataDataBox(entries[i].second, {})}));
    }
    return BoxNode::parent("meta", {metadataHandler("mdta"), BoxNode::leaf("keys", table), BoxNode::parent("ilst", list)});
}

// Key -> text of a key 'meta' box, through its table; "<orphan>" for an entry naming no key.
QMap<QString, QString> texts(const BoxNode& meta)
{
    QMap<QString, QString> out;
    const QStringList names = quickTimeKeyNamesOf(meta.child("keys")->payload);
    for (const BoxNode& entry : meta.child("ilst")->children) {
        const std::uint32_t index = readU32(entry.type, 0);
        const QString key = index >= 1 && index <= std::uint32_t(names.size()) ? names[int(index - 1)]
                                                                               : QStringLiteral("<orphan>");
        out.insert(key, QString::fromUtf8(entry.child("data")->payload.mid(8)));
    }
    return out;
}

}  // namespace

// A movie with key tables in its user data and its movie box, both naming the title (as an
// earlier writer left such files): the title ends up once, where the first table kept it.
TEST(QuickTimeKeys, AKeyStaysInOneTableAndRemovalsRenumber)
{
    BoxNode moov = BoxNode::parent(
        "moov", {BoxNode::parent("udta", {keysMeta({{"title", "Old"}, {"encoder", "Lavf"}})}),
                 keysMeta({{"title", "Stale"}, {"com.apple.quicktime.location.ISO6709", "+10.0000+020.0000/"}})});
    QString error;
    ASSERT_TRUE(changeQuickTimeKey(moov, "title", QVariant("New"), {}, &error)) << error.toStdString();
    const BoxNode& userData = *moov.find("udta/meta");
    const BoxNode& movie = *moov.child("meta");
    EXPECT_EQ(texts(userData), (QMap<QString, QString>{{"title", "New"}, {"encoder", "Lavf"}}));
    EXPECT_EQ(texts(movie), (QMap<QString, QString>{{"com.apple.quicktime.location.ISO6709", "+10.0000+020.0000/"}}));
    EXPECT_EQ(quickTimeKeyNames(moov), (QStringList{"title", "encoder", "com.apple.quicktime.location.ISO6709"}));

    ASSERT_TRUE(changeQuickTimeKey(moov, "title", std::nullopt, {}, &error));
    EXPECT_EQ(texts(*moov.find("udta/meta")), (QMap<QString, QString>{{"encoder", "Lavf"}}));

    // A new key goes into the movie's first table; no second 'meta' appears.
    ASSERT_TRUE(changeQuickTimeKey(moov, "album", QVariant("A"), {}, &error));
    EXPECT_EQ(texts(*moov.find("udta/meta")).value("album"), "A");
    int metas = 0;
    for (const BoxNode& child : moov.children)
        metas += child.type == "meta";
    EXPECT_EQ(metas, 1);
}

TEST(QuickTimeKeys, ADamagedTableIsRefusedAndAMovieWithoutOneGetsOne)
{
    BoxNode damaged = BoxNode::parent("moov", {keysMeta({{"title", "T"}})});
    damaged.child("meta")->child("keys")->payload.chop(2);
    QString error;
    EXPECT_FALSE(changeQuickTimeKey(damaged, "title", QVariant("X"), {}, &error));
    EXPECT_FALSE(error.isEmpty());

    BoxNode bare = BoxNode::parent("moov", {BoxNode::leaf("mvhd", QByteArray(100, '\0'))});
    ASSERT_TRUE(changeQuickTimeKey(bare, "com.apple.quicktime.make", QVariant("Apple"), {}, &error));
    ASSERT_TRUE(bare.child("meta"));
    EXPECT_EQ(texts(*bare.child("meta")), (QMap<QString, QString>{{"com.apple.quicktime.make", "Apple"}}));
}

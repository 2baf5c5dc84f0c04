// The HEIF metadata writer at the box level: which bytes it keeps, moves, clears and refuses.
#include "isobmff/HeifMetadataRewrite.h"
#include "isobmff/ItemInfo.h"
#include "isobmff/ItemLocations.h"

#include "TestPaths.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>

namespace pelorin {
namespace {

struct LoadedMeta {
    BoxTree tree;
    std::size_t index = 0;
    BoxNode meta;
    ItemLocationTable locations;
};

LoadedMeta loadMeta(const QString& path)
{
    FileByteSource source(path);
    QString error;
    EXPECT_TRUE(source.open(&error));
    LoadedMeta loaded;
    loaded.tree = readBoxTree(source);
    while (loaded.index < loaded.tree.boxes.size() && !loaded.tree.boxes[loaded.index].is("meta"))
        ++loaded.index;
    loaded.meta = *loadBoxNode(source, loaded.tree.boxes.at(loaded.index), 1 << 24);
    loaded.locations = *parseItemLocations(loaded.meta.child("iloc")->payload, &error);
    return loaded;
}

// The bytes of every item, by identifier, read through the item locations.
std::map<std::uint32_t, QByteArray> itemBytes(const QString& path)
{
    const LoadedMeta loaded = loadMeta(path);
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    const BoxNode* idat = loaded.meta.child("idat");
    std::map<std::uint32_t, QByteArray> items;
    for (const ItemLocation& item : loaded.locations.items) {
        QByteArray data;
        for (const ItemExtent& extent : item.extents) {
            const qsizetype at = qsizetype(item.baseOffset + extent.offset);
            data += item.inItemData() ? idat->payload.mid(at, qsizetype(extent.length)) : bytes.mid(at, qsizetype(extent.length));
        }
        items[item.itemId] = data;
    }
    return items;
}

std::uint32_t exifItemOf(const BoxNode& meta)
{
    for (const BoxNode& child : meta.child("iinf")->children) {
        const std::optional<ItemInfoEntry> entry = parseItemInfoEntry(child.payload);
        if (entry && entry->isExif())
            return entry->itemId;
    }
    return 0;
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// An editor that replaces the primary image's Exif stream with a longer one and adds XMP.
HeifMetadataEditor growExif(const QByteArray& marker)
{
    return [marker](std::vector<HeifMetadataBlock>& blocks, QString*) {
        bool xmp = false;
        for (HeifMetadataBlock& block : blocks) {
            if (block.kind == HeifMetadataBlock::Kind::Exif)
                block.bytes = block.bytes.left(8) + marker + QByteArray(3000, 'x');
            xmp = xmp || block.kind == HeifMetadataBlock::Kind::Xmp;
        }
        if (!xmp) {
            HeifMetadataBlock added;
            added.kind = HeifMetadataBlock::Kind::Xmp;
            added.bytes = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"/>";
            blocks.push_back(added);
        }
        return true;
    };
}

TEST(HeifMetadataRewriteTest, EveryOtherItemKeepsItsBytesWhereverTheMediaDataMoves)
{
    // The iPhone file grows its 'meta' in front of the media data; the Sony file has padding
    // after 'meta' that takes up the growth.
    QTemporaryDir dir;
    for (const char* name : {"exiv2-iPhoneXR_orient6.heic", "exiv2-Sony_ILCE-1.HIF", "exiv2-Stonehenge.heic"}) {
        SCOPED_TRACE(name);
        const QString source = test::dataPath(QString::fromLatin1(name));
        const QString target = dir.filePath(QString::fromLatin1(name));
        const std::map<std::uint32_t, QByteArray> before = itemBytes(source);
        const std::uint32_t exifId = exifItemOf(loadMeta(source).meta);
        ASSERT_NE(exifId, 0u);
        const QByteArray oldExif = before.at(exifId);

        const HeifRewriteReport report = rewriteHeifMetadata(source, target, growExif("MARKER"));
        ASSERT_TRUE(report.written) << report.error.toStdString();
        EXPECT_EQ(report.itemsReplaced, 1);
        const std::map<std::uint32_t, QByteArray> after = itemBytes(target);
        for (const auto& [id, bytes] : before) {
            if (id != exifId)
                EXPECT_EQ(after.at(id), bytes) << "item " << id;
        }
        EXPECT_TRUE(after.at(exifId).contains("MARKER"));
        EXPECT_FALSE(readAll(target).contains(oldExif.mid(12, 200)));  // cleared, not only unlinked
        std::vector<HeifMetadataBlock> blocks = readHeifMetadataBlocks(target, nullptr);
        ASSERT_EQ(blocks.size(), 2u);
    }
}

// Writes a copy of the file whose Exif item lies in the 'meta' box's own item data, after
// whatever other items keep there.
QString withExifInItemData(const QString& source, const QString& target)
{
    LoadedMeta loaded = loadMeta(source);
    const std::uint32_t exifId = exifItemOf(loaded.meta);
    const QByteArray exif = itemBytes(source).at(exifId);
    QByteArray idat = loaded.meta.child("idat") ? loaded.meta.child("idat")->payload : QByteArray();
    ItemLocation* location = loaded.locations.find(exifId);
    location->constructionMethod = 1;
    location->baseOffset = 0;
    location->extents = {{0, std::uint64_t(idat.size()), std::uint64_t(exif.size())}};
    idat += exif;
    loaded.locations.widenToFit(std::uint64_t(loaded.tree.fileSize) * 2);
    loaded.meta.child("iloc")->payload = serializeItemLocations(loaded.locations);
    loaded.meta.setChild(BoxNode::leaf("idat", idat));
    const RewriteReport report = rewriteTopLevelBoxes(source, loaded.tree, {{loaded.index, loaded.meta, {}, {}}}, target);
    EXPECT_TRUE(report.written) << report.error.toStdString();
    return target;
}

TEST(HeifMetadataRewriteTest, ExifInTheItemDataIsCutOutAndTheOtherItemsThereStay)
{
    QTemporaryDir dir;
    // The iPhone file keeps its grid descriptor in 'idat' before the moved Exif.
    const QString source = withExifInItemData(test::dataPath(QStringLiteral("exiv2-iPhoneXR_orient6.heic")), dir.filePath("idat.heic"));
    const std::map<std::uint32_t, QByteArray> before = itemBytes(source);
    const std::uint32_t exifId = exifItemOf(loadMeta(source).meta);
    const qsizetype idatBefore = loadMeta(source).meta.child("idat")->payload.size();

    const QString target = dir.filePath(QStringLiteral("out.heic"));
    const HeifRewriteReport report = rewriteHeifMetadata(source, target, [](std::vector<HeifMetadataBlock>& blocks, QString*) {
        for (HeifMetadataBlock& block : blocks) {
            if (block.kind == HeifMetadataBlock::Kind::Exif)
                block.bytes.clear();
        }
        return true;
    });
    ASSERT_TRUE(report.written) << report.error.toStdString();
    EXPECT_EQ(report.itemsRemoved, 1);
    const LoadedMeta written = loadMeta(target);
    EXPECT_EQ(exifItemOf(written.meta), 0u);
    EXPECT_EQ(written.locations.find(exifId), nullptr);
    EXPECT_EQ(written.meta.child("idat")->payload.size(), idatBefore - before.at(exifId).size());
    const std::map<std::uint32_t, QByteArray> after = itemBytes(target);
    for (const auto& [id, bytes] : before) {
        if (id != exifId)
            EXPECT_EQ(after.at(id), bytes) << "item " << id;
    }
    EXPECT_TRUE(readHeifMetadataBlocks(target, nullptr).empty());
}

// Writes a copy with 64-bit item location fields and base offsets, and a media data box with
// a 64-bit size, as large files have them.
QString withWideFields(const QString& source, const QString& target)
{
    LoadedMeta loaded = loadMeta(source);
    loaded.locations.offsetSize = 8;
    loaded.locations.lengthSize = 8;
    loaded.locations.baseOffsetSize = 8;
    loaded.meta.child("iloc")->payload = serializeItemLocations(loaded.locations);
    const QString widened = target + QStringLiteral(".tmp");
    EXPECT_TRUE(rewriteTopLevelBoxes(source, loaded.tree, {{loaded.index, loaded.meta, {}, {}}}, widened).written);

    loaded = loadMeta(widened);
    QByteArray bytes = readAll(widened);
    const Box& mdat = *loaded.tree.top("mdat");
    QString error;
    EXPECT_TRUE(remapItemLocations(loaded.meta.child("iloc")->payload,
                                   [&](std::int64_t at) { return std::optional<std::int64_t>(at >= mdat.offset ? at + 8 : at); }, &error));
    QByteArray header;
    appendU32(header, 1);
    header.append("mdat");
    appendU64(header, std::uint64_t(mdat.size + 8));
    const Box& meta = loaded.tree.boxes[loaded.index];
    bytes = bytes.left(meta.offset) + loaded.meta.serialize() + bytes.mid(meta.end(), mdat.offset - meta.end()) + header
            + bytes.mid(mdat.offset + 8);
    QFile file(target);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    return target;
}

TEST(HeifMetadataRewriteTest, WideFieldsAndLargeSizesAreKept)
{
    QTemporaryDir dir;
    const QString source = withWideFields(test::dataPath(QStringLiteral("exiv2-Stonehenge.heic")), dir.filePath("wide.heic"));
    ASSERT_EQ(loadMeta(source).locations.offsetSize, 8);
    ASSERT_EQ(loadMeta(source).tree.top("mdat")->headerSize, 16);
    const std::map<std::uint32_t, QByteArray> before = itemBytes(source);
    const std::uint32_t exifId = exifItemOf(loadMeta(source).meta);
    ASSERT_TRUE(before.at(exifId).contains("II*") || before.at(exifId).contains("MM"));

    const QString target = dir.filePath(QStringLiteral("out.heic"));
    const HeifRewriteReport report = rewriteHeifMetadata(source, target, growExif("WIDE"));
    ASSERT_TRUE(report.written) << report.error.toStdString();
    EXPECT_TRUE(report.offsetsShifted);
    const std::map<std::uint32_t, QByteArray> after = itemBytes(target);
    for (const auto& [id, bytes] : before) {
        if (id != exifId)
            EXPECT_EQ(after.at(id), bytes) << "item " << id;
    }
    EXPECT_TRUE(after.at(exifId).contains("WIDE"));
}

TEST(HeifMetadataRewriteTest, LayoutsThatCannotBeKeptAreRefusedAndNothingIsWritten)
{
    QTemporaryDir dir;
    auto variant = [&](const QString& name, const std::function<void(ItemLocationTable&, std::uint32_t exifId)>& change,
                       const QString& original = test::dataPath(QStringLiteral("exiv2-Stonehenge.heic"))) {
        LoadedMeta loaded = loadMeta(original);
        change(loaded.locations, exifItemOf(loaded.meta));
        QByteArray iloc = serializeItemLocations(loaded.locations);
        EXPECT_EQ(iloc.size(), loaded.meta.child("iloc")->payload.size());
        QByteArray bytes = readAll(original);
        const qsizetype at = bytes.indexOf(loaded.meta.child("iloc")->payload);
        bytes.replace(at, iloc.size(), iloc);
        QFile file(dir.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return file.fileName();
    };
    const QString shared = variant(QStringLiteral("shared.heic"), [](ItemLocationTable& table, std::uint32_t exifId) {
        // The Exif item's bytes also belong to the image.
        ItemLocation* exif = table.find(exifId);
        for (const ItemLocation& other : table.items) {
            if (other.itemId != exifId && !other.extents.empty()) {
                exif->baseOffset = other.baseOffset;
                exif->extents.front().offset = other.extents.front().offset;
                break;
            }
        }
    });
    // (The iPhone's table has room for construction methods; Stonehenge's has not.)
    const QString derived = variant(QStringLiteral("derived.heic"), [](ItemLocationTable& table, std::uint32_t) {
        ASSERT_GE(table.version, 1);
        table.items.front().constructionMethod = 2;
    }, test::dataPath(QStringLiteral("exiv2-iPhoneXR_orient6.heic")));
    const QString beyond = variant(QStringLiteral("beyond.heic"), [](ItemLocationTable& table, std::uint32_t exifId) {
        table.find(exifId)->extents.front().offset = 0xfffff0;
    });
    const QString twice = variant(QStringLiteral("twice.heic"), [](ItemLocationTable& table, std::uint32_t exifId) {
        table.items.back().itemId = exifId == table.items.back().itemId ? table.items.front().itemId : exifId;
    });
    const std::map<QString, QString> expected{{shared, QStringLiteral("shares its bytes")},
                                              {twice, QStringLiteral("has two locations")},
                                              {derived, QStringLiteral("built from other items")},
                                              {beyond, QStringLiteral("beyond the end")}};
    for (const auto& [path, reason] : expected) {
        SCOPED_TRACE(path.toStdString());
        const QString target = path + QStringLiteral(".out");
        const HeifRewriteReport report = rewriteHeifMetadata(path, target, growExif("M"));
        EXPECT_FALSE(report.written);
        EXPECT_TRUE(report.error.contains(reason)) << report.error.toStdString();
        EXPECT_FALSE(QFile::exists(target));
    }
}

}  // namespace
}  // namespace pelorin

#include "isobmff/HeifMetadataRewrite.h"

#include "isobmff/ItemInfo.h"
#include "isobmff/ItemLocations.h"
#include "isobmff/ItemReferences.h"

#include <algorithm>
#include <map>
#include <set>

namespace pelorin {

namespace {

using Kind = HeifMetadataBlock::Kind;

// The 'meta' box of a photo holds tables and small items; the images lie in 'mdat'.
constexpr std::int64_t kMaxHeifMetaBox = std::int64_t(64) << 20;
constexpr std::int64_t kMaxMetadataItem = std::int64_t(64) << 20;
// Each metadata item is checked against every other item; real files have one or two of them,
// each in one extent, so these bounds only stop files made to make that check endless.
constexpr int kMaxMetadataItems = 64;
constexpr std::size_t kMaxMetadataExtents = 1024;

// A half-open range of bytes, in the file or in the 'idat' payload.
struct Span {
    std::int64_t begin = 0;
    std::int64_t end = 0;
};

// The file's image items as loaded for editing.
struct HeifItems {
    BoxTree tree;
    std::size_t metaIndex = 0;
    BoxNode meta;
    std::uint32_t primary = 0;
    std::vector<ItemInfoEntry> entries;
    ItemLocationTable locations;
    ItemReferenceTable references;
    QByteArray idat;
    bool hasIdat = false;
};

bool fail(QString* error, const QString& reason)
{
    *error = reason;
    return false;
}

// Where an item's extents lie, in the space of its construction method. False when an extent
// leaves that space.
bool spansOf(const ItemLocation& item, std::int64_t spaceSize, std::vector<Span>* spans)
{
    for (const ItemExtent& extent : item.extents) {
        const std::uint64_t begin = item.baseOffset + extent.offset;
        if (begin < item.baseOffset || begin > std::uint64_t(spaceSize))
            return false;
        const std::uint64_t length = extent.length ? extent.length : std::uint64_t(spaceSize) - begin;
        if (length > std::uint64_t(spaceSize) - begin)
            return false;
        spans->push_back({std::int64_t(begin), std::int64_t(begin + length)});
    }
    return true;
}

bool overlaps(const std::vector<Span>& a, const std::vector<Span>& b)
{
    for (const Span& x : a) {
        for (const Span& y : b) {
            if (x.begin < y.end && y.begin < x.end)
                return true;
        }
    }
    return false;
}

bool loadItems(ByteSource& source, HeifItems& heif, QString* error)
{
    heif.tree = readBoxTree(source);
    const QString refusal = rewriteRefusal(heif.tree);
    if (!refusal.isEmpty())
        return fail(error, refusal);
    if (!heif.tree.top("ftyp"))
        return fail(error, QStringLiteral("the file has no 'ftyp' box"));
    int metas = 0;
    for (std::size_t i = 0; i < heif.tree.boxes.size(); ++i) {
        if (heif.tree.boxes[i].is("meta")) {
            heif.metaIndex = i;
            ++metas;
        }
    }
    if (metas != 1)
        return fail(error, metas == 0 ? QStringLiteral("the file holds no image items") : QStringLiteral("the file holds more than one 'meta' box"));
    std::optional<BoxNode> meta = loadBoxNode(source, heif.tree.boxes[heif.metaIndex], kMaxHeifMetaBox);
    if (!meta || !meta->container)
        return fail(error, QStringLiteral("the 'meta' box cannot be loaded"));
    heif.meta = std::move(*meta);
    const BoxNode* hdlr = heif.meta.child("hdlr");
    if (!hdlr || hdlr->payload.mid(8, 4) != "pict")
        return fail(error, QStringLiteral("the 'meta' box does not describe pictures"));
    const BoxNode* pitm = heif.meta.child("pitm");
    const BoxNode* iinf = heif.meta.child("iinf");
    const BoxNode* iloc = heif.meta.child("iloc");
    if (!pitm || !iinf || !iloc || !iinf->container)
        return fail(error, QStringLiteral("the 'meta' box lacks its item tables"));
    const std::optional<std::uint32_t> primary = primaryItemOf(pitm->payload);
    if (!primary)
        return fail(error, QStringLiteral("the primary item box is damaged"));
    heif.primary = *primary;
    std::set<std::uint32_t> described;
    for (const BoxNode& child : iinf->children) {
        if (child.type != "infe")
            continue;
        const std::optional<ItemInfoEntry> entry = parseItemInfoEntry(child.payload);
        if (!entry)
            return fail(error, QStringLiteral("an item information entry is damaged"));
        if (!described.insert(entry->itemId).second)
            return fail(error, QStringLiteral("item %1 is described twice").arg(entry->itemId));
        heif.entries.push_back(*entry);
    }
    std::optional<ItemLocationTable> locations = parseItemLocations(iloc->payload, error);
    if (!locations)
        return false;
    heif.locations = std::move(*locations);
    if (const BoxNode* iref = heif.meta.child("iref")) {
        std::optional<ItemReferenceTable> references = parseItemReferences(iref->payload, error);
        if (!references)
            return false;
        heif.references = std::move(*references);
    }
    if (const BoxNode* idat = heif.meta.child("idat")) {
        heif.idat = idat->payload;
        heif.hasIdat = true;
    }
    std::set<std::uint32_t> located;
    for (const ItemLocation& item : heif.locations.items) {
        if (!located.insert(item.itemId).second)
            return fail(error, QStringLiteral("item %1 has two locations").arg(item.itemId));
        if (item.constructionMethod > 1)
            return fail(error, QStringLiteral("item %1 is built from other items, which this writer does not keep").arg(item.itemId));
    }
    return true;
}

std::int64_t spaceSize(const HeifItems& heif, const ItemLocation& item)
{
    return item.inItemData() ? heif.idat.size() : heif.tree.fileSize;
}

// Reads one metadata item after checking that no other item shares its bytes.
bool readItem(ByteSource& source, const HeifItems& heif, std::uint32_t id, QByteArray* bytes, QString* error)
{
    const ItemLocation* item = heif.locations.find(id);
    if (!item)
        return fail(error, QStringLiteral("metadata item %1 has no location").arg(id));
    if (!item->inThisFile() && !item->inItemData())
        return fail(error, QStringLiteral("metadata item %1 lies in another file").arg(id));
    if (item->extents.size() > kMaxMetadataExtents)
        return fail(error, QStringLiteral("metadata item %1 is split into too many pieces").arg(id));
    std::vector<Span> spans;
    if (!spansOf(*item, spaceSize(heif, *item), &spans))
        return fail(error, QStringLiteral("metadata item %1 lies beyond the end of its data").arg(id));
    for (const ItemLocation& other : heif.locations.items) {
        if (other.itemId == id || other.constructionMethod != item->constructionMethod
            || other.dataReferenceIndex != item->dataReferenceIndex)
            continue;
        std::vector<Span> otherSpans;
        if (spansOf(other, spaceSize(heif, other), &otherSpans) && overlaps(spans, otherSpans))
            return fail(error, QStringLiteral("metadata item %1 shares its bytes with item %2").arg(id).arg(other.itemId));
    }
    bytes->clear();
    for (const Span& span : spans) {
        if (bytes->size() + (span.end - span.begin) > kMaxMetadataItem)
            return fail(error, QStringLiteral("metadata item %1 is too large").arg(id));
        if (item->inItemData())
            bytes->append(heif.idat.mid(span.begin, span.end - span.begin));
        else
            bytes->append(source.read(span.begin, span.end - span.begin));
    }
    return true;
}

bool isTiffHeader(const QByteArray& bytes, qsizetype at)
{
    const QByteArray head = bytes.mid(at, 4);
    return head == QByteArrayLiteral("II\x2a\x00") || head == QByteArrayLiteral("MM\x00\x2a");
}

// An Exif item opens with the distance from its fifth byte to the TIFF header; some writers
// count to an "Exif\0\0" marker before the header instead.
bool splitExifItem(const QByteArray& item, HeifMetadataBlock* block)
{
    if (item.size() < 4)
        return false;
    const std::uint32_t offset = readU32(item, 0);
    if (offset > std::uint32_t(item.size() - 4))
        return false;
    qsizetype start = 4 + qsizetype(offset);
    if (item.mid(start, 6) == QByteArrayLiteral("Exif\x00\x00"))
        start += 6;
    if (!isTiffHeader(item, start))
        return false;
    block->exifPrefix = item.left(start);
    block->bytes = item.mid(start);
    return true;
}

bool readBlocks(ByteSource& source, const HeifItems& heif, std::vector<HeifMetadataBlock>* blocks, QString* error)
{
    for (const ItemInfoEntry& entry : heif.entries) {
        if (!entry.isExif() && !entry.isXmp())
            continue;
        if (blocks->size() >= std::size_t(kMaxMetadataItems))
            return fail(error, QStringLiteral("the file holds more than %1 metadata items").arg(kMaxMetadataItems));
        HeifMetadataBlock block;
        block.kind = entry.isExif() ? Kind::Exif : Kind::Xmp;
        block.itemId = entry.itemId;
        const std::vector<std::uint32_t> described = heif.references.targetsOf("cdsc", entry.itemId);
        block.describesPrimary = described.empty()
                                 || std::find(described.begin(), described.end(), heif.primary) != described.end();
        QByteArray item;
        if (!readItem(source, heif, entry.itemId, &item, error))
            return false;
        if (block.kind == Kind::Exif) {
            if (!splitExifItem(item, &block))
                return fail(error, QStringLiteral("the Exif item %1 is damaged").arg(entry.itemId));
        } else {
            block.bytes = item;
        }
        block.original = block.bytes;
        blocks->push_back(std::move(block));
    }
    return true;
}

void removeItem(HeifItems& heif, std::uint32_t id)
{
    BoxNode* iinf = heif.meta.child("iinf");
    std::erase_if(iinf->children, [&](const BoxNode& child) {
        const std::optional<ItemInfoEntry> entry = child.type == "infe" ? parseItemInfoEntry(child.payload) : std::nullopt;
        return entry && entry->itemId == id;
    });
    std::erase_if(heif.locations.items, [&](const ItemLocation& item) { return item.itemId == id; });
    heif.references.removeItem(id);
}

bool removeAssociations(HeifItems& heif, std::uint32_t id, QString* error)
{
    BoxNode* iprp = heif.meta.child("iprp");
    if (!iprp)
        return true;
    for (BoxNode& ipma : iprp->children) {
        if (ipma.type == "ipma" && !removeItemAssociations(ipma.payload, id))
            return fail(error, QStringLiteral("the property associations are damaged"));
    }
    return true;
}

std::uint32_t nextItemId(const HeifItems& heif)
{
    std::uint32_t highest = heif.primary;
    for (const ItemInfoEntry& entry : heif.entries)
        highest = std::max(highest, entry.itemId);
    for (const ItemLocation& item : heif.locations.items)
        highest = std::max(highest, item.itemId);
    return highest + 1;
}

// Cuts the spans out of the item data and moves the extents that stay after them.
bool compactItemData(HeifItems& heif, std::vector<Span> freed, QString* error)
{
    if (freed.empty())
        return true;
    std::sort(freed.begin(), freed.end(), [](const Span& a, const Span& b) { return a.begin < b.begin; });
    auto removedBefore = [&](std::int64_t at) {
        std::int64_t removed = 0;
        for (const Span& span : freed) {
            if (span.end <= at)
                removed += span.end - span.begin;
        }
        return removed;
    };
    for (ItemLocation& item : heif.locations.items) {
        if (!item.inItemData())
            continue;
        std::vector<Span> spans;
        if (!spansOf(item, heif.idat.size(), &spans))
            return fail(error, QStringLiteral("item %1 lies beyond the end of the item data").arg(item.itemId));
        for (std::size_t e = 0; e < spans.size(); ++e) {
            item.extents[e].offset = std::uint64_t(spans[e].begin - removedBefore(spans[e].begin));
            item.extents[e].length = std::uint64_t(spans[e].end - spans[e].begin);
        }
        item.baseOffset = 0;
    }
    QByteArray kept;
    std::int64_t pos = 0;
    for (const Span& span : freed) {
        kept.append(heif.idat.mid(pos, span.begin - pos));
        pos = std::max(pos, span.end);
    }
    kept.append(heif.idat.mid(pos));
    heif.idat = kept;
    return true;
}

QByteArray itemPayload(const HeifMetadataBlock& block)
{
    if (block.kind == Kind::Xmp)
        return block.bytes;
    QByteArray prefix = block.exifPrefix;
    if (prefix.size() < 4)
        prefix = QByteArray(4, '\0');  // the TIFF header follows at once
    return prefix + block.bytes;
}

void storeTables(HeifItems& heif, std::uint64_t farthestOffset)
{
    if (heif.locations.offsetSize == 0 && heif.locations.baseOffsetSize == 0)
        heif.locations.offsetSize = 4;
    heif.locations.widenToFit(farthestOffset);
    heif.meta.child("iloc")->payload = serializeItemLocations(heif.locations);
    updateItemInfoCount(*heif.meta.child("iinf"));
    if (heif.references.references.empty())
        heif.meta.removeChildren("iref");
    else if (BoxNode* iref = heif.meta.child("iref"))
        iref->payload = serializeItemReferences(heif.references);
    else
        heif.meta.children.push_back(BoxNode::leaf("iref", serializeItemReferences(heif.references)));
    const bool itemDataUsed = std::any_of(heif.locations.items.begin(), heif.locations.items.end(),
                                          [](const ItemLocation& item) { return item.inItemData(); });
    if (heif.hasIdat && (itemDataUsed || !heif.idat.isEmpty()))
        heif.meta.setChild(BoxNode::leaf("idat", heif.idat));
    else
        heif.meta.removeChildren("idat");
}

}  // namespace

HeifRewriteReport rewriteHeifMetadata(const QString& sourcePath, const QString& targetPath,
                                      const HeifMetadataEditor& edit, const RewriteOutput& output)
{
    HeifRewriteReport report;
    FileByteSource source(sourcePath);
    if (!source.open(&report.error))
        return report;
    HeifItems heif;
    std::vector<HeifMetadataBlock> blocks;
    if (!loadItems(source, heif, &report.error) || !readBlocks(source, heif, &blocks, &report.error))
        return report;
    if (!edit(blocks, &report.error))
        return report;

    std::vector<Span> freedInFile;
    std::vector<Span> freedInItemData;
    std::vector<const HeifMetadataBlock*> placed;
    for (HeifMetadataBlock& block : blocks) {
        if (block.itemId == 0) {
            if (block.bytes.isEmpty())
                continue;
            const std::uint32_t id = nextItemId(heif);
            const bool exif = block.kind == Kind::Exif;
            heif.meta.child("iinf")->children.push_back(
                makeItemInfoEntry(id, exif ? "Exif" : "mime", exif ? QByteArray() : QByteArray("application/rdf+xml")));
            heif.entries.push_back(*parseItemInfoEntry(heif.meta.child("iinf")->children.back().payload));
            ItemLocation location;
            location.itemId = id;
            heif.locations.items.push_back(location);
            heif.references.references.push_back({"cdsc", id, {heif.primary}});
            placed.push_back(&block);
            block.itemId = id;
            ++report.itemsAdded;
            continue;
        }
        if (block.bytes == block.original)
            continue;
        ItemLocation* location = heif.locations.find(block.itemId);
        std::vector<Span>& freed = location->inItemData() ? freedInItemData : freedInFile;
        spansOf(*location, spaceSize(heif, *location), &freed);
        if (block.bytes.isEmpty()) {
            removeItem(heif, block.itemId);
            if (!removeAssociations(heif, block.itemId, &report.error))
                return report;
            ++report.itemsRemoved;
            continue;
        }
        location->constructionMethod = 0;
        location->dataReferenceIndex = 0;
        location->baseOffset = 0;
        location->extents.clear();
        placed.push_back(&block);
        ++report.itemsReplaced;
    }
    if (!compactItemData(heif, freedInItemData, &report.error))
        return report;

    // New metadata goes into a media data box of its own right after 'meta'; its offsets are
    // set once the layout of the output is known.
    QByteArray newData;
    std::map<std::uint32_t, std::int64_t> placedAt;
    for (const HeifMetadataBlock* block : placed) {
        const QByteArray payload = itemPayload(*block);
        placedAt[block->itemId] = newData.size();
        ItemLocation* location = heif.locations.find(block->itemId);
        location->extents = {{0, 0, std::uint64_t(payload.size())}};
        newData.append(payload);
    }
    const std::uint64_t farthest = std::uint64_t(heif.tree.fileSize + newData.size() + heif.meta.serializedSize()) + (1u << 20);
    // Until the layout is known the new extents hold the farthest offset they could take, so that
    // the table's fields are made wide enough for the real one.
    for (const auto& [id, at] : placedAt)
        heif.locations.find(id)->extents.front().offset = farthest;
    storeTables(heif, farthest);

    TopLevelEdit metaEdit{heif.metaIndex, std::move(heif.meta), {}, {}};
    if (!newData.isEmpty())
        metaEdit.inserted.push_back(BoxNode::leaf("mdat", newData));
    metaEdit.place = [table = std::move(heif.locations), placedAt](TopLevelEdit& e, std::int64_t outputOffset,
                                                                const OffsetMap& map, QString* error) mutable {
        std::int64_t dataStart = outputOffset + e.replacement.serializedSize();
        if (!e.inserted.empty())
            dataStart += e.inserted.front().serializedSize() - e.inserted.front().payload.size();
        for (ItemLocation& item : table.items) {
            const auto placedItem = placedAt.find(item.itemId);
            if (placedItem == placedAt.end()) {
                if (!remapItemLocation(item, table, map, error))
                    return false;
                continue;
            }
            item.baseOffset = 0;
            item.extents.front().offset = std::uint64_t(dataStart + placedItem->second);
        }
        if (!valuesFitWidths(table))
            return fail(error, QStringLiteral("the item data would lie beyond what the item locations reach"));
        e.replacement.child("iloc")->payload = serializeItemLocations(table);
        return true;
    };
    std::vector<SourceRange> blanked;
    for (const Span& span : freedInFile)
        blanked.push_back({span.begin, span.end - span.begin});
    std::vector<TopLevelEdit> edits;
    edits.push_back(std::move(metaEdit));
    const RewriteReport written = rewriteTopLevelBoxes(sourcePath, heif.tree, std::move(edits), targetPath, output,
                                                       std::move(blanked));
    static_cast<RewriteReport&>(report) = written;
    return report;
}

std::vector<HeifMetadataBlock> readHeifMetadataBlocks(const QString& path, QString* error)
{
    FileByteSource source(path);
    HeifItems heif;
    std::vector<HeifMetadataBlock> blocks;
    if (!source.open(error) || !loadItems(source, heif, error) || !readBlocks(source, heif, &blocks, error))
        return {};
    return blocks;
}

}  // namespace pelorin

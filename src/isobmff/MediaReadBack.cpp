#include "isobmff/MediaReadBack.h"

#include "isobmff/BoxNode.h"
#include "isobmff/ChunkOffsets.h"
#include "isobmff/ItemInfo.h"
#include "isobmff/ItemLocations.h"
#include "isobmff/MovieBoxRewrite.h"

#include <algorithm>
#include <map>

namespace pelorin {
namespace {

constexpr std::int64_t kChunkHead = 64;
// How many chunks' first bytes are compared when the chunk tables check out (first and last
// among them).
constexpr std::size_t kComparedChunks = 256;

std::vector<const Box*> mediaBoxesOf(const BoxTree& tree)
{
    std::vector<const Box*> media;
    for (const Box& box : tree.boxes) {
        if (box.is("mdat"))
            media.push_back(&box);
    }
    return media;
}

std::optional<std::vector<std::int64_t>> movieChunkOffsets(FileByteSource& file, const BoxTree& tree)
{
    const Box* moov = tree.top("moov");
    if (!moov)
        return std::vector<std::int64_t>{};
    const std::optional<BoxNode> node = loadBoxNode(file, *moov, kMaxEditedMovieBox);
    if (!node)
        return std::nullopt;
    return chunkOffsetsOf(*node);
}

// Where the top-level box holding offset ends (the file's end when none does).
std::int64_t endOfBoxAt(const BoxTree& tree, std::int64_t offset, std::int64_t fileSize)
{
    for (const Box& box : tree.boxes) {
        if (offset >= box.offset && offset < box.end())
            return std::min(fileSize, box.end());
    }
    return fileSize;
}

// The first bytes at offset, never past end: a short chunk at the end of the media data is
// followed by the movie box, which an edit changes.
QByteArray chunkHead(FileByteSource& file, std::int64_t offset, std::int64_t end = -1)
{
    if (end < 0)
        end = file.size();
    const std::int64_t length = std::min(kChunkHead, end - offset);
    QByteArray head(qsizetype(std::max<std::int64_t>(length, 0)), Qt::Uninitialized);
    if (offset < 0 || length <= 0 || !file.readIntoDirectly(offset, head.data(), length))
        return {};
    return head;
}

// The pictures of a HEIF/AVIF (every item but its Exif and XMP) that lie in the file itself:
// per item, its length and the first and last bytes of each extent.
struct ItemData {
    std::uint64_t length = 0;
    QByteArray heads;
};
using PictureItems = std::map<std::uint32_t, ItemData>;

std::optional<PictureItems> pictureItemsOf(FileByteSource& file, const BoxTree& tree)
{
    PictureItems items;
    const Box* meta = tree.top("meta");
    if (!meta)
        return items;
    const std::optional<BoxNode> node = loadBoxNode(file, *meta, kMaxEditedMovieBox);
    const BoxNode* iinf = node ? node->child("iinf") : nullptr;
    const BoxNode* iloc = node ? node->child("iloc") : nullptr;
    if (!iinf || !iloc)
        return node ? std::optional(items) : std::nullopt;
    std::map<std::uint32_t, bool> metadataItem;
    for (const BoxNode& child : iinf->children) {
        if (const auto entry = child.type == "infe" ? parseItemInfoEntry(child.payload) : std::nullopt)
            metadataItem[entry->itemId] = entry->isExif() || entry->isXmp();
    }
    QString error;
    const std::optional<ItemLocationTable> table = parseItemLocations(iloc->payload, &error);
    if (!table)
        return std::nullopt;
    for (const ItemLocation& item : table->items) {
        if (!item.inThisFile() || metadataItem[item.itemId])
            continue;
        ItemData& data = items[item.itemId];
        for (const ItemExtent& extent : item.extents) {
            const auto at = std::int64_t(item.baseOffset + extent.offset);
            data.length += extent.length;
            data.heads += chunkHead(file, at);
            if (extent.length > std::uint64_t(kChunkHead))
                data.heads += chunkHead(file, at + std::int64_t(extent.length) - kChunkHead);
        }
    }
    return items;
}

}  // namespace

QString isoMediaReadBackProblem(FileByteSource& source, const BoxTree& sourceTree, const QString& pendingPath)
{
    FileByteSource output(pendingPath);
    QString error;
    if (!output.open(&error))
        return QStringLiteral("the output cannot be read back: %1").arg(error);
    const BoxTree tree = readBoxTree(output);
    if (!tree.clean())
        return QStringLiteral("the output's boxes do not read: %1").arg(tree.problems.first());
    if (sourceTree.top("ftyp") && (!tree.top("ftyp") || tree.boxes.front().type != sourceTree.boxes.front().type))
        return QStringLiteral("the output does not start as the source does");
    if (const auto pictures = pictureItemsOf(source, sourceTree); pictures && !pictures->empty()) {
        const auto written = pictureItemsOf(output, tree);
        if (!written)
            return QStringLiteral("the output's item tables cannot be read");
        for (const auto& [id, data] : *pictures) {
            const auto found = written->find(id);
            if (found == written->end())
                return QStringLiteral("picture item %1 is missing from the output").arg(id);
            if (found->second.length != data.length || found->second.heads != data.heads)
                return QStringLiteral("picture item %1 does not hold the source's data").arg(id);
        }
    }
    const auto before = movieChunkOffsets(source, sourceTree);
    if (!before || before->empty())
        return {};
    const auto after = movieChunkOffsets(output, tree);
    if (!after)
        return QStringLiteral("the output's movie box cannot be read");
    if (after->size() != before->size())
        return QStringLiteral("the output has %1 media chunks, the source %2").arg(after->size()).arg(before->size());
    // Every chunk must lie in the same media box as in the source, as far from its start: the
    // writers copy media boxes whole. Checked for every chunk, from the tables alone.
    const std::vector<const Box*> sourceMedia = mediaBoxesOf(sourceTree);
    const std::vector<const Box*> outputMedia = mediaBoxesOf(tree);
    const bool sameMediaBoxes = sourceMedia.size() == outputMedia.size();
    std::vector<std::size_t> compared;  // chunks whose first bytes are compared
    for (std::size_t i = 0; i < before->size() && sameMediaBoxes; ++i) {
        const std::int64_t old = (*before)[i];
        const auto in = std::find_if(sourceMedia.begin(), sourceMedia.end(),
                                     [old](const Box* box) { return old >= box->offset && old < box->end(); });
        if (in == sourceMedia.end()) {
            compared.push_back(i);  // media outside a media box: its bytes tell
            continue;
        }
        const Box* moved = outputMedia[std::size_t(in - sourceMedia.begin())];
        if ((*after)[i] != moved->offset + (old - (*in)->offset))
            return QStringLiteral("media chunk %1 of %2 does not lie where the source's moved").arg(i + 1).arg(before->size());
    }
    // And the bytes must be there: the first bytes of a sample of chunks (every chunk when the
    // media boxes do not pair up), compared with the source's. Reading every chunk's would cost
    // a read per chunk, thousands for a long movie, where the media was cloned in no time.
    const std::size_t count = before->size();
    const std::size_t step = sameMediaBoxes ? std::max<std::size_t>(1, count / kComparedChunks) : 1;
    for (std::size_t i = 0; i < count; i += step)
        compared.push_back(i);
    compared.push_back(count - 1);
    for (const std::size_t i : compared) {
        const QByteArray was = chunkHead(source, (*before)[i], endOfBoxAt(sourceTree, (*before)[i], source.size()));
        if (chunkHead(output, (*after)[i], endOfBoxAt(tree, (*after)[i], output.size())) != was)
            return QStringLiteral("media chunk %1 of %2 does not hold the source's samples").arg(i + 1).arg(count);
    }
    return {};
}

}  // namespace pelorin

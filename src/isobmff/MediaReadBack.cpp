#include "isobmff/MediaReadBack.h"

#include "isobmff/BoxNode.h"
#include "isobmff/ChunkOffsets.h"
#include "isobmff/MovieBoxRewrite.h"

#include <algorithm>

namespace pelorin {
namespace {

constexpr std::int64_t kChunkHead = 64;

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
    if (offset < 0 || length <= 0 || !file.readInto(offset, head.data(), length))
        return {};
    return head;
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
    const auto before = movieChunkOffsets(source, sourceTree);
    if (!before || before->empty())
        return {};
    const auto after = movieChunkOffsets(output, tree);
    if (!after)
        return QStringLiteral("the output's movie box cannot be read");
    if (after->size() != before->size())
        return QStringLiteral("the output has %1 media chunks, the source %2").arg(after->size()).arg(before->size());
    for (std::size_t i = 0; i < before->size(); ++i) {
        const QByteArray was = chunkHead(source, (*before)[i], endOfBoxAt(sourceTree, (*before)[i], source.size()));
        if (chunkHead(output, (*after)[i], endOfBoxAt(tree, (*after)[i], output.size())) != was)
            return QStringLiteral("media chunk %1 of %2 does not hold the source's samples").arg(i + 1).arg(before->size());
    }
    return {};
}

}  // namespace pelorin

#include "isobmff/Cr3MetadataRewrite.h"

#include "isobmff/ChunkOffsets.h"
#include "isobmff/MovieBoxRewrite.h"

#include <memory>

namespace pelorin {

namespace {

const QByteArray kCanonBox = QByteArray::fromHex("85c0b687820f11e08111f4ce462b6a48");
const QByteArray kXmpBox = QByteArray::fromHex("be7acfcb97a942e89c71999491e3afac");
constexpr std::array<const char*, 4> kStreamBoxes = {"CMT1", "CMT2", "CMT3", "CMT4"};
// Real XMP packets of CR3 files stay far below this.
constexpr std::int64_t kMaxXmpBox = std::int64_t(16) << 20;

// One row of the Canon table of top-level boxes: a box's file offset and size.
struct TableEntry {
    std::int64_t at = 0;  // of the row inside the table box's payload
    std::int64_t offset = 0;
    std::int64_t size = 0;
};
constexpr int kTableRowSize = 20;  // index (32 bits), offset and size (64 bits each)

int streamIndex(const Box& box)
{
    for (std::size_t n = 0; n < kStreamBoxes.size(); ++n) {
        if (box.is(kStreamBoxes[n]))
            return int(n);
    }
    return -1;
}

std::optional<std::size_t> topIndex(const BoxTree& tree, QByteArrayView type, const QByteArray& userType = {})
{
    for (std::size_t i = 0; i < tree.boxes.size(); ++i) {
        if (tree.boxes[i].is(type) && tree.boxes[i].userType == userType)
            return i;
    }
    return std::nullopt;
}

// The boxes inside the Canon box, read from its payload.
struct CanonContent {
    QByteArray payload;
    BoxTree boxes;
};

std::optional<CanonContent> readCanonContent(QByteArray payload, QString* error)
{
    CanonContent content;
    content.payload = std::move(payload);
    MemoryByteSource source(content.payload);
    content.boxes = readBoxTree(source);
    if (!content.boxes.clean()) {
        *error = QStringLiteral("the Canon metadata box is damaged (%1)").arg(content.boxes.problems.first());
        return std::nullopt;
    }
    return content;
}

QByteArray payloadOf(const CanonContent& content, const Box& box)
{
    return content.payload.mid(qsizetype(box.payloadOffset()), qsizetype(box.payloadSize()));
}

std::optional<std::vector<TableEntry>> readOffsetTable(const CanonContent& content, QString* error)
{
    const Box* table = content.boxes.top("CTBO");
    if (!table) {
        *error = QStringLiteral("the Canon metadata box has no table of box offsets ('CTBO')");
        return std::nullopt;
    }
    const QByteArray bytes = payloadOf(content, *table);
    const std::int64_t count = readU32(bytes, 0);
    if (bytes.size() < 4 || count > (bytes.size() - 4) / kTableRowSize) {
        *error = QStringLiteral("the Canon table of box offsets ('CTBO') is shorter than its count");
        return std::nullopt;
    }
    std::vector<TableEntry> rows;
    for (std::int64_t i = 0; i < count; ++i) {
        const qsizetype at = qsizetype(4 + i * kTableRowSize);
        TableEntry row;
        row.at = table->payloadOffset() + at;
        row.offset = std::int64_t(readU64(bytes, at + 4));
        row.size = std::int64_t(readU64(bytes, at + 12));
        if (row.offset < 0 || row.size < 0) {
            *error = QStringLiteral("the Canon table of box offsets ('CTBO') holds an impossible offset");
            return std::nullopt;
        }
        rows.push_back(row);
    }
    return rows;
}

void putU64(QByteArray& bytes, std::int64_t at, std::int64_t value)
{
    for (int i = 0; i < 8; ++i)
        bytes[qsizetype(at + i)] = char((std::uint64_t(value) >> (56 - 8 * i)) & 0xff);
}

// The top-level box a table row names, or none when the row points elsewhere (an empty row, or
// the media of a pruned file that is no longer there).
std::optional<std::size_t> boxNamedBy(const BoxTree& tree, const TableEntry& row)
{
    for (std::size_t i = 0; i < tree.boxes.size(); ++i) {
        if (tree.boxes[i].offset == row.offset && tree.boxes[i].size == row.size)
            return i;
    }
    return std::nullopt;
}

// The parts of a CR3 file that the writer touches.
struct Cr3File {
    BoxTree tree;
    std::size_t movieIndex = 0;
    std::optional<std::size_t> xmpIndex;
};

std::optional<Cr3File> locateCr3(ByteSource& source, QString* error)
{
    Cr3File file;
    file.tree = readBoxTree(source);
    if (!file.tree.clean()) {
        *error = QStringLiteral("the file's box structure is damaged (%1)").arg(file.tree.problems.first());
        return std::nullopt;
    }
    const std::optional<std::size_t> movie = topIndex(file.tree, "moov");
    const Box* canon = nullptr;
    if (movie) {
        for (const Box& child : file.tree.boxes[*movie].children) {
            if (child.is("uuid") && child.userType == kCanonBox)
                canon = &child;
        }
    }
    if (!canon) {
        *error = QStringLiteral("the file holds no Canon metadata box");
        return std::nullopt;
    }
    file.movieIndex = *movie;
    file.xmpIndex = topIndex(file.tree, "uuid", kXmpBox);
    return file;
}

const Box* canonBoxOf(const Cr3File& file)
{
    for (const Box& child : file.tree.boxes[file.movieIndex].children) {
        if (child.is("uuid") && child.userType == kCanonBox)
            return &child;
    }
    return nullptr;
}

BoxNode* canonNodeOf(BoxNode& moov)
{
    for (BoxNode& child : moov.children) {
        if (child.type == "uuid" && child.userType == kCanonBox)
            return &child;
    }
    return nullptr;
}

Cr3Metadata metadataOf(const CanonContent& content)
{
    Cr3Metadata metadata;
    for (const Box& box : content.boxes.boxes) {
        const int n = streamIndex(box);
        if (n >= 0 && metadata.tiff[std::size_t(n)].isEmpty())
            metadata.tiff[std::size_t(n)] = payloadOf(content, box);
    }
    return metadata;
}

std::optional<Cr3Metadata> readMetadata(ByteSource& source, const Cr3File& file, QString* error)
{
    const Box* canon = canonBoxOf(file);
    if (canon->payloadSize() > kMaxEditedMovieBox) {
        *error = QStringLiteral("the Canon metadata box is too large");
        return std::nullopt;
    }
    const std::optional<CanonContent> content = readCanonContent(source.read(canon->payloadOffset(), canon->payloadSize()), error);
    if (!content)
        return std::nullopt;
    Cr3Metadata metadata = metadataOf(*content);
    if (file.xmpIndex) {
        const Box& xmp = file.tree.boxes[*file.xmpIndex];
        if (xmp.payloadSize() > kMaxXmpBox) {
            *error = QStringLiteral("the XMP box is too large");
            return std::nullopt;
        }
        metadata.hasXmpBox = true;
        metadata.xmp = source.read(xmp.payloadOffset(), xmp.payloadSize());
    }
    return metadata;
}

// The Canon box's new payload: changed streams in place of the old ones, each padded to its old
// size when it came out shorter; every other box as it was.
std::optional<QByteArray> rebuildCanonPayload(const CanonContent& content, const Cr3Metadata& before,
                                              const Cr3Metadata& after, QString* error)
{
    QByteArray out;
    std::array<bool, 4> present{};
    std::int64_t end = 0;
    for (const Box& box : content.boxes.boxes) {
        const int n = streamIndex(box);
        end = box.end();
        if (n < 0 || present[std::size_t(n)] || after.tiff[std::size_t(n)] == before.tiff[std::size_t(n)]) {
            if (n >= 0)
                present[std::size_t(n)] = true;
            out.append(content.payload.mid(qsizetype(box.offset), qsizetype(box.size)));
            continue;
        }
        present[std::size_t(n)] = true;
        QByteArray stream = after.tiff[std::size_t(n)];
        if (stream.size() < box.payloadSize())
            stream.append(QByteArray(qsizetype(box.payloadSize()) - stream.size(), '\0'));
        out.append(BoxNode::leaf(box.type, stream).serialize());
    }
    out.append(content.payload.mid(qsizetype(end)));
    for (std::size_t n = 0; n < present.size(); ++n) {
        if (!present[n] && !after.tiff[n].isEmpty()) {
            *error = QStringLiteral("the file has no '%1' box to hold the new values").arg(QLatin1String(kStreamBoxes[n]));
            return std::nullopt;
        }
    }
    return out;
}

// The streams as the output holds them: changed ones with their padding.
Cr3Metadata expectedOutput(const CanonContent& rebuilt, const Cr3Metadata& after)
{
    Cr3Metadata expected = metadataOf(rebuilt);
    expected.hasXmpBox = after.hasXmpBox;
    expected.xmp = after.xmp;
    return expected;
}

struct Placement {
    std::optional<std::int64_t> xmpOffset;
    std::int64_t xmpSize = 0;
};

// Once the output's layout is known: the tracks' chunk offsets and the Canon table follow the
// boxes that moved.
bool placeMovie(const Cr3File& file, const Placement& placement, TopLevelEdit& edit, std::int64_t outputOffset,
                const OffsetMap& map, QString* error)
{
    const std::int64_t movieSize = edit.replacement.serializedSize();
    const auto newStart = [&](std::size_t i) -> std::optional<std::int64_t> {
        if (i == file.movieIndex)
            return outputOffset;
        if (file.xmpIndex && i == *file.xmpIndex && placement.xmpOffset)
            return placement.xmpOffset;
        return map(file.tree.boxes[i].offset);
    };
    bool shifted = false;
    for (std::size_t i = 0; i < file.tree.boxes.size(); ++i) {
        const std::optional<std::int64_t> start = newStart(i);
        if (!start) {
            *error = QStringLiteral("the new place of the '%1' box is not known").arg(boxTypeName(file.tree.boxes[i].type));
            return false;
        }
        shifted = shifted || *start != file.tree.boxes[i].offset;
    }
    if (!shifted)
        return true;
    QString which;
    if (holdsOtherFileOffsets(edit.replacement, &which)) {
        *error = QStringLiteral("the '%1' box holds file offsets that would move").arg(which);
        return false;
    }
    if (!remapChunkOffsets(edit.replacement, map, error))
        return false;
    BoxNode* canon = canonNodeOf(edit.replacement);
    std::optional<CanonContent> content = canon ? readCanonContent(canon->payload, error) : std::nullopt;
    if (!content)
        return false;
    const std::optional<std::vector<TableEntry>> rows = readOffsetTable(*content, error);
    if (!rows)
        return false;
    for (const TableEntry& row : *rows) {
        if (row.offset == 0 && row.size == 0)
            continue;
        const std::optional<std::size_t> named = boxNamedBy(file.tree, row);
        if (!named) {
            *error = QStringLiteral("the Canon table of box offsets ('CTBO') names a range (%1, %2 bytes) that is "
                                    "no box of the file, so it cannot follow the moved boxes")
                         .arg(row.offset)
                         .arg(row.size);
            return false;
        }
        std::int64_t size = row.size;
        if (*named == file.movieIndex)
            size = movieSize;
        else if (file.xmpIndex && *named == *file.xmpIndex && placement.xmpOffset)
            size = placement.xmpSize;
        putU64(canon->payload, row.at + 4, *newStart(*named));
        putU64(canon->payload, row.at + 12, size);
    }
    return true;
}

// The written file must hold the metadata as meant, and its Canon table must name the same
// boxes as the source's did.
QString outputProblem(const QString& pendingPath, const Cr3File& source, const std::vector<TableEntry>& sourceRows,
                      const Cr3Metadata& expected)
{
    FileByteSource written(pendingPath);
    QString error;
    if (!written.open(&error))
        return error;
    const std::optional<Cr3File> file = locateCr3(written, &error);
    const std::optional<Cr3Metadata> metadata = file ? readMetadata(written, *file, &error) : std::nullopt;
    if (!metadata)
        return QStringLiteral("the rewritten file could not be read back: %1").arg(error);
    if (metadata->tiff != expected.tiff || metadata->xmp != expected.xmp || metadata->hasXmpBox != expected.hasXmpBox)
        return QStringLiteral("the rewritten file does not hold the metadata that was written");
    const Box* canon = canonBoxOf(*file);
    const std::optional<CanonContent> content = readCanonContent(written.read(canon->payloadOffset(), canon->payloadSize()), &error);
    const std::optional<std::vector<TableEntry>> rows = content ? readOffsetTable(*content, &error) : std::nullopt;
    if (!rows || rows->size() != sourceRows.size())
        return QStringLiteral("the rewritten file's table of box offsets is not the source's");
    for (std::size_t r = 0; r < rows->size(); ++r) {
        const std::optional<std::size_t> before = boxNamedBy(source.tree, sourceRows[r]);
        if (!before) {
            if ((*rows)[r].offset != sourceRows[r].offset || (*rows)[r].size != sourceRows[r].size)
                return QStringLiteral("the rewritten file's table of box offsets is not the source's");
            continue;
        }
        const std::optional<std::size_t> after = boxNamedBy(file->tree, (*rows)[r]);
        const Box& was = source.tree.boxes[*before];
        if (!after || file->tree.boxes[*after].type != was.type || file->tree.boxes[*after].userType != was.userType)
            return QStringLiteral("the rewritten file's table of box offsets does not name the moved boxes");
    }
    return {};
}

}  // namespace

std::optional<Cr3Metadata> readCr3Metadata(ByteSource& source, QString* error)
{
    const std::optional<Cr3File> file = locateCr3(source, error);
    return file ? readMetadata(source, *file, error) : std::nullopt;
}

std::optional<Cr3Metadata> readCr3Metadata(const QString& path, QString* error)
{
    FileByteSource source(path);
    if (!source.open(error))
        return std::nullopt;
    return readCr3Metadata(source, error);
}

RewriteReport rewriteCr3Metadata(const QString& sourcePath, const QString& targetPath, const Cr3MetadataEditor& edit,
                                 const RewriteOutput& output)
{
    RewriteReport report;
    FileByteSource source(sourcePath);
    if (!source.open(&report.error))
        return report;
    const std::optional<Cr3File> located = locateCr3(source, &report.error);
    if (!located)
        return report;
    const auto file = std::make_shared<const Cr3File>(*located);
    report.error = rewriteRefusal(file->tree);
    if (!report.error.isEmpty())
        return report;
    std::optional<BoxNode> moov = loadBoxNode(source, file->tree.boxes[file->movieIndex], kMaxEditedMovieBox);
    if (!moov) {
        report.error = QStringLiteral("the movie box is too large to rebuild");
        return report;
    }
    BoxNode* canon = canonNodeOf(*moov);
    if (!canon) {
        report.error = QStringLiteral("the file holds no Canon metadata box");
        return report;
    }
    const std::optional<CanonContent> content = readCanonContent(canon->payload, &report.error);
    if (!content)
        return report;
    const std::optional<std::vector<TableEntry>> sourceRows = readOffsetTable(*content, &report.error);
    const std::optional<Cr3Metadata> before = readMetadata(source, *file, &report.error);
    if (!sourceRows || !before)
        return report;

    Cr3Metadata after = *before;
    if (!edit(after, &report.error))
        return report;
    if (after.tiff[Cr3Metadata::MakerNotes] != before->tiff[Cr3Metadata::MakerNotes]) {
        report.error = QStringLiteral("the maker notes ('CMT3') must stay as they are");
        return report;
    }
    if (after.hasXmpBox != before->hasXmpBox || (!after.hasXmpBox && !after.xmp.isEmpty())) {
        report.error = QStringLiteral("the file has no XMP box to hold the new XMP values");
        return report;
    }
    const std::optional<QByteArray> payload = rebuildCanonPayload(*content, *before, after, &report.error);
    if (!payload)
        return report;
    canon->payload = *payload;
    const std::optional<CanonContent> rebuilt = readCanonContent(*payload, &report.error);
    if (!rebuilt)
        return report;
    const Cr3Metadata expected = expectedOutput(*rebuilt, after);

    // The XMP box is placed first, so that the movie box's table can name its new place.
    auto placement = std::make_shared<Placement>();
    std::vector<TopLevelEdit> edits;
    if (after.xmp != before->xmp) {
        TopLevelEdit xmp;
        xmp.index = *file->xmpIndex;
        xmp.replacement = BoxNode::leaf("uuid", after.xmp);
        xmp.replacement.userType = kXmpBox;
        xmp.place = [placement](TopLevelEdit& e, std::int64_t at, const OffsetMap&, QString*) {
            placement->xmpOffset = at;
            placement->xmpSize = e.replacement.serializedSize();
            return true;
        };
        edits.push_back(std::move(xmp));
    }
    TopLevelEdit movie;
    movie.index = file->movieIndex;
    movie.replacement = std::move(*moov);
    movie.place = [file, placement](TopLevelEdit& e, std::int64_t at, const OffsetMap& map, QString* error) {
        return placeMovie(*file, *placement, e, at, map, error);
    };
    edits.push_back(std::move(movie));

    RewriteOutput checked = output;
    checked.check = [&](const QString& pendingPath) {
        const QString problem = outputProblem(pendingPath, *file, *sourceRows, expected);
        if (!problem.isEmpty() || !output.check)
            return problem;
        return output.check(pendingPath);
    };
    return rewriteTopLevelBoxes(sourcePath, file->tree, std::move(edits), targetPath, checked);
}

}  // namespace pelorin

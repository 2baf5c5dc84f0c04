#include "isobmff/BoxRewrite.h"

#include "isobmff/ChunkOffsets.h"
#include "isobmff/MediaReadBack.h"
#include "model/SafeOutput.h"

#include <algorithm>
#include <map>

namespace pelorin {

namespace {

constexpr std::int64_t kMaxMetadataBox = std::int64_t(256) << 20;
// A box this large that has to move is moved by a whole number of blocks (a 'free' box of our
// own takes up the rest), so that a file system that shares blocks clones it instead of copying.
constexpr std::int64_t kCloneWorthyBox = std::int64_t(1) << 20;

bool isPadding(const Box& box)
{
    return box.is("free") || box.is("skip") || box.is("wide");
}

// One run of the output: a range of the source, or bytes of a rebuilt box.
struct Piece {
    std::int64_t sourceOffset = -1;
    std::int64_t length = 0;
    int editIndex = -1;  // position in the edit list; its bytes are made after the offset fix
    QByteArray padding;  // a 'free' box of our own
};

BoxNode freeBox(std::int64_t size)
{
    return BoxNode::leaf("free", QByteArray(qsizetype(size - 8), '\0'));
}

struct Layout {
    std::vector<Piece> pieces;
    std::map<int, std::int64_t> editOffsets;  // edit index -> where it starts in the output
    std::map<std::int64_t, std::int64_t> moved;  // source offset of a copied box -> new offset
    bool shifted = false;
    bool paddingUsed = false;
};

bool hasMediaAfter(const BoxTree& tree, std::size_t index)
{
    for (std::size_t i = index + 1; i < tree.boxes.size(); ++i) {
        if (!isPadding(tree.boxes[i]))
            return true;
    }
    return false;
}

std::int64_t editedSize(const TopLevelEdit& edit)
{
    std::int64_t size = edit.replacement.serializedSize();
    for (const BoxNode& box : edit.inserted)
        size += box.serializedSize();
    return size;
}

Layout planLayout(const BoxTree& tree, const std::vector<TopLevelEdit>& edits)
{
    std::map<std::size_t, int> editAt;
    for (std::size_t e = 0; e < edits.size(); ++e)
        editAt[edits[e].index] = int(e);
    Layout layout;
    std::int64_t out = 0;
    for (std::size_t i = 0; i < tree.boxes.size(); ++i) {
        const Box& box = tree.boxes[i];
        const auto edit = editAt.find(i);
        if (edit == editAt.end()) {
            if (out != box.offset && box.size >= kCloneWorthyBox) {
                std::int64_t pad = ((box.offset - out) % kCloneBlockSize + kCloneBlockSize) % kCloneBlockSize;
                if (pad > 0 && pad < 8)  // the smallest box there is
                    pad += kCloneBlockSize;
                if (pad > 0) {
                    layout.pieces.push_back({-1, pad, -1, freeBox(pad).serialize()});
                    out += pad;
                    layout.paddingUsed = true;
                }
            }
            layout.moved[box.offset] = out;
            layout.shifted = layout.shifted || out != box.offset;
            layout.pieces.push_back({box.offset, box.size, -1, {}});
            out += box.size;
            continue;
        }
        const std::int64_t newSize = editedSize(edits[std::size_t(edit->second)]);
        layout.editOffsets[edit->second] = out;
        layout.pieces.push_back({-1, newSize, edit->second, {}});
        out += newSize;
        if (!hasMediaAfter(tree, i))
            continue;
        // Padding right after the box (several boxes, maybe) takes up the change in size.
        const std::int64_t growth = newSize - box.size;
        if (growth == 0)
            continue;
        std::int64_t padding = 0;
        std::size_t next = i + 1;
        while (next < tree.boxes.size() && isPadding(tree.boxes[next]) && editAt.count(next) == 0)
            padding += tree.boxes[next++].size;
        const std::int64_t left = padding - growth;
        if (left == 0 || left >= 8) {
            if (left > 0)
                layout.pieces.push_back({-1, left, -1, freeBox(left).serialize()});
            out += left;
            layout.paddingUsed = true;
            i = next - 1;
        }
    }
    return layout;
}

// Blanked ranges must lie inside boxes that are copied, and not overlap.
bool blankedRangesFit(const BoxTree& tree, const std::map<std::size_t, bool>& edited,
                      std::vector<SourceRange>& blanked)
{
    std::sort(blanked.begin(), blanked.end(), [](const SourceRange& a, const SourceRange& b) { return a.offset < b.offset; });
    std::int64_t previousEnd = 0;
    for (const SourceRange& range : blanked) {
        if (range.length <= 0 || range.offset < previousEnd)
            return false;
        previousEnd = range.offset + range.length;
        bool inside = false;
        for (std::size_t i = 0; i < tree.boxes.size(); ++i) {
            const Box& box = tree.boxes[i];
            const auto edit = edited.find(i);
            if (range.offset >= box.offset && previousEnd <= box.end())
                inside = edit == edited.end() || !edit->second;
        }
        if (!inside)
            return false;
    }
    return true;
}

// Copies a run of the source in the kernel, with the blanked ranges inside it written as zeros.
bool copyRun(AtomicFileWriter& writer, int handle, std::int64_t offset, std::int64_t length,
             const std::vector<SourceRange>& blanked)
{
    const std::int64_t end = offset + length;
    std::int64_t pos = offset;
    for (const SourceRange& range : blanked) {
        if (range.offset + range.length <= pos || range.offset >= end)
            continue;
        if (range.offset > pos && !writer.appendFrom(handle, pos, range.offset - pos))
            return false;
        const std::int64_t zeros = std::min(range.offset + range.length, end) - std::max(range.offset, pos);
        if (!writer.write(QByteArray(qsizetype(zeros), '\0')))
            return false;
        pos = std::max(range.offset, pos) + zeros;
    }
    return pos >= end || writer.appendFrom(handle, pos, end - pos);
}

}  // namespace

QString rewriteRefusal(const BoxTree& tree)
{
    if (!tree.clean())
        return QStringLiteral("the file's box structure is damaged (%1)").arg(tree.problems.first());
    int movies = 0;
    for (const Box& box : tree.boxes) {
        if (box.is("moof") || box.is("sidx") || box.is("mfra"))
            return QStringLiteral("fragmented movie files cannot be rewritten");
        if (box.is("moov")) {
            ++movies;
            if (box.child("mvex"))
                return QStringLiteral("fragmented movie files cannot be rewritten");
        }
    }
    if (movies > 1)
        return QStringLiteral("the file holds more than one 'moov' box");
    return {};
}

RewriteReport rewriteTopLevelBoxes(const QString& sourcePath, const BoxTree& tree,
                                   std::vector<TopLevelEdit> edits, const QString& targetPath,
                                   const RewriteOutput& output, std::vector<SourceRange> blanked)
{
    RewriteReport report;
    report.error = rewriteRefusal(tree);
    if (!report.error.isEmpty())
        return report;
    std::map<std::size_t, bool> seen;
    for (const TopLevelEdit& edit : edits) {
        // A box keeps its type, or is blanked into padding.
        if (edit.index >= tree.boxes.size() || seen[edit.index]
            || (tree.boxes[edit.index].type != edit.replacement.type && edit.replacement.type != "free")) {
            report.error = QStringLiteral("an edit does not match the file's boxes");
            return report;
        }
        seen[edit.index] = true;
    }
    if (!blankedRangesFit(tree, seen, blanked)) {
        report.error = QStringLiteral("the data to be cleared does not match the file's boxes");
        return report;
    }
    FileByteSource source(sourcePath);
    QString error;
    if (!source.open(&error) || source.size() != tree.fileSize) {
        report.error = error.isEmpty() ? QStringLiteral("the file changed while it was read") : error;
        return report;
    }

    // A moved media range needs the offsets of every movie box fixed, edited or not.
    const Layout first = planLayout(tree, edits);
    if (first.shifted) {
        for (std::size_t i = 0; i < tree.boxes.size(); ++i) {
            const Box& box = tree.boxes[i];
            if ((box.is("moov") || box.is("meta")) && !seen[i]) {
                std::optional<BoxNode> node = loadBoxNode(source, box, kMaxMetadataBox);
                if (!node) {
                    report.error = QStringLiteral("the '%1' box is too large to rebuild").arg(boxTypeName(box.type));
                    return report;
                }
                edits.push_back({i, std::move(*node), {}, {}});
            }
        }
    }
    const Layout layout = planLayout(tree, edits);
    const OffsetMap map = [&](std::int64_t old) -> std::optional<std::int64_t> {
        auto it = layout.moved.upper_bound(old);
        if (it == layout.moved.begin())
            return std::nullopt;
        --it;
        const Box* owner = nullptr;
        for (const Box& box : tree.boxes) {
            if (box.offset == it->first)
                owner = &box;
        }
        if (!owner || old >= owner->end())
            return std::nullopt;
        return it->second + (old - it->first);
    };
    for (std::size_t e = 0; e < edits.size(); ++e) {
        TopLevelEdit& edit = edits[e];
        if (edit.place) {
            const std::int64_t size = editedSize(edit);
            if (!edit.place(edit, layout.editOffsets.at(int(e)), map, &report.error))
                return report;
            if (editedSize(edit) != size) {
                report.error = QStringLiteral("an edited box changed its size after the layout was made");
                return report;
            }
            continue;
        }
        if (!layout.shifted)
            continue;
        QString which;
        if (holdsOtherFileOffsets(edit.replacement, &which)) {
            report.error = QStringLiteral("the '%1' box holds file offsets that would move").arg(which);
            return report;
        }
        if (!remapChunkOffsets(edit.replacement, map, &report.error))
            return report;
    }
    report.offsetsShifted = layout.shifted;
    report.paddingUsed = layout.paddingUsed;

    AtomicFileWriter writer(targetPath, output.mayReplaceSource ? QString() : sourcePath, output.durability);
    if (!writer.open()) {
        report.error = writer.error();
        return report;
    }
    for (std::size_t p = 0; p < layout.pieces.size(); ++p) {
        const Piece& piece = layout.pieces[p];
        bool ok = true;
        if (piece.editIndex >= 0) {
            const TopLevelEdit& edit = edits[std::size_t(piece.editIndex)];
            ok = writer.write(edit.replacement.serialize());
            for (const BoxNode& box : edit.inserted)
                ok = ok && writer.write(box.serialize());
        } else if (!piece.padding.isEmpty()) {
            ok = writer.write(piece.padding);
        } else {
            // Neighbouring copied boxes go out as one kernel copy.
            std::int64_t length = piece.length;
            while (p + 1 < layout.pieces.size() && layout.pieces[p + 1].sourceOffset == piece.sourceOffset + length) {
                length += layout.pieces[p + 1].length;
                ++p;
            }
            ok = copyRun(writer, source.handle(), piece.sourceOffset, length, blanked);
        }
        if (!ok) {
            report.error = writer.error();
            writer.discard();
            return report;
        }
    }
    writer.setCheck([&](const QString& pending) {
        const QString problem = isoMediaReadBackProblem(source, tree, pending);
        return problem.isEmpty() && output.check ? output.check(pending) : problem;
    });
    if (!writer.commit()) {
        report.error = writer.error();
        return report;
    }
    report.written = true;
    return report;
}

}  // namespace pelorin

#include "isobmff/MovieBoxRewrite.h"

namespace pelorin {

RewriteReport rewriteMovieBox(const QString& sourcePath, const QString& targetPath, const MovieBoxEditor& edit,
                              Durability durability, const FileLevelEditor& fileLevel, const OutputCheck& check)
{
    RewriteReport report;
    FileByteSource source(sourcePath);
    if (!source.open(&report.error))
        return report;
    const BoxTree tree = readBoxTree(source);
    if (!tree.top("ftyp") && !tree.top("moov")) {
        report.error = QStringLiteral("the file is not an MP4 or QuickTime movie");
        return report;
    }
    report.error = rewriteRefusal(tree);
    if (!report.error.isEmpty())
        return report;
    std::size_t index = 0;
    while (index < tree.boxes.size() && !tree.boxes[index].is("moov"))
        ++index;
    if (index == tree.boxes.size()) {
        report.error = QStringLiteral("the file has no movie box");
        return report;
    }
    std::optional<BoxNode> moov = loadBoxNode(source, tree.boxes[index], kMaxEditedMovieBox);
    if (!moov) {
        report.error = QStringLiteral("the movie box is too large to rebuild");
        return report;
    }
    if (!edit(*moov, &report.error))
        return report;
    std::vector<TopLevelEdit> edits;
    edits.push_back({index, std::move(*moov), {}, {}});
    if (fileLevel && !fileLevel(tree, edits, &report.error))
        return report;
    return rewriteTopLevelBoxes(sourcePath, tree, std::move(edits), targetPath, {durability, check});
}

}  // namespace pelorin

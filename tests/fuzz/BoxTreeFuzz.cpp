// The box reader takes files from anywhere: any bytes must give a tree and problems, never a
// crash, and every box it reports must lie inside its parent and the input.
#include "isobmff/BoxNode.h"
#include "isobmff/BoxTree.h"

#include <cstdint>
#include <cstdlib>

namespace {

void check(const std::vector<pelorin::Box>& boxes, std::int64_t begin, std::int64_t end)
{
    for (const pelorin::Box& box : boxes) {
        if (box.offset < begin || box.end() > end || box.size < box.headerSize)
            std::abort();
        if (box.container)
            check(box.children, box.payloadOffset() + box.childrenStart, box.end());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    pelorin::MemoryByteSource source(
        QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    const pelorin::BoxTree tree = pelorin::readBoxTree(source);
    check(tree.boxes, 0, source.size());
    // A box loaded and written again keeps its size whenever the reader found no problem.
    for (const pelorin::Box& box : tree.boxes) {
        const auto node = pelorin::loadBoxNode(source, box, source.size());
        if (!node)
            continue;
        if (tree.clean() && box.headerSize == 8 && node->serializedSize() != box.size)
            std::abort();
        if (node->serialize().size() != node->serializedSize())
            std::abort();
    }
    return 0;
}

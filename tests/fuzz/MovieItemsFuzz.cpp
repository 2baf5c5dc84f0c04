// Movie items come from files from anywhere: decoding them, and rewriting them, must give
// answers or reasons for any bytes, never a crash.
#include "isobmff/BoxNode.h"
#include "video/MovieItemChanges.h"
#include "video/MovieItems.h"
#include "video/MovieRecordFill.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    pelorin::MemoryByteSource source(
        QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    const pelorin::BoxTree tree = pelorin::readBoxTree(source);
    QStringList problems;
    const pelorin::MediaMetadataItems items = pelorin::readMovieItems(source, tree, &problems);
    pelorin::IKImageItem record;
    pelorin::applyMovieItems(record, items);
    const pelorin::Box* moov = tree.top("moov");
    if (!moov)
        return 0;
    std::optional<pelorin::BoxNode> node = pelorin::loadBoxNode(source, *moov, source.size());
    if (!node)
        return 0;
    QString error;
    pelorin::applyItemChanges(*node,
                              {pelorin::ItemChange::set("mdta/com.apple.quicktime.title", "x"),
                               pelorin::ItemChange::remove("mdta/com.apple.quicktime.make"),
                               pelorin::ItemChange::set("itsk/%A9nam", "y"),
                               pelorin::ItemChange::set("uiso/loci", "+1.0-2.0+3.0/")},
                              &error);
    node->serialize();
    return 0;
}

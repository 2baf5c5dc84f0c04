#pragma once

#include "isobmff/BoxRewrite.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

namespace pelorin {

// One metadata item of a HEIF/AVIF image file, as an editor sees it.
struct HeifMetadataBlock {
    enum class Kind { Exif, Xmp };
    Kind kind = Kind::Exif;
    bool describesPrimary = true;  // linked to the primary image, or to no image at all
    QByteArray bytes;  // Exif: the TIFF stream, from its byte-order mark; XMP: the packet.
                       // Empty means: remove the item.

    // Set by the reader; 0 for a block the editor adds (it then describes the primary image).
    std::uint32_t itemId = 0;
    QByteArray original;  // the bytes as read, to tell what changed
    QByteArray exifPrefix;  // the Exif item's header offset and whatever lies before the TIFF stream
};

// Changes the blocks in place: new bytes, emptied bytes (removal), or added blocks. False with
// the reason stops the rewrite.
using HeifMetadataEditor = std::function<bool(std::vector<HeifMetadataBlock>& blocks, QString* error)>;

struct HeifRewriteReport : RewriteReport {
    int itemsAdded = 0;
    int itemsReplaced = 0;
    int itemsRemoved = 0;
};

// Writes target as the HEIF/AVIF source with its Exif and XMP items changed by the editor. Every
// other item, every property and every image byte stays as it is; new metadata goes into a
// media data box of its own right after 'meta', and the bytes of a replaced or removed item are
// cleared where they lay (cut out, inside the 'meta' box's own item data). Files whose item layout cannot be kept safely are refused with the reason and
// nothing is written.
HeifRewriteReport rewriteHeifMetadata(const QString& sourcePath, const QString& targetPath,
                                      const HeifMetadataEditor& edit, const RewriteOutput& output = {});

// The metadata blocks only, for readers and tests; empty with the reason when the file cannot be
// read this way.
std::vector<HeifMetadataBlock> readHeifMetadataBlocks(const QString& path, QString* error);

}  // namespace pelorin

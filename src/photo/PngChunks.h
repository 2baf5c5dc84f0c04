#pragma once

#include <QByteArray>

#include <functional>
#include <optional>

namespace pelorin {

// One chunk of a PNG as the filter sees it: its type ("tEXt", "iCCP", ...) and, for the text
// chunks (tEXt, zTXt, iTXt), the keyword before the first NUL ("Author", "exif:Make").
struct PngChunkName {
    QByteArray type;
    QByteArray keyword;  // empty for other chunks

    bool isText() const { return type == "tEXt" || type == "zTXt" || type == "iTXt"; }
};

// The PNG with every chunk the predicate picks left out; the others, the signature and IEND
// are copied byte for byte (their checksums stay valid). Nullopt when the chunks do not lead
// to IEND inside the file. Bounded by the file's size.
std::optional<QByteArray> dropPngChunks(const QByteArray& png, const std::function<bool(const PngChunkName&)>& drop);

}  // namespace pelorin

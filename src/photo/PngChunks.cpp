#include "photo/PngChunks.h"

namespace pelorin {
namespace {

constexpr qsizetype kSignatureSize = 8;
constexpr qsizetype kMaxKeyword = 79;  // the longest keyword PNG allows

quint32 big32(const QByteArray& b, qsizetype at)
{
    return (quint32(quint8(b[at])) << 24) | (quint32(quint8(b[at + 1])) << 16) | (quint32(quint8(b[at + 2])) << 8)
           | quint32(quint8(b[at + 3]));
}

}  // namespace

std::optional<QByteArray> dropPngChunks(const QByteArray& png, const std::function<bool(const PngChunkName&)>& drop)
{
    if (png.size() < kSignatureSize || !png.startsWith("\x89PNG\r\n\x1a\n"))
        return std::nullopt;
    QByteArray out;
    out.reserve(png.size());
    out.append(png.left(kSignatureSize));
    qsizetype pos = kSignatureSize;
    while (pos + 12 <= png.size()) {
        const quint32 length = big32(png, pos);
        if (length > quint32(png.size() - pos - 12))
            return std::nullopt;
        PngChunkName name{png.mid(pos + 4, 4), {}};
        const qsizetype whole = 12 + qsizetype(length);
        if (name.type == "IEND") {
            out.append(png.mid(pos, whole));
            return out;
        }
        if (name.isText()) {
            const QByteArray data = png.mid(pos + 8, qMin<qsizetype>(length, kMaxKeyword + 1));
            const qsizetype nul = data.indexOf('\0');
            name.keyword = data.left(nul < 0 ? kMaxKeyword : nul);
        }
        if (!drop(name))
            out.append(png.mid(pos, whole));
        pos += whole;
    }
    return std::nullopt;
}

}  // namespace pelorin

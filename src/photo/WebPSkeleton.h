#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

class QFile;

namespace pelorin {

// An image chunk of a WebP as it lies in the file, header and pad byte included.
struct WebPImageChunk {
    qint64 offset = 0;
    qint64 length = 0;
};

// A WebP without the bulk of its picture: every chunk as the file has it, except that each image
// chunk (VP8, VP8L, ALPH, ANMF) keeps only its first bytes, under a chunk size that says so, and
// the RIFF size is the skeleton's own. exiv2's WebP writer reads no more of those
// chunks than their headers (the canvas size and alpha flag it needs for a VP8X chunk it adds)
// and copies them as they are, so it rewrites the metadata in a buffer of kilobytes.
struct WebPSkeleton {
    QByteArray bytes;
    QList<WebPImageChunk> imageChunks;  // in file order, one per shortened chunk
    qint64 fileSize = 0;
};

// Reads the skeleton of the WebP in the open file from its chunk headers. Empty for anything
// but the plain structure (a RIFF of whole chunks that ends where the file does, a first chunk
// VP8, VP8L or VP8X, a pad byte after each odd-sized chunk); such a file is read whole. Bounded
// by the file's size.
std::optional<WebPSkeleton> readWebPSkeleton(QFile& file);
std::optional<WebPSkeleton> readWebPSkeleton(const QString& path);

// A rewritten skeleton cut at its shortened chunks: the bytes before the first, between each two
// and after the last, with the RIFF size of the whole output whose chunks are put back. Empty
// when the image chunks of the rewrite are not the skeleton's, in its order, byte for byte.
std::optional<QList<QByteArray>> piecesAroundShortenedChunks(const QByteArray& rewritten, const WebPSkeleton& skeleton);

}  // namespace pelorin

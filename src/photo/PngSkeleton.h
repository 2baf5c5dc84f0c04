#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

class QFile;

namespace pelorin {

// A run of a PNG's image-data chunks as it lies in the file: consecutive IDAT chunks, or the
// frames of an animation (fcTL, fdAT), chunk headers and checksums included.
struct PngImageDataRun {
    qint64 offset = 0;
    qint64 length = 0;
};

// A PNG without its image data: the signature and every chunk as the file has it, except that
// each run of image-data chunks is one empty IDAT chunk standing in for it. exiv2 copies chunks
// it does not know, so it rewrites the metadata of a file of megabytes in a buffer of kilobytes;
// the image data stays in the file and is copied from there.
struct PngSkeleton {
    QByteArray bytes;
    QList<PngImageDataRun> runs;  // in file order, one per stand-in
    qint64 fileSize = 0;
};

// The stand-in chunk: an IDAT of no data, with its checksum.
QByteArray pngImageDataStandIn();

// Reads the skeleton of the PNG in the open file from its chunk headers, reading only the
// chunks it keeps. Empty for anything but the plain structure (IHDR first, chunks inside the
// file, image data, IEND as the last bytes); such a file is left to the readers of whole files,
// which know the damage. Bounded by the file's size.
std::optional<PngSkeleton> readPngSkeleton(QFile& file);
std::optional<PngSkeleton> readPngSkeleton(const QString& path);

// A rewritten skeleton cut at its stand-ins: the bytes before the first, between each two and
// after the last, one piece more than there are stand-ins. Empty when the rewrite does not hold
// exactly `standIns` of them, unchanged, as whole chunks ending at IEND, so the image data
// cannot go back where it belongs.
std::optional<QList<QByteArray>> piecesAroundStandIns(const QByteArray& rewritten, qsizetype standIns);

}  // namespace pelorin

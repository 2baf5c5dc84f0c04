#pragma once

#include "photo/PhotoMetadataSide.h"

#include <QByteArray>
#include <QList>

#include <memory>
#include <optional>

class QFile;

namespace pelorin {

// A TIFF (or a RAW file built on TIFF) without its image data: every byte of the file except
// its strips and tiles, each of which is its first byte only, with its byte count set to one.
// exiv2 reads and rewrites it as it would the file, but lays out a few kilobytes instead of the
// pixels; the strips and tiles stay in the file and an output copies them from there in the
// kernel. The bytes keep the file's length and places; the ranges that hold no metadata are
// zero pages that nothing reads, so the skeleton of a file of 100 MB costs what its metadata does.
struct TiffSkeleton {
    QByteArray bytes;
    std::shared_ptr<void> storage;  // the memory under bytes
    QList<CopiedRange> pieces;      // each strip and tile, directory by directory
};

// Reads the skeleton of the TIFF in the open file. Empty when the file has no strips or tiles,
// or when they overlap each other or the places that say where they are: such a file is left to
// the readers of whole files.
// For reading only, the skeleton can keep the file's byte counts (withCounts): nothing then
// reads the strips and tiles, which are zeros.
std::optional<TiffSkeleton> readTiffSkeleton(QFile& file, bool withCounts = false);

// A rewritten skeleton and where the strips and tiles go back: in place when the rewrite kept
// the file's layout, else after the rewritten metadata, each offset and byte count written
// anew. Empty when the rewrite did not keep every strip and tile, or an offset cannot be
// written where the file has room for it.
std::optional<PiecesAroundRanges> tiffPiecesAround(const TiffSkeleton& skeleton, const QByteArray& rewritten);

}  // namespace pelorin

#pragma once

#include "photo/JpegHead.h"
#include "photo/PhotoFormats.h"
#include "photo/PngSkeleton.h"
#include "photo/WebPSkeleton.h"

#include <QByteArray>
#include <QList>

#include <memory>
#include <optional>

class QFile;

namespace pelorin {

// A range of a file that a metadata side leaves out, as it lies in that file (for an output's
// ranges copied from its source: where they lie in the source).
struct CopiedRange {
    qint64 sourceOffset = 0;
    qint64 length = 0;
};

// A metadata side rewritten, cut where the left-out ranges go back, one piece more than there are
// ranges: the output is the pieces with the ranges (as they lie in the source) between them.
struct PiecesAroundRanges {
    QList<QByteArray> pieces;
    QList<CopiedRange> ranges;
};

struct TiffSkeleton;

// A photo file as its metadata code sees it without the bulk of its image data: a JPEG's head,
// a PNG's or a WebP's skeleton. exiv2 reads and rewrites it in a buffer of kilobytes; the ranges
// it leaves out stay in the file and an output copies them from there in the kernel.
struct PhotoMetadataSide {
    QByteArray bytes;
    QList<CopiedRange> leftOut;  // in file order
    // The structure read, one of the three.
    std::optional<JpegHead> jpeg;
    std::optional<PngSkeleton> png;
    std::optional<WebPSkeleton> webp;
    std::shared_ptr<const TiffSkeleton> tiff;
};

// How a TIFF is read: whole; as its skeleton, for rewriting (its byte counts are not the
// file's); or as its skeleton with the file's byte counts, for reading its metadata.
enum class TiffSide { Whole, Skeleton, SkeletonWithCounts };

// The metadata side of the photo in the open file; empty for other kinds and for a file without
// the plain structure of its kind, which is read whole.
std::optional<PhotoMetadataSide> readPhotoMetadataSide(PhotoContainer container, QFile& file,
                                                      TiffSide tiff = TiffSide::Whole);

// A rewritten metadata side cut where the left-out ranges go back. Empty with the reason when
// the rewrite did not keep the places they go back to.
std::optional<PiecesAroundRanges> rewrittenPiecesAround(const PhotoMetadataSide& side, const QByteArray& rewritten,
                                                        QString* error);

}  // namespace pelorin

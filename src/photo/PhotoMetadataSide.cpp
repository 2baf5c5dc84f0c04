#include "photo/PhotoMetadataSide.h"

#include "photo/TiffSkeleton.h"

#include <QFile>

namespace pelorin {

std::optional<PhotoMetadataSide> readPhotoMetadataSide(PhotoContainer container, QFile& file, TiffSide tiff)
{
    PhotoMetadataSide side;
    if (container == PhotoContainer::Jpeg) {
        side.jpeg = readJpegHead(file);
        if (!side.jpeg)
            return std::nullopt;
        side.bytes = side.jpeg->bytes;
        side.leftOut.append({side.jpeg->imageDataStart, side.jpeg->imageDataLength()});
    } else if (container == PhotoContainer::Png) {
        side.png = readPngSkeleton(file);
        if (!side.png)
            return std::nullopt;
        side.bytes = side.png->bytes;
        for (const PngImageDataRun& run : side.png->runs)
            side.leftOut.append({run.offset, run.length});
    } else if (container == PhotoContainer::WebP) {
        side.webp = readWebPSkeleton(file);
        if (!side.webp)
            return std::nullopt;
        side.bytes = side.webp->bytes;
        for (const WebPImageChunk& chunk : side.webp->imageChunks)
            side.leftOut.append({chunk.offset, chunk.length});
    } else if (container == PhotoContainer::Tiff && tiff != TiffSide::Whole) {
        auto skeleton = readTiffSkeleton(file, tiff == TiffSide::SkeletonWithCounts);
        if (!skeleton)
            return std::nullopt;
        side.bytes = skeleton->bytes;
        side.leftOut = skeleton->pieces;
        side.tiff = std::make_shared<const TiffSkeleton>(std::move(*skeleton));
    } else {
        return std::nullopt;
    }
    return side;
}

std::optional<PiecesAroundRanges> rewrittenPiecesAround(const PhotoMetadataSide& side, const QByteArray& rewritten,
                                                        QString* error)
{
    if (side.tiff) {
        auto around = tiffPiecesAround(*side.tiff, rewritten);
        if (!around)
            *error = QStringLiteral("the rewrite did not keep the strips and tiles of the image");
        return around;
    }
    std::optional<QList<QByteArray>> pieces;
    if (side.jpeg) {
        // The image data and whatever follows it go after the rewritten head.
        if (const auto before = rewrittenHeadBeforeImageData(rewritten, *side.jpeg))
            pieces = QList<QByteArray>{*before, QByteArray()};
        else
            *error = QStringLiteral("the rewritten JPEG's metadata did not end where its image data begins");
    } else {
        pieces = side.png ? piecesAroundStandIns(rewritten, side.png->runs.size())
                          : piecesAroundShortenedChunks(rewritten, *side.webp);
        if (!pieces)
            *error = QStringLiteral("the rewrite did not keep the places of the image data");
    }
    if (!pieces)
        return std::nullopt;
    return PiecesAroundRanges{*pieces, side.leftOut};
}

}  // namespace pelorin

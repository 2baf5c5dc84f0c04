#pragma once
#include <QIcon>
#include <QImage>

namespace pelorin {

// Cell pictures of the photo browsers. Cells are drawn at twice their 85 px size, so they stay
// sharp on HiDPI screens.
inline constexpr int kThumbnailCellPixels = 170;

// The picture fitted into a transparent square, centred, so that cells of every shape line up.
QImage squareThumbnail(const QImage& picture, int side = kThumbnailCellPixels);
// A stand-in cell: an icon resource on a faint rounded tile, for files without a picture yet.
QIcon placeholderCell(const QString& iconResource);

}  // namespace pelorin

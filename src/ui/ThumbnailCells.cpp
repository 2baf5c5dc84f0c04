#include "ui/ThumbnailCells.h"

#include <QPainter>
#include <QPixmap>

namespace pelorin {

QImage squareThumbnail(const QImage& picture, int side)
{
    if (picture.isNull() || side <= 0)
        return {};
    QImage canvas(side, side, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QImage fitted = picture.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    painter.drawImage((side - fitted.width()) / 2, (side - fitted.height()) / 2, fitted);
    return canvas;
}

QIcon placeholderCell(const QString& iconResource)
{
    const int side = kThumbnailCellPixels;
    QPixmap canvas(side, side);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 255, 255, 22));
    painter.drawRoundedRect(QRectF(8, 8, side - 16, side - 16), 14, 14);
    QIcon(iconResource).paint(&painter, QRect(side / 2 - 40, side / 2 - 40, 80, 80));
    painter.end();
    return QIcon(canvas);
}

}  // namespace pelorin

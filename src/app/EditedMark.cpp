#include "app/EditedMark.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace pelorin {

namespace {

void paintMark(QPainter& painter, const QRectF& box)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::white, std::max(1.0, box.width() / 16)));
    painter.setBrush(QColor(0xE8, 0x7A, 0x1E));
    painter.drawEllipse(box.adjusted(1, 1, -1, -1));
    // The pencil: a slanted body ending in a point towards the lower left.
    const double s = box.width();
    const QPointF o = box.topLeft();
    QPainterPath pencil;
    pencil.moveTo(o + QPointF(0.62 * s, 0.22 * s));
    pencil.lineTo(o + QPointF(0.78 * s, 0.38 * s));
    pencil.lineTo(o + QPointF(0.40 * s, 0.76 * s));
    pencil.lineTo(o + QPointF(0.22 * s, 0.78 * s));
    pencil.lineTo(o + QPointF(0.24 * s, 0.60 * s));
    pencil.closeSubpath();
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawPath(pencil);
}

}  // namespace

QPixmap editedMark(int side)
{
    QPixmap mark(side, side);
    mark.fill(Qt::transparent);
    QPainter painter(&mark);
    paintMark(painter, QRectF(0, 0, side, side));
    return mark;
}

QImage withEditedMark(const QImage& thumbnail)
{
    QImage marked = thumbnail.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const int side = std::clamp(std::min(marked.width(), marked.height()) / 4, 12, 40);
    QPainter painter(&marked);
    paintMark(painter, QRectF(marked.width() - side - 2, marked.height() - side - 2, side, side));
    return marked;
}

}  // namespace pelorin

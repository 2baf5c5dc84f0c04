#include "ui/ArtworkWell.h"

#include "ui/DropAcceptance.h"
#include "ui/WindowLook.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QIcon>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace pelorin {
namespace {

const QString kPlaceholderCaption = QStringLiteral("Drop artwork here");
constexpr int kRadius = 8;
constexpr int kInset = 6;  // keeps the picture off the rounded border

}  // namespace

ArtworkWell::ArtworkWell(const QString& objectName, QWidget* parent) : QLabel(parent)
{
    setObjectName(objectName);
    setAcceptDrops(true);
    setAlignment(Qt::AlignCenter);
    setToolTip(QStringLiteral("Drop a picture or a movie to use as artwork"));
    showPlaceholder();
}

void ArtworkWell::setPicture(const QImage& picture)
{
    if (picture.isNull()) {
        showPlaceholder();
        return;
    }
    picture_ = picture;
    setText(QString());
    update();
}

void ArtworkWell::showPlaceholder()
{
    picture_ = QImage();
    setText(kPlaceholderCaption);
    update();
}

QSize ArtworkWell::sizeHint() const { return {150, 150}; }
QSize ArtworkWell::minimumSizeHint() const { return {96, 96}; }

void ArtworkWell::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);

    const QRectF frame = QRectF(rect()).adjusted(1, 1, -1, -1);
    QPainterPath rounded;
    rounded.addRoundedRect(frame, kRadius, kRadius);
    painter.fillPath(rounded, WindowColors::field());

    const QRect inner = rect().adjusted(kInset, kInset, -kInset, -kInset);
    if (!picture_.isNull() && inner.isValid()) {
        const QSize fitted = picture_.size().scaled(inner.size(), Qt::KeepAspectRatio);
        QRect target(QPoint(0, 0), fitted);
        target.moveCenter(inner.center());
        painter.save();
        painter.setClipPath(rounded);
        painter.drawImage(target, picture_);
        painter.restore();
    } else if (inner.isValid()) {
        // Icon above a caption of up to two lines, centred as one block.
        const int iconSide = std::min(48, inner.height() / 2);
        const QFontMetrics metrics = fontMetrics();
        const QRect captionBounds = metrics.boundingRect(QRect(0, 0, inner.width() - 8, metrics.height() * 2),
                                                         Qt::AlignHCenter | Qt::TextWordWrap, kPlaceholderCaption);
        const int blockHeight = iconSide + 6 + captionBounds.height();
        const int top = inner.center().y() - blockHeight / 2;
        const QIcon icon(QStringLiteral(":/icons/artworkimage.svg"));
        if (!icon.isNull()) {
            painter.setOpacity(0.75);
            icon.paint(&painter, QRect(inner.center().x() - iconSide / 2, top, iconSide, iconSide));
            painter.setOpacity(1.0);
        }
        painter.setPen(WindowColors::dimText());
        const QRect captionRect(inner.left() + 4, top + iconSide + 6, inner.width() - 8, captionBounds.height());
        painter.drawText(captionRect, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, kPlaceholderCaption);
    }

    QPen border(dragHovering_ ? WindowColors::accent() : QColor(0x4A, 0x60, 0x75));
    border.setWidthF(dragHovering_ ? 2.0 : 1.0);
    if (picture_.isNull() && !dragHovering_)
        border.setStyle(Qt::DashLine);  // an empty well reads as a place to drop into
    painter.setPen(border);
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(rounded);
}

void ArtworkWell::setRefusal(const QString& reason)
{
    refusal_ = reason;
    setToolTip(reason);
}

void ArtworkWell::dragEnterEvent(QDragEnterEvent* event)
{
    if (refusal_.isEmpty() && acceptsDrop(DropTarget::ArtworkWell, event->mimeData())) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
        setDragHovering(true);
    } else {
        event->ignore();
    }
}

void ArtworkWell::dragMoveEvent(QDragMoveEvent* event)
{
    if (refusal_.isEmpty() && acceptsDrop(DropTarget::ArtworkWell, event->mimeData())) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
}

void ArtworkWell::dragLeaveEvent(QDragLeaveEvent* event)
{
    setDragHovering(false);
    QLabel::dragLeaveEvent(event);
}

void ArtworkWell::dropEvent(QDropEvent* event)
{
    setDragHovering(false);
    const QStringList paths = droppedFilePaths(event->mimeData());
    if (paths.isEmpty() || !refusal_.isEmpty() || !acceptsDrop(DropTarget::ArtworkWell, event->mimeData())) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    emit artworkDropped(paths.first());
}

void ArtworkWell::setDragHovering(bool hovering)
{
    if (dragHovering_ == hovering)
        return;
    dragHovering_ = hovering;
    update();
}

}  // namespace pelorin

#include "ui/HoverToolButton.h"

#include <QEnterEvent>

namespace pelorin {

HoverToolButton::HoverToolButton(const QString& objectName, const QString& pictureBase, const QString& text,
                                 QWidget* parent)
    : QToolButton(parent), normal_(picture(pictureBase, false)), hover_(picture(pictureBase, true))
{
    setObjectName(objectName);
    setText(text);
    setToolTip(text);
    setAutoRaise(true);
    setIconSize(QSize(32, 32));
    setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);
    showPicture(false);
    connect(this, &QToolButton::pressed, this, [this] { showPicture(true); });
    connect(this, &QToolButton::released, this, [this] { showPicture(underMouse()); });
}

QIcon HoverToolButton::picture(const QString& pictureBase, bool hover)
{
    return QIcon(QStringLiteral(":/icons/%1%2.svg").arg(pictureBase, hover ? "down" : "nom"));
}

void HoverToolButton::enterEvent(QEnterEvent* event)
{
    QToolButton::enterEvent(event);
    showPicture(true);
    emit hoverChanged(true);
}

void HoverToolButton::leaveEvent(QEvent* event)
{
    QToolButton::leaveEvent(event);
    showPicture(isDown());
    emit hoverChanged(false);
}

void HoverToolButton::showPicture(bool hover)
{
    hovered_ = hover;
    setIcon(hover ? hover_ : normal_);
}

}  // namespace pelorin

#pragma once
#include <QIcon>
#include <QToolButton>

namespace pelorin {

// A picture button of the window: it shows its normal picture, its hover picture while the
// pointer is over it or it is held down, and a text under the picture. The pictures are
// resources named "<base>nom.svg" and "<base>down.svg".
class HoverToolButton : public QToolButton {
    Q_OBJECT
public:
    HoverToolButton(const QString& objectName, const QString& pictureBase, const QString& text,
                    QWidget* parent = nullptr);

    bool isShowingHoverPicture() const { return hovered_; }
    static QIcon picture(const QString& pictureBase, bool hover);

signals:
    void hoverChanged(bool hovered);

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    void showPicture(bool hover);

    QIcon normal_;
    QIcon hover_;
    bool hovered_ = false;
};

}  // namespace pelorin

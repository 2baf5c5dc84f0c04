#pragma once

#include <QImage>
#include <QLabel>

namespace pelorin {

// The picture well of the media editors: shows an item's artwork, or a placeholder inviting a
// drop, and takes dropped picture (and movie) files. It only reports the drop; whoever receives
// artworkDropped loads the file and hands the picture back through setPicture.
class ArtworkWell : public QLabel {
    Q_OBJECT
public:
    explicit ArtworkWell(const QString& objectName, QWidget* parent = nullptr);

    void setPicture(const QImage& picture);
    void showPlaceholder();
    bool hasPicture() const { return !picture_.isNull(); }
    // A well whose item cannot hold artwork takes no drop and says why; an empty reason: it can.
    void setRefusal(const QString& reason);
    bool acceptsArtwork() const { return refusal_.isEmpty(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void artworkDropped(const QString& path);  // the first dropped file

protected:
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void setDragHovering(bool hovering);

    QImage picture_;
    bool dragHovering_ = false;
    QString refusal_;
};

}  // namespace pelorin

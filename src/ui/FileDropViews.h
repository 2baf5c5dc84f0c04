#pragma once
#include "ui/DropAcceptance.h"

#include <QListView>
#include <QTableView>

namespace pelorin {

// The photo browser: a grid of 85x85 thumbnails with their names, taking dropped photos and movies.
class PhotoBrowserView : public QListView {
    Q_OBJECT
public:
    explicit PhotoBrowserView(const QString& objectName, QWidget* parent = nullptr);

signals:
    // Every local file of the drop, in order; the receiver filters by kind.
    void filesDropped(const QStringList& paths);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
};

// The media table, taking dropped audio and movie files.
class MediaTableView : public QTableView {
    Q_OBJECT
public:
    explicit MediaTableView(QWidget* parent = nullptr);

    void setModel(QAbstractItemModel* model) override;
    // Gives the text columns the width of their texts (up to a cap each, so one long name does
    // not push the others out of sight), the table scrolling sideways when they need more room.
    void fitColumnsToText();

signals:
    void filesDropped(const QStringList& paths);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void scheduleFit();
    bool fitPending_ = false;
};

}  // namespace pelorin

#include "ui/FileDropViews.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHeaderView>
#include <QMimeData>

namespace pelorin {

namespace {

// The copy operation when the target takes the drag, none otherwise.
void answerDrag(DropTarget target, QDragMoveEvent* event)
{
    if (acceptsDrop(target, event->mimeData())) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
}

bool takeDrop(DropTarget target, QDropEvent* event, QStringList* paths)
{
    if (!acceptsDrop(target, event->mimeData())) {
        event->ignore();
        return false;
    }
    *paths = droppedFilePaths(event->mimeData());
    event->setDropAction(Qt::CopyAction);
    event->accept();
    return true;
}

}  // namespace

PhotoBrowserView::PhotoBrowserView(const QString& objectName, QWidget* parent) : QListView(parent)
{
    setObjectName(objectName);
    setViewMode(QListView::IconMode);
    setIconSize(QSize(85, 85));
    setGridSize(QSize(104, 118));
    setResizeMode(QListView::Adjust);
    setMovement(QListView::Static);
    setUniformItemSizes(true);
    setWordWrap(false);
    setTextElideMode(Qt::ElideMiddle);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setLayoutMode(QListView::Batched);
    setBatchSize(200);
    setAcceptDrops(true);
    setDropIndicatorShown(false);
    setDragDropMode(QAbstractItemView::DropOnly);
    viewport()->setAcceptDrops(true);
}

void PhotoBrowserView::dragEnterEvent(QDragEnterEvent* event) { answerDrag(DropTarget::PhotoBrowser, event); }
void PhotoBrowserView::dragMoveEvent(QDragMoveEvent* event) { answerDrag(DropTarget::PhotoBrowser, event); }

void PhotoBrowserView::dropEvent(QDropEvent* event)
{
    QStringList paths;
    if (takeDrop(DropTarget::PhotoBrowser, event, &paths))
        emit filesDropped(paths);
}

MediaTableView::MediaTableView(QWidget* parent) : QTableView(parent)
{
    setObjectName(QStringLiteral("dragtableView"));
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    setTextElideMode(Qt::ElideMiddle);
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(24);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setStretchLastSection(true);
    setAcceptDrops(true);
    setDragDropMode(QAbstractItemView::DropOnly);
    viewport()->setAcceptDrops(true);
}

void MediaTableView::dragEnterEvent(QDragEnterEvent* event) { answerDrag(DropTarget::MediaTable, event); }
void MediaTableView::dragMoveEvent(QDragMoveEvent* event) { answerDrag(DropTarget::MediaTable, event); }

void MediaTableView::dropEvent(QDropEvent* event)
{
    QStringList paths;
    if (takeDrop(DropTarget::MediaTable, event, &paths))
        emit filesDropped(paths);
}

}  // namespace pelorin

#include "ui/FileDropViews.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHeaderView>
#include <QMimeData>
#include <QTimer>

#include <algorithm>

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

void MediaTableView::setModel(QAbstractItemModel* model)
{
    if (QAbstractItemModel* old = this->model())
        disconnect(old, nullptr, this, nullptr);
    QTableView::setModel(model);
    if (!model)
        return;
    connect(model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex&, int first, int) {
        // Rows arriving below a full screen change none of the texts the fit measures; a big
        // import would otherwise measure the same screenful again for every batch.
        if (isVisible() && first > 0 && rowViewportPosition(first) > viewport()->height())
            return;
        scheduleFit();
    });
    connect(model, &QAbstractItemModel::modelReset, this, &MediaTableView::scheduleFit);
    connect(model, &QAbstractItemModel::dataChanged, this, &MediaTableView::scheduleFit);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &MediaTableView::scheduleFit);
    scheduleFit();
}

void MediaTableView::scheduleFit()
{
    // One fit per turn of the event loop, however many batches of rows arrived.
    if (fitPending_)
        return;
    fitPending_ = true;
    QTimer::singleShot(0, this, [this] {
        fitPending_ = false;
        fitColumnsToText();
    });
}

void MediaTableView::fitColumnsToText()
{
    if (!model())
        return;
    QHeaderView* header = horizontalHeader();
    const int cap = std::max(160, viewport()->width() * 3 / 4);
    for (int column = 0; column < model()->columnCount(); ++column) {
        if (header->isSectionHidden(column) || header->sectionResizeMode(column) != QHeaderView::Interactive)
            continue;
        // The rows on screen and the title; further rows are measured as they scroll in.
        const int wanted = std::max(sizeHintForColumn(column), header->sectionSizeHint(column));
        header->resizeSection(column, std::clamp(wanted, header->minimumSectionSize(), cap));
    }
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

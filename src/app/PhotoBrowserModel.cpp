#include "app/PhotoBrowserModel.h"

#include "app/EditedMark.h"
#include "app/ImportedItemsModel.h"
#include "app/ThumbnailLoader.h"
#include "model/FileKinds.h"
#include "ui/ThumbnailCells.h"

#include <QPainter>
#include <QPixmap>

namespace pelorin {

PhotoBrowserModel::PhotoBrowserModel(ThumbnailLoader* thumbnails, QObject* parent)
    : QSortFilterProxyModel(parent),
      thumbnails_(thumbnails),
      moviePicture_(placeholderCell(QStringLiteral(":/icons/moviefile.svg"))),
      loadingPicture_(placeholderCell(QStringLiteral(":/icons/importphotonom.svg"))),
      brokenPicture_(placeholderCell(QStringLiteral(":/icons/clearphotosnom.svg")))
{
    // Thumbnails arrive a few at a time; repainting once per short pause keeps a big import smooth.
    repaint_.setObjectName(QStringLiteral("thumbnailRepaint"));
    repaint_.setSingleShot(true);
    repaint_.setInterval(60);
    connect(&repaint_, &QTimer::timeout, this, [this] {
        if (rowCount() > 0)
            emit dataChanged(index(0, 0), index(rowCount() - 1, 0), {Qt::DecorationRole});
    });
    connect(thumbnails_, &ThumbnailLoader::thumbnailsReady, this, [this] {
        if (!repaint_.isActive())
            repaint_.start();
    });
}

bool PhotoBrowserModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    const QString path = sourceModel()->index(sourceRow, 0, sourceParent).data(ImportedItemsModel::PathRole).toString();
    const QString extension = pathExtension(path);
    return isImageExtension(extension) || isVideoExtension(extension);
}

bool PhotoBrowserModel::filterAcceptsColumn(int sourceColumn, const QModelIndex&) const
{
    return sourceColumn == ImportedItemsModel::Name;
}

QVariant PhotoBrowserModel::data(const QModelIndex& index, int role) const
{
    if (role != Qt::DecorationRole)
        return QSortFilterProxyModel::data(index, role);
    const QString path = QSortFilterProxyModel::data(index, ImportedItemsModel::PathRole).toString();
    const bool edited = QSortFilterProxyModel::data(index, ImportedItemsModel::EditedRole).toBool();
    const QString key = edited ? path + QStringLiteral("\n(edited)") : path;
    auto cached = icons_.constFind(key);
    if (cached != icons_.constEnd())
        return *cached;
    const QImage image = thumbnails_->thumbnail(path);
    if (!image.isNull()) {
        if (icons_.size() > 3000)
            icons_.clear();
        return *icons_.insert(key, QIcon(QPixmap::fromImage(edited ? withEditedMark(image) : image)));
    }
    if (!thumbnails_->failed(path))
        return loadingPicture_;
    return isVideoExtension(pathExtension(path)) ? moviePicture_ : brokenPicture_;
}

}  // namespace pelorin

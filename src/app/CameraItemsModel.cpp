#include "app/CameraItemsModel.h"

#include "model/FileKinds.h"
#include "ui/ThumbnailCells.h"
#include "model/ItemPictureImage.h"

#include <QPixmap>

namespace pelorin {


CameraItemsModel::CameraItemsModel(QObject* parent)
    : QAbstractListModel(parent),
      placeholder_(placeholderCell(QStringLiteral(":/icons/cameraphotonom.svg"))),
      moviePlaceholder_(placeholderCell(QStringLiteral(":/icons/moviefile.svg")))
{
}

int CameraItemsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(items_.size());
}

QVariant CameraItemsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= items_.size())
        return {};
    const IKImageItem& item = items_.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return item.fileName;
    case Qt::ToolTipRole:
        return QStringLiteral("%1/%2").arg(item.cameraItem.folder, item.cameraItem.name);
    case Qt::DecorationRole: {
        if (item.fileImage.isNull())
            return item.fileType == QLatin1String("Movie") ? moviePlaceholder_ : placeholder_;
        auto found = icons_.constFind(index.row());
        if (found == icons_.constEnd())
            found = icons_.insert(index.row(), QIcon(QPixmap::fromImage(squareThumbnail(pictureImage(item.fileImage)))));
        return *found;
    }
    default:
        return {};
    }
}

void CameraItemsModel::setItems(const QList<IKImageItem>& items)
{
    beginResetModel();
    items_ = items;
    icons_.clear();
    endResetModel();
}

void CameraItemsModel::setThumbnail(const CameraFileRef& file, const QImage& thumbnail)
{
    for (int row = 0; row < items_.size(); ++row) {
        if (items_[row].cameraItem == file) {
            items_[row].fileImage = itemPicture(thumbnail);
            icons_.remove(row);
            emit dataChanged(index(row), index(row), {Qt::DecorationRole});
            return;
        }
    }
}

void CameraItemsModel::removeFiles(const QList<CameraFileRef>& files)
{
    for (int row = int(items_.size()) - 1; row >= 0; --row) {
        if (files.contains(items_[row].cameraItem)) {
            beginRemoveRows({}, row, row);
            items_.removeAt(row);
            endRemoveRows();
        }
    }
    icons_.clear();
}

}  // namespace pelorin

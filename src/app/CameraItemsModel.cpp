#include "app/CameraItemsModel.h"

#include "model/FileKinds.h"

#include <QPainter>
#include <QPixmap>

namespace pelorin {

namespace {

QIcon squareIcon(const QImage& image)
{
    QPixmap canvas(170, 170);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QImage fitted = image.scaled(170, 170, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    painter.drawImage((170 - fitted.width()) / 2, (170 - fitted.height()) / 2, fitted);
    painter.end();
    return QIcon(canvas);
}

QIcon framedPicture(const QString& resource)
{
    QPixmap canvas(170, 170);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 255, 255, 22));
    painter.drawRoundedRect(QRectF(8, 8, 154, 154), 14, 14);
    QIcon(resource).paint(&painter, QRect(45, 45, 80, 80));
    painter.end();
    return QIcon(canvas);
}

}  // namespace

CameraItemsModel::CameraItemsModel(QObject* parent)
    : QAbstractListModel(parent),
      placeholder_(framedPicture(QStringLiteral(":/icons/cameraphotonom.svg"))),
      moviePlaceholder_(framedPicture(QStringLiteral(":/icons/moviefile.svg")))
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
            found = icons_.insert(index.row(), squareIcon(item.fileImage));
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
            items_[row].fileImage = thumbnail;
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

#pragma once
#include "model/IKImageItem.h"

#include <QAbstractListModel>
#include <QHash>
#include <QIcon>

namespace pelorin {

// The files of the open camera, one cell each in the camera browser: the device's thumbnail
// (shown when it arrives) and the name on the device.
class CameraItemsModel : public QAbstractListModel {
    Q_OBJECT
public:
    explicit CameraItemsModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    const QList<IKImageItem>& items() const { return items_; }
    void setItems(const QList<IKImageItem>& items);
    void clear() { setItems({}); }
    // Shows a thumbnail that arrived after the listing.
    void setThumbnail(const CameraFileRef& file, const QImage& thumbnail);
    // Removes the records of these files (the ones the device deleted).
    void removeFiles(const QList<CameraFileRef>& files);

private:
    QList<IKImageItem> items_;
    mutable QHash<int, QIcon> icons_;
    QIcon placeholder_;
    QIcon moviePlaceholder_;
};

}  // namespace pelorin

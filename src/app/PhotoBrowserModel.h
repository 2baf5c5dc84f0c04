#pragma once
#include <QHash>
#include <QIcon>
#include <QSortFilterProxyModel>
#include <QTimer>

namespace pelorin {

class ThumbnailLoader;

// What the photo browser shows of the imported list: the photos and movies, one cell each with
// its thumbnail and name. Audio files stay in the media table.
class PhotoBrowserModel : public QSortFilterProxyModel {
    Q_OBJECT
public:
    PhotoBrowserModel(ThumbnailLoader* thumbnails, QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    void forgetThumbnails() { icons_.clear(); }
    // True while finished thumbnails wait for their cells to be repainted.
    bool isRepaintPending() const { return repaint_.isActive(); }

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
    bool filterAcceptsColumn(int sourceColumn, const QModelIndex& sourceParent) const override;

private:
    ThumbnailLoader* thumbnails_;
    QTimer repaint_;
    QIcon moviePicture_;
    QIcon loadingPicture_;
    QIcon brokenPicture_;
    mutable QHash<QString, QIcon> icons_;
};

}  // namespace pelorin

#pragma once
#include "model/IKImageItem.h"

#include <QAbstractTableModel>
#include <QList>

namespace pelorin {

// The one list of imported files (photos, audio and movies, in import order) behind both the
// photo browser and the media table. Columns are those of the media table.
class ImportedItemsModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { Name, Size, Duration, Kind, Artist, Album, ColumnCount };
    static constexpr int PathRole = Qt::UserRole + 1;
    static constexpr int EditedRole = Qt::UserRole + 2;  // true while the record has a working copy

    using QAbstractTableModel::QAbstractTableModel;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    const QList<IKImageItem>& items() const { return items_; }
    const IKImageItem& item(int row) const { return items_.at(row); }
    IKImageItem& item(int row) { return items_[row]; }

    void append(const QList<IKImageItem>& records);
    // Makes room for this many more records, so that a big import does not move every record
    // to a larger list each time the list fills up.
    void reserveMore(int count);
    // Removes the given rows (any order, duplicates allowed); the files are not touched.
    void removeItemRows(QList<int> rows);
    void clear();
    // Replaces the record at row (after an editor saved it, say) and repaints its row.
    void replace(int row, const IKImageItem& record);
    // Gives every record of the file recordPath its working copy (empty: none) and repaints them.
    void setWorkingCopy(const QString& recordPath, const QString& copy);
    // The working copies of all records, so that a new edit's output does not take one's name.
    QStringList workingCopies() const;

private:
    QList<IKImageItem> items_;
};

}  // namespace pelorin

#include "app/ImportedItemsModel.h"

#include "app/EditedMark.h"

#include <QIcon>

#include <QStringList>

#include <algorithm>

namespace pelorin {

int ImportedItemsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(items_.size());
}

int ImportedItemsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ImportedItemsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= items_.size())
        return {};
    const IKImageItem& record = items_.at(index.row());
    if (role == PathRole)
        return record.filePath;
    if (role == EditedRole)
        return !record.workingCopyPath.isEmpty();
    // The mark of a record whose edits live in its working copy.
    if (role == Qt::DecorationRole && index.column() == Name && !record.workingCopyPath.isEmpty())
        return QIcon(editedMark(16));
    if (role == Qt::ToolTipRole)
        return record.workingCopyPath.isEmpty() ? record.filePath
                                                : QStringLiteral("%1\nEdited copy: %2").arg(record.filePath, record.workingCopyPath);
    if (role == Qt::TextAlignmentRole && (index.column() == Size || index.column() == Duration))
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case Name: return record.fileName;
    case Size: return record.fileSize;
    case Duration: return record.fileduratStr;
    case Kind: return record.fileType;
    case Artist: return record.fileArist;
    case Album: return record.fileAblumName;
    default: return {};
    }
}

QVariant ImportedItemsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    static const char* const titles[] = {"Name", "Size", "Duration", "Kind", "Artist", "Album"};
    return section >= 0 && section < ColumnCount ? QString::fromLatin1(titles[section]) : QVariant();
}

void ImportedItemsModel::append(const QList<IKImageItem>& records)
{
    if (records.isEmpty())
        return;
    beginInsertRows({}, int(items_.size()), int(items_.size() + records.size() - 1));
    items_.append(records);
    endInsertRows();
}

void ImportedItemsModel::reserveMore(int count)
{
    if (count > 0)
        items_.reserve(items_.size() + count);
}

void ImportedItemsModel::removeItemRows(QList<int> rows)
{
    std::sort(rows.begin(), rows.end(), std::greater<int>());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    rows.removeIf([this](int row) { return row < 0 || row >= items_.size(); });
    // Runs of neighbouring rows go in one step each, so that removing thousands of selected
    // records costs the views a few updates, not one per record.
    for (qsizetype i = 0; i < rows.size();) {
        const int last = rows[i];
        int first = last;
        while (++i < rows.size() && rows[i] == first - 1)
            first = rows[i];
        beginRemoveRows({}, first, last);
        items_.remove(first, last - first + 1);
        endRemoveRows();
    }
}

void ImportedItemsModel::clear()
{
    beginResetModel();
    items_.clear();
    endResetModel();
}

void ImportedItemsModel::replace(int row, const IKImageItem& record)
{
    if (row < 0 || row >= items_.size())
        return;
    items_[row] = record;
    emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

void ImportedItemsModel::setWorkingCopy(const QString& recordPath, const QString& copy)
{
    for (int row = 0; row < items_.size(); ++row) {
        if (items_[row].filePath != recordPath || items_[row].workingCopyPath == copy)
            continue;
        items_[row].workingCopyPath = copy;
        emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
    }
}

QStringList ImportedItemsModel::workingCopies() const
{
    QStringList copies;
    for (const IKImageItem& record : items_) {
        if (!record.workingCopyPath.isEmpty())
            copies.append(record.workingCopyPath);
    }
    return copies;
}

}  // namespace pelorin

#pragma once
#include "photo/PropertyTree.h"

#include <QFrame>

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

namespace pelorin {

class TileMapView;

// The right-hand pane: the selected photo's file facts over the tree of every property group
// and value.
class InspectorPanel : public QFrame {
    Q_OBJECT
public:
    explicit InspectorPanel(QWidget* parent = nullptr);

    struct Facts {
        QString fileName, fileSize, imageSize, created;
        QString editedCopy;  // the working copy shown in place of the imported file, if any
    };
    void showPhoto(const QList<PropertyTreeNode>& tree, const Facts& facts);
    void showMessage(const QString& fileName, const QString& message);
    void clear();

    QTreeWidget* tree() const { return tree_; }
    // The map under the tree: shown with a pin for a photo that has a location, hidden otherwise.
    TileMapView* map() const { return map_; }
    void showLocation(double latitude, double longitude);
    void hideLocation();

private:
    void addNodes(QTreeWidgetItem* parent, const QList<PropertyTreeNode>& nodes);

    QLabel* name_;
    QLabel* facts_;
    QTreeWidget* tree_;
    TileMapView* map_;
};

}  // namespace pelorin

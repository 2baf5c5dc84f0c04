#include "app/InspectorPanel.h"

#include "ui/TileMapView.h"

#include <QHeaderView>
#include <QLabel>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace pelorin {

InspectorPanel::InspectorPanel(QWidget* parent) : QFrame(parent)
{
    setObjectName(QStringLiteral("inspectorPane"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 10, 10, 10);
    layout->setSpacing(6);
    auto* heading = new QLabel(QStringLiteral("Photo Metadata"), this);
    heading->setProperty("role", "heading");
    name_ = new QLabel(this);
    name_->setObjectName(QStringLiteral("inspectorFileName"));
    QFont nameFont = name_->font();
    nameFont.setPointSizeF(nameFont.pointSizeF() * 1.15);
    nameFont.setBold(true);
    name_->setFont(nameFont);
    name_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    facts_ = new QLabel(this);
    facts_->setObjectName(QStringLiteral("inspectorFacts"));
    facts_->setProperty("role", "hint");
    facts_->setWordWrap(true);
    facts_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    tree_ = new QTreeWidget(this);
    tree_->setObjectName(QStringLiteral("propertyTree"));
    tree_->setColumnCount(2);
    tree_->setHeaderLabels({QStringLiteral("Property"), QStringLiteral("Value")});
    tree_->setAlternatingRowColors(true);
    tree_->setUniformRowHeights(true);
    tree_->setTextElideMode(Qt::ElideRight);
    tree_->header()->setSectionResizeMode(0, QHeaderView::Interactive);
    tree_->header()->resizeSection(0, 170);
    tree_->header()->setStretchLastSection(true);
    layout->addWidget(heading);
    layout->addWidget(name_);
    layout->addWidget(facts_);
    layout->addWidget(tree_, 1);
    map_ = new TileMapView(this);
    map_->setObjectName(QStringLiteral("currentlocalMapView"));
    map_->setMinimumHeight(200);
    map_->setMaximumHeight(240);
    layout->addWidget(map_);
    clear();
}

void InspectorPanel::addNodes(QTreeWidgetItem* parent, const QList<PropertyTreeNode>& nodes)
{
    for (const PropertyTreeNode& node : nodes) {
        auto* item = new QTreeWidgetItem(parent);
        item->setText(0, node.key);
        if (node.isGroup) {
            QFont bold = item->font(0);
            bold.setBold(true);
            item->setFont(0, bold);
            addNodes(item, node.children);
        } else {
            const QString value = node.text;
            item->setText(1, value);
            item->setToolTip(1, value);
        }
    }
}

void InspectorPanel::showPhoto(const QList<PropertyTreeNode>& tree, const Facts& facts)
{
    name_->setText(facts.fileName);
    QStringList lines;
    if (!facts.fileSize.isEmpty())
        lines.append(QStringLiteral("Size: %1").arg(facts.fileSize));
    if (!facts.imageSize.isEmpty())
        lines.append(QStringLiteral("Dimensions: %1").arg(facts.imageSize));
    if (!facts.created.isEmpty())
        lines.append(QStringLiteral("Created: %1").arg(facts.created));
    if (!facts.editedCopy.isEmpty())
        lines.append(QStringLiteral("Edited copy: %1").arg(facts.editedCopy));
    facts_->setText(lines.join(QLatin1Char('\n')));
    tree_->setUpdatesEnabled(false);
    tree_->clear();
    auto* root = tree_->invisibleRootItem();
    addNodes(root, tree);
    // Groups open, so the values are in view without a click per group.
    for (int i = 0; i < root->childCount(); ++i)
        root->child(i)->setExpanded(true);
    tree_->setUpdatesEnabled(true);
}

void InspectorPanel::showMessage(const QString& fileName, const QString& message)
{
    hideLocation();
    tree_->clear();
    name_->setText(fileName);
    facts_->setText(message);
}

void InspectorPanel::showLocation(double latitude, double longitude)
{
    map_->show();
    map_->showCoordinate(latitude, longitude);
}

void InspectorPanel::hideLocation()
{
    map_->clearPin();
    map_->hide();
}

void InspectorPanel::clear()
{
    hideLocation();
    tree_->clear();
    name_->setText(QStringLiteral("No photo selected"));
    facts_->setText(QStringLiteral("Select a photo to see its metadata."));
}

}  // namespace pelorin

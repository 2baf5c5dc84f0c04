#include "app/MapWindow.h"

#include "app/MapSettings.h"
#include "ui/TileMapView.h"

#include <QVBoxLayout>

namespace pelorin {

MapWindow::MapWindow(const Preferences& preferences, QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("mapWindow"));
    setWindowTitle(QStringLiteral("Photo Location"));
    setModal(false);
    resize(720, 520);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    map_ = new TileMapView(this);
    map_->setObjectName(QStringLiteral("currentMapView"));
    configureMap(map_, preferences);
    layout->addWidget(map_);
}

void MapWindow::showCoordinate(double latitude, double longitude)
{
    map_->showCoordinate(latitude, longitude);
}

}  // namespace pelorin

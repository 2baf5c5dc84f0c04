#include "app/MapSettings.h"

#include "model/Preferences.h"
#include "ui/TileMapView.h"

#include <QStandardPaths>

namespace pelorin {

void configureMap(TileMapView* map, const Preferences& preferences)
{
    const DeploymentSettings settings = preferences.deployment();
    map->setTileUrlTemplate(settings.mapTileUrl);
    map->setAttribution(settings.mapAttribution);
    map->setCacheDirectory(QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + QStringLiteral("/tiles"));
}

}  // namespace pelorin

#pragma once

namespace pelorin {

class Preferences;
class TileMapView;

// Points a map at the configured tile server, with its attribution and the shared tile cache.
void configureMap(TileMapView* map, const Preferences& preferences);

}  // namespace pelorin

#pragma once
#include <QDialog>

namespace pelorin {

class Preferences;
class TileMapView;

// The separate map window of the photo in the inspector: a larger map with its pin.
class MapWindow : public QDialog {
    Q_OBJECT
public:
    MapWindow(const Preferences& preferences, QWidget* parent);
    void showCoordinate(double latitude, double longitude);
    TileMapView* map() const { return map_; }

private:
    TileMapView* map_;
};

}  // namespace pelorin

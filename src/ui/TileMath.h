#pragma once
#include <QHashFunctions>
#include <QList>
#include <QPoint>
#include <QPointF>
#include <QSize>
#include <QString>

namespace pelorin::tilemath {

// Web Mercator as the slippy-map tile servers number it: at zoom z the world is a square of
// 256 * 2^z pixels, x growing eastward from 180° W, y growing southward from the northern edge.

inline constexpr int kTileSize = 256;
inline constexpr int kMinZoom = 1;
inline constexpr int kMaxZoom = 19;
// Where the Mercator square ends, atan(sinh(pi)) in degrees; the poles themselves are infinitely far.
inline constexpr double kMaxLatitude = 85.05112877980659;

struct TileId {
    int zoom = 0;
    int x = 0;
    int y = 0;
    friend bool operator==(const TileId&, const TileId&) = default;
};
size_t qHash(const TileId& tile, size_t seed = 0) noexcept;

// A tile as the view lays it out: which tile (x wrapped into the world) and where its top-left
// corner falls in view pixels.
struct TileSlot {
    TileId tile;
    QPoint topLeft;
};

double worldSize(int zoom);
double clampLatitude(double latitude);
// Finite, latitude within ±90 and longitude within ±180.
bool isValidCoordinate(double latitude, double longitude);

// Latitudes beyond the Mercator square are clamped to its edge.
QPointF worldPixel(double latitude, double longitude, int zoom);
// (latitude, longitude) of a world pixel; x wraps around the world, y is clamped to it.
QPointF coordinateAt(const QPointF& worldPixel, int zoom);
TileId tileAt(double latitude, double longitude, int zoom);
int wrapTileX(int x, int zoom);

// The deepest zoom at which the span, centred on the latitude, fits into the view.
int zoomToFit(double latitudeSpan, double longitudeSpan, double centreLatitude, const QSize& view);

// The tiles a view of the given size covers when its top-left corner is the world pixel
// origin, nearest to the view's centre first. Rows beyond the world's top and bottom have no
// tiles; columns wrap, so one tile may appear in more than one slot of a wide view.
QList<TileSlot> tilesCovering(const QPoint& origin, const QSize& view, int zoom);

// "33.45000° S  70.66000° W"
QString coordinateText(double latitude, double longitude);

}  // namespace pelorin::tilemath

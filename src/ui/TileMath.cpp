#include "ui/TileMath.h"

#include <QtMath>
#include <algorithm>
#include <cmath>

namespace pelorin::tilemath {

size_t qHash(const TileId& tile, size_t seed) noexcept
{
    return qHashMulti(seed, tile.zoom, tile.x, tile.y);
}

double worldSize(int zoom)
{
    return std::ldexp(double(kTileSize), std::clamp(zoom, 0, 30));
}

double clampLatitude(double latitude)
{
    return std::clamp(latitude, -kMaxLatitude, kMaxLatitude);
}

bool isValidCoordinate(double latitude, double longitude)
{
    return std::isfinite(latitude) && std::isfinite(longitude) && std::abs(latitude) <= 90.0 &&
           std::abs(longitude) <= 180.0;
}

QPointF worldPixel(double latitude, double longitude, int zoom)
{
    const double size = worldSize(zoom);
    const double phi = qDegreesToRadians(clampLatitude(latitude));
    const double x = (longitude + 180.0) / 360.0 * size;
    const double y = (1.0 - std::asinh(std::tan(phi)) / M_PI) / 2.0 * size;
    return {x, y};
}

QPointF coordinateAt(const QPointF& pixel, int zoom)
{
    const double size = worldSize(zoom);
    double x = std::fmod(pixel.x(), size);
    if (x < 0)
        x += size;
    const double y = std::clamp(pixel.y(), 0.0, size);
    const double longitude = x / size * 360.0 - 180.0;
    const double latitude = qRadiansToDegrees(std::atan(std::sinh(M_PI * (1.0 - 2.0 * y / size))));
    return {latitude, longitude};
}

int wrapTileX(int x, int zoom)
{
    const int count = 1 << std::clamp(zoom, 0, 30);
    const int wrapped = x % count;
    return wrapped < 0 ? wrapped + count : wrapped;
}

TileId tileAt(double latitude, double longitude, int zoom)
{
    const QPointF pixel = worldPixel(latitude, longitude, zoom);
    const int last = (1 << zoom) - 1;
    // Longitude 180 and the clamped southern edge land exactly on the world's far border.
    const int x = wrapTileX(int(std::floor(pixel.x() / kTileSize)), zoom);
    const int y = std::clamp(int(std::floor(pixel.y() / kTileSize)), 0, last);
    return {zoom, x, y};
}

int zoomToFit(double latitudeSpan, double longitudeSpan, double centreLatitude, const QSize& view)
{
    // A span that is not a positive number fits anywhere.
    const double latSpan = latitudeSpan > 0 ? std::min(latitudeSpan, 180.0) : 0.0;
    const double lonSpan = longitudeSpan > 0 ? std::min(longitudeSpan, 360.0) : 0.0;
    const double centre = std::isfinite(centreLatitude) ? clampLatitude(centreLatitude) : 0.0;
    // Extents at zoom 0; each deeper zoom doubles them.
    const double width = lonSpan / 360.0 * worldSize(0);
    const double height = std::abs(worldPixel(centre - latSpan / 2, 0, 0).y() - worldPixel(centre + latSpan / 2, 0, 0).y());
    for (int zoom = kMaxZoom; zoom > kMinZoom; --zoom) {
        const double scale = std::ldexp(1.0, zoom);
        if (width * scale <= view.width() && height * scale <= view.height())
            return zoom;
    }
    return kMinZoom;
}

QList<TileSlot> tilesCovering(const QPoint& origin, const QSize& view, int zoom)
{
    QList<TileSlot> layout;
    if (view.isEmpty())
        return layout;
    const auto tileIndex = [](int pixel) { return int(std::floor(double(pixel) / kTileSize)); };
    const int rows = 1 << zoom;
    const int firstX = tileIndex(origin.x());
    const int lastX = tileIndex(origin.x() + view.width() - 1);
    const int firstY = std::max(tileIndex(origin.y()), 0);
    const int lastY = std::min(tileIndex(origin.y() + view.height() - 1), rows - 1);
    for (int y = firstY; y <= lastY; ++y) {
        for (int x = firstX; x <= lastX; ++x) {
            const QPoint topLeft(x * kTileSize - origin.x(), y * kTileSize - origin.y());
            layout.append({{zoom, wrapTileX(x, zoom), y}, topLeft});
        }
    }
    const QPoint middle(view.width() / 2, view.height() / 2);
    const auto distance = [&](const TileSlot& slot) {
        const QPoint offset = slot.topLeft + QPoint(kTileSize / 2, kTileSize / 2) - middle;
        return qint64(offset.x()) * offset.x() + qint64(offset.y()) * offset.y();
    };
    std::stable_sort(layout.begin(), layout.end(),
                     [&](const TileSlot& a, const TileSlot& b) { return distance(a) < distance(b); });
    return layout;
}

QString coordinateText(double latitude, double longitude)
{
    // The hemisphere follows the rounded value, so a hair south of the equator is not "0.00000° S".
    const auto part = [](double value, char positive, char negative) {
        const QString digits = QString::number(std::abs(value), 'f', 5);
        const bool zero = digits == QLatin1String("0.00000");
        return QStringLiteral("%1° %2").arg(digits, QChar::fromLatin1(value < 0 && !zero ? negative : positive));
    };
    return part(latitude, 'N', 'S') + QStringLiteral("  ") + part(longitude, 'E', 'W');
}

}  // namespace pelorin::tilemath

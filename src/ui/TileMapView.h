#pragma once
#include "ui/TileMath.h"

#include <QCache>
#include <QHash>
#include <QImage>
#include <QList>
#include <QPointF>
#include <QSet>
#include <QSizeF>
#include <QTimer>
#include <QWidget>
#include <optional>

class QNetworkAccessManager;
class QNetworkReply;

namespace pelorin {

// A small raster map of slippy-map tiles (Web Mercator, z/x/y) with one pin. It fetches only
// the tiles in view, two at a time, and stays usable without them: the background, the pin and
// the coordinate are drawn whatever the network does.
class TileMapView : public QWidget {
    Q_OBJECT
public:
    explicit TileMapView(QWidget* parent = nullptr);
    ~TileMapView() override;

    // "{z}", "{x}", "{y}" in the template are replaced by the tile's zoom and numbers.
    void setTileUrlTemplate(const QString& urlTemplate);
    QString tileUrlTemplate() const { return urlTemplate_; }
    void setAttribution(const QString& text);       // drawn small at the bottom right
    void setCacheDirectory(const QString& folder);  // a disk cache there; empty: none

    // Centres on the coordinate, puts the pin there and picks the zoom at which the span
    // (degrees of latitude by degrees of longitude) fits the view. A coordinate that is not a
    // number or lies outside ±90 / ±180 shows "No location"; latitudes beyond the Mercator edge
    // are clamped to it.
    void showCoordinate(double latitude, double longitude, double latitudeSpan = 0.1255,
                        double longitudeSpan = 0.234);
    void clearPin();
    bool hasPin() const { return located_; }

    int zoom() const { return zoom_; }
    void setZoom(int zoom);              // about the centre of the view
    void panBy(const QPoint& pixels);    // moves the map under the view, as a drag does
    QPointF centre() const;              // (latitude, longitude)
    QPoint pinPosition() const;          // the pin's tip in view pixels; (0, 0) without a pin
    bool isOffline() const { return offline_; }

    QSize sizeHint() const override { return {400, 300}; }
    QSize minimumSizeHint() const override { return {120, 90}; }

signals:
    // Every tile requested for the current view has arrived or failed.
    void tilesSettled();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QPoint origin() const;
    QPointF pinWorldPixel() const;
    void zoomAbout(int zoom, const QPointF& viewPoint);
    void setCentreWorld(const QPointF& pixel);
    void refreshTiles();
    void startRequests();
    void tileFinished(const tilemath::TileId& tile, QNetworkReply* reply);
    void cancelRequest(const tilemath::TileId& tile);
    void updateOfflineState();
    void checkSettled();
    bool drawFallback(QPainter& painter, const tilemath::TileSlot& slot) const;
    void drawPin(QPainter& painter, const QPoint& tip) const;
    void drawOverlays(QPainter& painter) const;

    QNetworkAccessManager* network_;
    QString urlTemplate_;
    QString attribution_;

    QCache<tilemath::TileId, QImage> tiles_;
    QHash<tilemath::TileId, QNetworkReply*> inFlight_;
    QList<tilemath::TileId> queue_;
    QSet<tilemath::TileId> failed_;
    QList<tilemath::TileId> wanted_;  // the tiles of the current view
    QTimer settleTimer_;
    bool settlePending_ = false;
    bool offline_ = false;

    bool located_ = false;
    double latitude_ = 0;
    double longitude_ = 0;
    int zoom_ = 2;
    QPointF centreWorld_;                // view centre in world pixels at zoom_
    std::optional<QSizeF> fitSpan_;      // refitted on resize until the user zooms

    bool dragging_ = false;
    QPoint dragLast_;
    int wheelAngle_ = 0;
};

}  // namespace pelorin

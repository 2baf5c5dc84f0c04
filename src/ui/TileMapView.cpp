#include "ui/TileMapView.h"

#include <QBuffer>
#include <QImageReader>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNetworkAccessManager>
#include <QNetworkDiskCache>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPainter>
#include <QPainterPath>
#include <QUrl>
#include <QWheelEvent>
#include <QtMath>
#include <algorithm>
#include <cmath>
#include <memory>

namespace pelorin {

using namespace tilemath;

namespace {

// Tile servers ask for few parallel connections per client.
constexpr int kMaxInFlight = 2;
constexpr int kTransferTimeoutMs = 20000;
// A tile is a few kilobytes; anything far larger is not a tile and must not fill the memory.
constexpr qint64 kMaxTileBytes = 2 * 1024 * 1024;
constexpr int kMaxTileSide = 4096;
constexpr int kMemoryCacheKilobytes = 24 * 1024;
constexpr qint64 kDiskCacheBytes = 64 * 1024 * 1024;
// How many zoom levels up a missing tile may borrow a scaled-up ancestor while it loads.
constexpr int kFallbackLevels = 4;

constexpr QRgb kBackground = qRgb(0x2B, 0x3A, 0x48);
constexpr QRgb kPinFill = qRgb(0xE8, 0x48, 0x3F);
constexpr QRgb kPinOutline = qRgb(0xA3, 0x2C, 0x25);
constexpr QRgb kBandText = qRgb(0x1F, 0x2A, 0x33);

const QByteArray& userAgent()
{
    static const QByteArray agent =
        QByteArrayLiteral("QuorvanePelorin/" PELORIN_VERSION " (metadata editor; +https://www.quorvane.com)");
    return agent;
}

QImage decodeTile(QByteArray data)
{
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    const QSize size = reader.size();
    if (size.isValid() && (size.width() > kMaxTileSide || size.height() > kMaxTileSide))
        return {};
    const QSize tileSize(kTileSize, kTileSize);
    if (size.isValid() && size != tileSize)
        reader.setScaledSize(tileSize);
    QImage image = reader.read();
    if (image.isNull())
        return {};
    if (image.size() != tileSize)
        image = image.scaled(tileSize);
    return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
}

QFont smallFont(const QFont& base)
{
    QFont font = base;
    if (font.pointSizeF() > 0)
        font.setPointSizeF(std::max(7.0, font.pointSizeF() * 0.85));
    return font;
}

}  // namespace

TileMapView::TileMapView(QWidget* parent)
    : QWidget(parent), network_(new QNetworkAccessManager(this)), tiles_(kMemoryCacheKilobytes)
{
    setObjectName(QStringLiteral("tileMapView"));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    centreWorld_ = worldPixel(0, 0, zoom_);
    // Coalesces the settle notice so that it arrives once, after the caller has returned.
    settleTimer_.setSingleShot(true);
    settleTimer_.setInterval(0);
    connect(&settleTimer_, &QTimer::timeout, this, [this] {
        if (queue_.isEmpty() && inFlight_.isEmpty())
            emit tilesSettled();
    });
}

TileMapView::~TileMapView()
{
    for (const TileId& tile : inFlight_.keys())
        cancelRequest(tile);
}

void TileMapView::setTileUrlTemplate(const QString& urlTemplate)
{
    if (urlTemplate == urlTemplate_)
        return;
    urlTemplate_ = urlTemplate;
    for (const TileId& tile : inFlight_.keys())
        cancelRequest(tile);
    tiles_.clear();
    failed_.clear();
    refreshTiles();
}

void TileMapView::setAttribution(const QString& text)
{
    attribution_ = text;
    update();
}

void TileMapView::setCacheDirectory(const QString& folder)
{
    if (folder.isEmpty()) {
        network_->setCache(nullptr);
        return;
    }
    auto* cache = new QNetworkDiskCache(network_);
    cache->setCacheDirectory(folder);
    cache->setMaximumCacheSize(kDiskCacheBytes);
    network_->setCache(cache);
}

void TileMapView::showCoordinate(double latitude, double longitude, double latitudeSpan, double longitudeSpan)
{
    if (!isValidCoordinate(latitude, longitude)) {
        clearPin();
        return;
    }
    located_ = true;
    latitude_ = clampLatitude(latitude);
    longitude_ = longitude;
    fitSpan_ = QSizeF(longitudeSpan, latitudeSpan);
    zoom_ = zoomToFit(latitudeSpan, longitudeSpan, latitude_, size());
    setCentreWorld(worldPixel(latitude_, longitude_, zoom_));
    // A new look at the map gives tiles that failed before another chance.
    failed_.clear();
    setCursor(Qt::OpenHandCursor);
    refreshTiles();
}

void TileMapView::clearPin()
{
    located_ = false;
    fitSpan_.reset();
    dragging_ = false;
    unsetCursor();
    refreshTiles();
}

void TileMapView::setZoom(int zoom)
{
    fitSpan_.reset();
    zoomAbout(zoom, QPointF(width() / 2, height() / 2));
}

void TileMapView::panBy(const QPoint& pixels)
{
    if (!located_ || pixels.isNull())
        return;
    fitSpan_.reset();
    setCentreWorld(centreWorld_ - QPointF(pixels));
    refreshTiles();
}

QPointF TileMapView::centre() const
{
    return coordinateAt(centreWorld_, zoom_);
}

QPoint TileMapView::pinPosition() const
{
    if (!located_)
        return {};
    const QPointF pin = pinWorldPixel();
    return QPoint(qFloor(pin.x() + 0.5), qFloor(pin.y() + 0.5)) - origin();
}

// The world pixel at the view's top-left corner. Whole pixels keep tiles sharp and put the pin
// of showCoordinate exactly on the view's centre.
QPoint TileMapView::origin() const
{
    return {qFloor(centreWorld_.x() + 0.5) - width() / 2, qFloor(centreWorld_.y() + 0.5) - height() / 2};
}

// The copy of the pin nearest to the view centre, for views that wrap around the world.
QPointF TileMapView::pinWorldPixel() const
{
    QPointF pin = worldPixel(latitude_, longitude_, zoom_);
    const double size = worldSize(zoom_);
    pin.rx() -= std::round((pin.x() - centreWorld_.x()) / size) * size;
    return pin;
}

void TileMapView::setCentreWorld(const QPointF& pixel)
{
    const double size = worldSize(zoom_);
    double x = std::fmod(pixel.x(), size);
    if (x < 0)
        x += size;
    centreWorld_ = QPointF(x, std::clamp(pixel.y(), 0.0, size));
}

void TileMapView::zoomAbout(int zoom, const QPointF& viewPoint)
{
    zoom = std::clamp(zoom, kMinZoom, kMaxZoom);
    if (zoom == zoom_)
        return;
    // The world point under viewPoint stays under it.
    const QPointF under = QPointF(origin()) + viewPoint;
    const double factor = std::ldexp(1.0, zoom - zoom_);
    zoom_ = zoom;
    setCentreWorld(under * factor - viewPoint + QPointF(width() / 2, height() / 2));
    refreshTiles();
}

void TileMapView::refreshTiles()
{
    wanted_.clear();
    queue_.clear();
    settlePending_ = true;
    if (!located_ || urlTemplate_.isEmpty() || !isVisible()) {
        for (const TileId& tile : inFlight_.keys())
            cancelRequest(tile);
    } else {
        const QPoint topLeft = origin();
        for (const TileSlot& slot : tilesCovering(topLeft, size(), zoom_)) {
            if (!wanted_.contains(slot.tile))
                wanted_.append(slot.tile);
        }
        // Requests for tiles a whole tile or more outside the view are not worth waiting for.
        QSet<TileId> nearby;
        const QPoint margin(kTileSize, kTileSize);
        for (const TileSlot& slot : tilesCovering(topLeft - margin, size() + QSize(2 * kTileSize, 2 * kTileSize), zoom_))
            nearby.insert(slot.tile);
        for (const TileId& tile : inFlight_.keys()) {
            if (!nearby.contains(tile))
                cancelRequest(tile);
        }
        for (const TileId& tile : std::as_const(wanted_)) {
            if (!tiles_.contains(tile) && !failed_.contains(tile) && !inFlight_.contains(tile))
                queue_.append(tile);
        }
        startRequests();
    }
    updateOfflineState();
    checkSettled();
    update();
}

void TileMapView::startRequests()
{
    while (inFlight_.size() < kMaxInFlight && !queue_.isEmpty()) {
        const TileId tile = queue_.takeFirst();
        QString text = urlTemplate_;
        text.replace(QLatin1String("{z}"), QString::number(tile.zoom))
            .replace(QLatin1String("{x}"), QString::number(tile.x))
            .replace(QLatin1String("{y}"), QString::number(tile.y));
        const QUrl url(text);
        if (!url.isValid() || url.isRelative()) {
            failed_.insert(tile);
            continue;
        }
        QNetworkRequest request(url);
        request.setHeader(QNetworkRequest::UserAgentHeader, userAgent());
        request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::PreferCache);
        request.setTransferTimeout(kTransferTimeoutMs);
        QNetworkReply* reply = network_->get(request);
        inFlight_.insert(tile, reply);
        connect(reply, &QNetworkReply::downloadProgress, reply, [reply](qint64 received, qint64) {
            if (received > kMaxTileBytes)
                reply->abort();
        });
        connect(reply, &QNetworkReply::finished, this, [this, tile, reply] { tileFinished(tile, reply); });
    }
}

void TileMapView::tileFinished(const TileId& tile, QNetworkReply* reply)
{
    reply->deleteLater();
    if (inFlight_.value(tile) != reply)
        return;
    inFlight_.remove(tile);
    QImage image = reply->error() == QNetworkReply::NoError ? decodeTile(reply->readAll()) : QImage();
    // Without the network a stale tile from the disk cache is better than none.
    if (image.isNull() && network_->cache()) {
        const std::unique_ptr<QIODevice> cached(network_->cache()->data(reply->request().url()));
        if (cached && cached->size() <= kMaxTileBytes)
            image = decodeTile(cached->readAll());
    }
    if (image.isNull())
        failed_.insert(tile);
    else
        tiles_.insert(tile, new QImage(image), std::max<qsizetype>(1, image.sizeInBytes() / 1024));
    startRequests();
    updateOfflineState();
    checkSettled();
    update();
}

void TileMapView::cancelRequest(const TileId& tile)
{
    QNetworkReply* reply = inFlight_.take(tile);
    if (!reply)
        return;
    // abort() reports finished at once; this view no longer wants to hear it.
    disconnect(reply, nullptr, this, nullptr);
    reply->abort();
    reply->deleteLater();
}

// Offline means the view has nothing to show: some of its tiles failed and none is at hand.
// A single missing tile in an otherwise loaded view is not worth the note.
void TileMapView::updateOfflineState()
{
    if (!located_) {
        offline_ = false;
        return;
    }
    if (urlTemplate_.isEmpty()) {
        offline_ = true;
        return;
    }
    bool anyLoaded = false;
    bool anyFailed = false;
    for (const TileId& tile : std::as_const(wanted_)) {
        anyLoaded = anyLoaded || tiles_.contains(tile);
        anyFailed = anyFailed || failed_.contains(tile);
    }
    offline_ = anyFailed && !anyLoaded;
}

void TileMapView::checkSettled()
{
    if (settlePending_ && queue_.isEmpty() && inFlight_.isEmpty()) {
        settlePending_ = false;
        settleTimer_.start();
    }
}

void TileMapView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), QColor::fromRgb(kBackground));
    if (!located_) {
        QFont font = painter.font();
        if (font.pointSizeF() > 0)
            font.setPointSizeF(font.pointSizeF() * 1.1);
        painter.setFont(font);
        painter.setPen(QColor(0xC9, 0xD3, 0xDC));
        painter.drawText(rect(), Qt::AlignCenter, tr("No location"));
        return;
    }

    const QPoint topLeft = origin();
    painter.setPen(QColor(255, 255, 255, 22));
    const auto firstLine = [](int originCoordinate) {
        const int into = originCoordinate % kTileSize;
        return into <= 0 ? -into : kTileSize - into;
    };
    for (int x = firstLine(topLeft.x()); x < width(); x += kTileSize)
        painter.drawLine(x, 0, x, height() - 1);
    for (int y = firstLine(topLeft.y()); y < height(); y += kTileSize)
        painter.drawLine(0, y, width() - 1, y);

    for (const TileSlot& slot : tilesCovering(topLeft, size(), zoom_)) {
        if (const QImage* image = tiles_.object(slot.tile))
            painter.drawImage(slot.topLeft, *image);
        else
            drawFallback(painter, slot);
    }

    drawPin(painter, pinPosition());
    drawOverlays(painter);
}

// While a tile loads, a cached tile of a coarser zoom stands in for it, scaled up.
bool TileMapView::drawFallback(QPainter& painter, const TileSlot& slot) const
{
    for (int levels = 1; levels <= kFallbackLevels && slot.tile.zoom - levels >= 0; ++levels) {
        const TileId ancestor{slot.tile.zoom - levels, slot.tile.x >> levels, slot.tile.y >> levels};
        if (const QImage* image = tiles_.object(ancestor)) {
            const int part = kTileSize >> levels;
            const int mask = (1 << levels) - 1;
            const QRect source((slot.tile.x & mask) * part, (slot.tile.y & mask) * part, part, part);
            painter.drawImage(QRect(slot.topLeft, QSize(kTileSize, kTileSize)), *image, source);
            return true;
        }
    }
    return false;
}

// A teardrop whose tip touches the coordinate: a round head with a white dot, narrowing along
// the two tangents from the tip to the head.
void TileMapView::drawPin(QPainter& painter, const QPoint& tipPixel) const
{
    constexpr double radius = 9.0;
    constexpr double rise = 23.0;  // from the tip to the head's centre
    const QPointF tip = QPointF(tipPixel) + QPointF(0.5, 0.5);
    const QPointF head = tip - QPointF(0, rise);
    // Angle at the head's centre between straight down and each tangent point.
    const double spread = qRadiansToDegrees(std::acos(radius / rise));

    QPainterPath path;
    path.moveTo(tip);
    path.arcTo(QRectF(head.x() - radius, head.y() - radius, 2 * radius, 2 * radius), spread - 90.0, 360.0 - 2 * spread);
    path.closeSubpath();

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 70));
    painter.drawEllipse(tip, 6.0, 2.5);
    painter.setPen(QPen(QColor::fromRgb(kPinOutline), 1.2));
    painter.setBrush(QColor::fromRgb(kPinFill));
    painter.drawPath(path);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawEllipse(head, 3.5, 3.5);
    painter.restore();
}

void TileMapView::drawOverlays(QPainter& painter) const
{
    painter.save();
    const QFont font = smallFont(painter.font());
    painter.setFont(font);
    const QFontMetrics metrics(font);
    const int padding = 5;
    const int bandHeight = metrics.height() + 4;
    const QColor band(255, 255, 255, 190);

    const QString coordinate = coordinateText(latitude_, longitude_);
    const QRect coordinateBand(0, height() - bandHeight, metrics.horizontalAdvance(coordinate) + 2 * padding, bandHeight);
    painter.fillRect(coordinateBand, band);
    painter.setPen(QColor::fromRgb(kBandText));
    painter.drawText(coordinateBand, Qt::AlignCenter, coordinate);

    // The attribution gives way to the coordinate in a narrow view.
    const int room = width() - coordinateBand.width() - 6 - 2 * padding;
    if (!attribution_.isEmpty() && room > metrics.horizontalAdvance(QStringLiteral("M…"))) {
        const QString text = metrics.elidedText(attribution_, Qt::ElideRight, room);
        const int bandWidth = metrics.horizontalAdvance(text) + 2 * padding;
        const QRect attributionBand(width() - bandWidth, height() - bandHeight, bandWidth, bandHeight);
        painter.fillRect(attributionBand, band);
        painter.drawText(attributionBand, Qt::AlignCenter, text);
    }

    if (offline_) {
        const QString note = tr("Map tiles unavailable");
        const int noteWidth = metrics.horizontalAdvance(note) + 4 * padding;
        const QRectF noteRect((width() - noteWidth) / 2.0, 8, noteWidth, metrics.height() + 6);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, 150));
        painter.drawRoundedRect(noteRect, noteRect.height() / 2, noteRect.height() / 2);
        painter.setPen(Qt::white);
        painter.drawText(noteRect, Qt::AlignCenter, note);
    }
    painter.restore();
}

void TileMapView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (located_ && fitSpan_) {
        zoom_ = zoomToFit(fitSpan_->height(), fitSpan_->width(), latitude_, size());
        setCentreWorld(worldPixel(latitude_, longitude_, zoom_));
    }
    refreshTiles();
}

void TileMapView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    refreshTiles();
}

void TileMapView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !located_) {
        QWidget::mousePressEvent(event);
        return;
    }
    dragging_ = true;
    dragLast_ = event->position().toPoint();
    setCursor(Qt::ClosedHandCursor);
}

void TileMapView::mouseMoveEvent(QMouseEvent* event)
{
    if (!dragging_) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    const QPoint position = event->position().toPoint();
    panBy(position - dragLast_);
    dragLast_ = position;
}

void TileMapView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !dragging_) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    dragging_ = false;
    setCursor(Qt::OpenHandCursor);
}

void TileMapView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !located_) {
        QWidget::mouseDoubleClickEvent(event);
        return;
    }
    fitSpan_.reset();
    zoomAbout(zoom_ + 1, event->position());
}

void TileMapView::wheelEvent(QWheelEvent* event)
{
    if (!located_) {
        event->ignore();
        return;
    }
    // Touchpads send fractions of a notch; a level changes once a whole notch has gathered.
    wheelAngle_ += event->angleDelta().y();
    const int notches = wheelAngle_ / 120;
    if (notches != 0) {
        wheelAngle_ -= notches * 120;
        fitSpan_.reset();
        zoomAbout(zoom_ + notches, event->position());
    }
    event->accept();
}

void TileMapView::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        setZoom(zoom_ + 1);
        break;
    case Qt::Key_Minus:
        setZoom(zoom_ - 1);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

}  // namespace pelorin

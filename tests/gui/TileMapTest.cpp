#include "ui/TileMapView.h"
#include "ui/TileMath.h"

#include "LoopbackHttpServer.h"

#include <QBuffer>
#include <QDir>
#include <QPainter>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>
#include <optional>

using namespace pelorin;
using namespace pelorin::tilemath;
using pelorin::test::LoopbackHttpServer;

namespace {

constexpr double kSantiagoLat = -33.45;
constexpr double kSantiagoLon = -70.66;
const QSize kViewSize(400, 300);
const QPoint kViewCentre(200, 150);
const QColor kBackground(0x2B, 0x3A, 0x48);

// Every tile its own colour, a dark line on its first row and column, and its numbers.
QImage tileImage(const TileId& tile)
{
    QImage image(kTileSize, kTileSize, QImage::Format_RGB32);
    image.fill(QColor::fromHsv((tile.x * 7 + tile.y * 13 + tile.zoom * 5) % 24 * 15, 170, 210));
    QPainter painter(&image);
    painter.setPen(QColor(20, 20, 20));
    painter.drawLine(0, 0, kTileSize - 1, 0);
    painter.drawLine(0, 0, 0, kTileSize - 1);
    painter.drawText(image.rect(), Qt::AlignCenter, QStringLiteral("%1/%2/%3").arg(tile.zoom).arg(tile.x).arg(tile.y));
    return image;
}

std::optional<TileId> parseTilePath(const QByteArray& path)
{
    const QList<QByteArray> parts = path.split('?').first().split('/');  // "", "tiles", z, x, "y.png"
    if (parts.size() != 5 || parts[1] != "tiles" || !parts[4].endsWith(".png"))
        return std::nullopt;
    return TileId{parts[2].toInt(), parts[3].toInt(), parts[4].chopped(4).toInt()};
}

LoopbackHttpServer::Response tileResponse(const QByteArray& path)
{
    const std::optional<TileId> tile = parseTilePath(path);
    if (!tile)
        return {404, "text/plain", {}};
    LoopbackHttpServer::Response response{200, "image/png", {}};
    QBuffer buffer(&response.body);
    buffer.open(QIODevice::WriteOnly);
    tileImage(*tile).save(&buffer, "PNG");
    return response;
}

QString tileTemplate(const QString& base) { return base + QStringLiteral("/tiles/{z}/{x}/{y}.png"); }
QString tileTemplate(const LoopbackHttpServer& server) { return tileTemplate(server.baseUrl()); }

QList<TileId> requestedTiles(const LoopbackHttpServer& server)
{
    QList<TileId> tiles;
    for (const auto& request : server.requests())
        tiles.append(parseTilePath(request.path).value_or(TileId{-1, -1, -1}));
    return tiles;
}

bool near(const QColor& a, const QColor& b, int tolerance)
{
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

// A shown 400 x 300 map on a tile source.
struct Map {
    TileMapView view;
    QSignalSpy settled{&view, &TileMapView::tilesSettled};

    explicit Map(const QString& source, const QString& cacheDirectory = {})
    {
        view.resize(kViewSize);
        view.setCacheDirectory(cacheDirectory);
        view.setTileUrlTemplate(source);
        view.show();
    }
    bool showAndSettle(double lat, double lon)
    {
        settled.clear();
        view.showCoordinate(lat, lon);
        return settled.wait(10000);
    }
};

void saveScreenshot(QWidget& widget, const char* name)
{
    QDir().mkpath(QStringLiteral(PELORIN_SCREENSHOT_DIR));
    QVERIFY(widget.grab().save(QStringLiteral(PELORIN_SCREENSHOT_DIR "/") + name));
}

}  // namespace

class TileMapTest : public QObject {
    Q_OBJECT
private slots:
    void tileMath();
    void requestsAndPaintsTheTilesInView();
    void diskCacheStandsInWhenOffline();
    void pinFollowsPanAndZoom();
    void offlineKeepsThePin_data();
    void offlineKeepsThePin();
    void noLocationBadInputAndWorldEdges();
    void limitsAndCancelsRequests();
};

void TileMapTest::tileMath()
{
    QCOMPARE(worldPixel(0, 0, 1), QPointF(256, 256));
    const QPointF farCorner = worldPixel(-89.0, 180, 3);  // clamped to the Mercator edge
    QVERIFY(std::abs(farCorner.x() - 2048) < 1e-6 && std::abs(farCorner.y() - 2048) < 1e-6);

    // Tile numbers at zoom 10, as a tile server numbers them.
    const struct { double lat, lon; int x, y; } places[] = {
        {52.52, 13.405, 550, 335}, {kSantiagoLat, kSantiagoLon, 311, 613}, {35.6762, 139.6503, 909, 403},
        {-33.8688, 151.2093, 942, 614}, {51.4779, -0.0015, 511, 340}, {40.7128, -74.006, 301, 385}};
    for (const auto& place : places) {
        QCOMPARE(tileAt(place.lat, place.lon, 10), (TileId{10, place.x, place.y}));
    }
    QCOMPARE(tileAt(0, 180, 10).x, 0);     // the world's east border is its west border
    QCOMPARE(tileAt(-89, 0, 10).y, 1023);  // clamped into the last row

    for (int zoom : {1, 10, 19})
        for (double lat : {-85.0, kSantiagoLat, 0.0, 47.3, 85.0})
            for (double lon : {-180.0, kSantiagoLon, 0.0, 139.65, 179.999}) {
                const QPointF back = coordinateAt(worldPixel(lat, lon, zoom), zoom);
                QVERIFY(std::abs(back.x() - lat) < 1e-9 && std::abs(back.y() - lon) < 1e-9);
            }

    // The chosen zoom fits the editor's span into the view; one level deeper does not.
    const double latSpan = 0.1255, lonSpan = 0.234;
    const auto fits = [&](double lat, int zoom, const QSize& view) {
        const QPointF a = worldPixel(lat + latSpan / 2, -lonSpan / 2, zoom), b = worldPixel(lat - latSpan / 2, lonSpan / 2, zoom);
        return b.x() - a.x() <= view.width() && b.y() - a.y() <= view.height();
    };
    const struct { double lat; QSize view; int zoom; } spans[] = {
        {kSantiagoLat, kViewSize, 11}, {0, kViewSize, 11}, {60, kViewSize, 10}, {kSantiagoLat, QSize(800, 600), 12}};
    for (const auto& c : spans) {
        QCOMPARE(zoomToFit(latSpan, lonSpan, c.lat, c.view), c.zoom);
        QVERIFY(fits(c.lat, c.zoom, c.view) && !fits(c.lat, c.zoom + 1, c.view));
    }
    QCOMPARE(zoomToFit(latSpan, lonSpan, 0, QSize()), kMinZoom);
    QCOMPARE(zoomToFit(qQNaN(), qQNaN(), qQNaN(), kViewSize), kMaxZoom);
    QCOMPARE(zoomToFit(170, 360, 0, kViewSize), kMinZoom);

    QCOMPARE(coordinateText(kSantiagoLat, kSantiagoLon), QStringLiteral("33.45000° S  70.66000° W"));
    QCOMPARE(coordinateText(-0.000001, 12.3456789), QStringLiteral("0.00000° N  12.34568° E"));
}

void TileMapTest::requestsAndPaintsTheTilesInView()
{
    LoopbackHttpServer server;
    server.handler = tileResponse;
    Map map(tileTemplate(server));
    map.view.setAttribution(QStringLiteral("© OpenStreetMap contributors"));
    QVERIFY(map.showAndSettle(kSantiagoLat, kSantiagoLon));
    QCOMPARE(map.view.zoom(), 11);
    QCOMPARE(map.view.pinPosition(), kViewCentre);
    QVERIFY(!map.view.isOffline());

    // Exactly the tiles under the view, each once, politely asked for.
    const QPointF pinWorld = worldPixel(kSantiagoLat, kSantiagoLon, 11);
    const QPoint origin = QPoint(qRound(pinWorld.x()), qRound(pinWorld.y())) - kViewCentre;
    QSet<TileId> expected;
    for (int y = origin.y() >> 8; y <= (origin.y() + kViewSize.height() - 1) >> 8; ++y)
        for (int x = origin.x() >> 8; x <= (origin.x() + kViewSize.width() - 1) >> 8; ++x)
            expected.insert({11, x, y});
    const QList<TileId> requested = requestedTiles(server);
    QCOMPARE(QSet<TileId>(requested.begin(), requested.end()), expected);
    QCOMPARE(requested.size(), expected.size());
    for (const auto& request : server.requests()) {
        QCOMPARE(request.headers.value("user-agent"),
                 QByteArray("QuorvanePelorin/" PELORIN_VERSION " (metadata editor; +https://www.quorvane.com)"));
        QVERIFY(!request.headers.contains("referer"));
    }

    // Every pixel outside the pin and the text bands is the pixel of the tile that lies there.
    const QImage shot = map.view.grab().toImage();
    QCOMPARE(shot.size(), kViewSize);
    const QRect pinBox(kViewCentre.x() - 14, kViewCentre.y() - 36, 28, 42);
    QHash<TileId, QImage> tiles;
    int mismatches = 0;
    for (int y = 0; y < kViewSize.height() - 30; ++y)
        for (int x = 0; x < kViewSize.width(); ++x) {
            const QPoint world = origin + QPoint(x, y);
            const TileId tile{11, world.x() >> 8, world.y() >> 8};
            if (!tiles.contains(tile))
                tiles.insert(tile, tileImage(tile));
            mismatches += !pinBox.contains(x, y) && shot.pixel(x, y) != tiles[tile].pixel(world.x() & 255, world.y() & 255);
        }
    QCOMPARE(mismatches, 0);
    saveScreenshot(map.view, "tile-map-online.png");

    // The same place again comes from memory.
    server.clearRequests();
    QVERIFY(map.showAndSettle(kSantiagoLat, kSantiagoLon));
    QCOMPARE(server.requests().size(), 0);

    // One missing tile in a loaded view is no reason to call the map unavailable.
    server.handler = [](const QByteArray& path) {
        return parseTilePath(path) == tileAt(kSantiagoLat, kSantiagoLon, 11) ? LoopbackHttpServer::Response{404, "", {}}
                                                                            : tileResponse(path);
    };
    map.view.setTileUrlTemplate(tileTemplate(server) + QStringLiteral("?v=2"));  // empties the memory cache
    QVERIFY(map.showAndSettle(kSantiagoLat, kSantiagoLon));
    QVERIFY(!map.view.isOffline());
}

void TileMapTest::diskCacheStandsInWhenOffline()
{
    QTemporaryDir cacheDir;
    auto server = std::make_unique<LoopbackHttpServer>();
    server->handler = tileResponse;
    const QString source = tileTemplate(*server);
    QImage online;
    {
        Map map(source, cacheDir.path());
        QVERIFY(map.showAndSettle(kSantiagoLat, kSantiagoLon));
        online = map.view.grab().toImage();
    }
    server.reset();  // the port now refuses connections
    Map map(source, cacheDir.path());
    QVERIFY(map.showAndSettle(kSantiagoLat, kSantiagoLon));
    QVERIFY(!map.view.isOffline());
    QCOMPARE(map.view.grab().toImage(), online);
}

void TileMapTest::pinFollowsPanAndZoom()
{
    Map map({});  // no tile source: the pin needs no tiles
    TileMapView& view = map.view;
    view.showCoordinate(kSantiagoLat, kSantiagoLon);
    QCOMPARE(view.pinPosition(), kViewCentre);
    QVERIFY(view.isOffline());

    view.panBy(QPoint(60, -40));
    QCOMPARE(view.pinPosition(), kViewCentre + QPoint(60, -40));
    const QPointF centre = coordinateAt(worldPixel(kSantiagoLat, kSantiagoLon, 11) - QPointF(60, -40), 11);
    QVERIFY(std::abs(view.centre().x() - centre.x()) < 1e-6 && std::abs(view.centre().y() - centre.y()) < 1e-6);

    QTest::mousePress(&view, Qt::LeftButton, {}, QPoint(100, 100));
    QMouseEvent move(QEvent::MouseMove, QPointF(130, 120), view.mapToGlobal(QPointF(130, 120)), Qt::NoButton,
                     Qt::LeftButton, {});
    QApplication::sendEvent(&view, &move);
    QTest::mouseRelease(&view, Qt::LeftButton, {}, QPoint(130, 120));
    QCOMPARE(view.pinPosition(), kViewCentre + QPoint(90, -20));

    // Zooming keeps the point under the pointer (or the centre) in place.
    QPoint pin;
    const auto zoomedAbout = [&](const QPoint& about, double factor) {
        const QPointF expected = QPointF(about) + QPointF(pin - about) * factor;
        return (view.pinPosition() - expected.toPoint()).manhattanLength() <= 2;
    };
    pin = view.pinPosition();
    view.setZoom(12);
    QVERIFY(zoomedAbout(kViewCentre, 2));

    pin = view.pinPosition();
    const QPoint pointer(320, 60);
    QWheelEvent halfNotch(pointer, view.mapToGlobal(pointer), {}, QPoint(0, 60), Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&view, &halfNotch);
    QCOMPARE(view.zoom(), 12);
    QApplication::sendEvent(&view, &halfNotch);
    QCOMPARE(view.zoom(), 13);
    QVERIFY(zoomedAbout(pointer, 2));

    pin = view.pinPosition();
    QTest::keyClick(&view, Qt::Key_Minus);
    QCOMPARE(view.zoom(), 12);
    QVERIFY(zoomedAbout(kViewCentre, 0.5));

    pin = view.pinPosition();
    QTest::mouseDClick(&view, Qt::LeftButton, {}, QPoint(150, 200));
    QCOMPARE(view.zoom(), 13);
    QVERIFY(zoomedAbout(QPoint(150, 200), 2));

    view.setZoom(40);
    QCOMPARE(view.zoom(), kMaxZoom);
    view.setZoom(-3);
    QCOMPARE(view.zoom(), kMinZoom);
}

void TileMapTest::offlineKeepsThePin_data()
{
    QTest::addColumn<QString>("failure");
    QTest::newRow("404") << "404";
    QTest::newRow("connection refused") << "refused";
    QTest::newRow("not an image") << "html";
}

void TileMapTest::offlineKeepsThePin()
{
    QFETCH(QString, failure);
    LoopbackHttpServer server;
    server.handler = [failure](const QByteArray&) {
        return failure == "html" ? LoopbackHttpServer::Response{200, "text/html", "<html>busy</html>"}
                                 : LoopbackHttpServer::Response{404, "text/plain", "no"};
    };
    QString base = server.baseUrl();
    if (failure == "refused") {
        QTcpServer closed;
        QVERIFY(closed.listen(QHostAddress::LocalHost));
        base = QStringLiteral("http://127.0.0.1:%1").arg(closed.serverPort());
    }
    Map map(tileTemplate(base));
    QVERIFY(map.showAndSettle(kSantiagoLat, kSantiagoLon));
    QVERIFY(map.view.isOffline());
    QVERIFY(map.view.hasPin());
    QCOMPARE(map.view.pinPosition(), kViewCentre);

    const QImage shot = map.view.grab().toImage();
    const QColor red(0xE8, 0x48, 0x3F);
    const QPoint tip = map.view.pinPosition();
    QVERIFY(near(shot.pixelColor(tip + QPoint(0, -29)), red, 8));  // head
    QVERIFY(near(shot.pixelColor(tip + QPoint(0, -5)), red, 8));   // just above the tip
    QVERIFY(near(shot.pixelColor(tip + QPoint(0, -23)), Qt::white, 8));
    QVERIFY(!near(shot.pixelColor(tip + QPoint(0, 3)), red, 60));  // nothing below the tip
    QVERIFY(near(shot.pixelColor(20, 80), kBackground, 12));
    if (failure == "404")
        saveScreenshot(map.view, "tile-map-offline.png");
}

void TileMapTest::noLocationBadInputAndWorldEdges()
{
    LoopbackHttpServer server;
    server.handler = tileResponse;
    Map map(tileTemplate(server));
    TileMapView& view = map.view;
    QVERIFY(!view.hasPin());
    saveScreenshot(view, "tile-map-no-location.png");
    const QImage empty = view.grab().toImage();
    QCOMPARE(empty.pixelColor(kViewCentre + QPoint(0, 60)), kBackground);
    int textPixels = 0;
    for (int x = 100; x < 300; ++x)
        textPixels += empty.pixelColor(x, 150) != kBackground;
    QVERIFY(textPixels > 0);  // "No location"

    for (const auto& [lat, lon] : {std::pair{qQNaN(), 0.0}, {0.0, 181.0}, {-90.5, 0.0}, {qInf(), 1.0}}) {
        view.showCoordinate(lat, lon);
        QVERIFY(!view.hasPin());
    }
    QCOMPARE(server.requests().size(), 0);

    // At the poles' edges and across the antimeridian only tiles of the world are asked for.
    for (const auto& [lat, lon] : {std::pair{89.9, 10.0}, {0.0, 179.99}, {-85.0, -179.99}}) {
        server.clearRequests();
        QVERIFY(map.showAndSettle(lat, lon));
        QCOMPARE(view.pinPosition(), kViewCentre);
        const QList<TileId> tiles = requestedTiles(server);
        QVERIFY(!tiles.isEmpty());
        for (const TileId& tile : tiles)
            QVERIFY(tile.x >= 0 && tile.y >= 0 && tile.x < (1 << tile.zoom) && tile.y < (1 << tile.zoom));
        if (std::abs(lon) > 179) {
            QVERIFY(std::any_of(tiles.begin(), tiles.end(), [](const TileId& t) { return t.x == 0; }));
            QVERIFY(std::any_of(tiles.begin(), tiles.end(), [](const TileId& t) { return t.x == (1 << t.zoom) - 1; }));
        }
    }
    view.showCoordinate(89.9, 0);
    QVERIFY(std::abs(view.centre().x() - kMaxLatitude) < 1e-6);

    view.clearPin();
    QVERIFY(!view.hasPin() && !view.isOffline());
}

void TileMapTest::limitsAndCancelsRequests()
{
    // A server that takes requests and never answers keeps them in flight.
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    QList<TileId> asked;
    int open = 0;
    connect(&silent, &QTcpServer::newConnection, this, [&] {
        while (QTcpSocket* socket = silent.nextPendingConnection()) {
            ++open;
            connect(socket, &QTcpSocket::readyRead, socket, [&asked, socket] {
                const QList<QByteArray> line = socket->readLine().split(' ');
                if (line.size() >= 2)
                    asked.append(parseTilePath(line[1]).value_or(TileId{-1, -1, -1}));
                socket->readAll();
            });
            connect(socket, &QTcpSocket::disconnected, socket, [&open] { --open; });
        }
    });

    auto map = std::make_unique<Map>(tileTemplate(QStringLiteral("http://127.0.0.1:%1").arg(silent.serverPort())));
    map->settled.clear();
    map->view.showCoordinate(kSantiagoLat, kSantiagoLon);
    QTRY_COMPARE(asked.size(), 2);
    QTest::qWait(300);
    QCOMPARE(asked.size(), 2);
    QCOMPARE(map->settled.count(), 0);
    QVERIFY(asked.contains(tileAt(kSantiagoLat, kSantiagoLon, 11)));  // the centre first

    // A small pan keeps the requests; a move to the other side of the world drops them.
    map->view.panBy(QPoint(20, 10));
    QTest::qWait(200);
    QCOMPARE(asked.size(), 2);
    QCOMPARE(open, 2);
    map->view.showCoordinate(35.6762, 139.6503);
    QTRY_COMPARE(asked.size(), 4);
    QTRY_COMPARE(open, 2);
    for (const TileId& tile : asked.mid(2))
        QVERIFY(std::abs(tile.x - tileAt(35.6762, 139.6503, 11).x) <= 1);
    map.reset();  // with requests in flight
    QTRY_COMPARE(open, 0);
}

QTEST_MAIN(TileMapTest)
#include "TileMapTest.moc"

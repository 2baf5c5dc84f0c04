// The media editors, maps and the update check inside the real window, on the offscreen
// platform, with tiles and the update document served from loopback.
#include "ExifTool.h"
#include "LoopbackHttpServer.h"
#include "TestPaths.h"
#include "WindowTestApp.h"
#include "app/AppDelegate.h"
#include "app/AudioEditorView.h"
#include "app/CommandMenus.h"
#include "app/DateActions.h"
#include "app/DesktopReveal.h"
#include "app/GpsDialog.h"
#include "app/ImportActions.h"
#include "app/ImportedItemsModel.h"
#include "app/InspectorPanel.h"
#include "app/MainWindow.h"
#include "app/MapWindow.h"
#include "app/MediaEditActions.h"
#include "app/MediaImporter.h"
#include "app/PhotoBrowserModel.h"
#include "app/UpdateActions.h"
#include "app/UpdateWindow.h"
#include "app/VideoEditorView.h"
#include "audio/AudioTagChanges.h"
#include "audio/AudioRecord.h"
#include "model/Preferences.h"
#include "ui/ArtworkWell.h"
#include "ui/FileDropViews.h"
#include "ui/HoverToolButton.h"
#include "ui/TileMapView.h"
#include "ui/WindowLook.h"

#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPainter>
#include <QProcess>
#include <QScrollArea>
#include <QPushButton>
#include <QSettings>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

using namespace pelorin;

namespace {

QString screenshotPath(const QString& name)
{
    QDir().mkpath(QStringLiteral(PELORIN_SCREENSHOT_DIR));
    return QStringLiteral(PELORIN_SCREENSHOT_DIR "/") + name;
}

// A 256 px tile whose colour tells its numbers apart, as a tile server would send it.
QByteArray tilePng(const QByteArray& path)
{
    QImage tile(256, 256, QImage::Format_RGB32);
    const quint32 hash = qHash(path);
    tile.fill(QColor(90 + hash % 80, 110 + (hash / 80) % 80, 100 + (hash / 6400) % 60));
    QPainter painter(&tile);
    painter.setPen(QColor(255, 255, 255, 90));
    painter.drawRect(0, 0, 255, 255);
    painter.drawText(tile.rect(), Qt::AlignCenter, QString::fromLatin1(path));
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    tile.save(&buffer, "PNG");
    return bytes;
}

// The ID3 frames of an MP3 as mutagen, an independent reader, lists them: "ID value" lines,
// pictures as their byte count and a checksum, people lists by their names (a writer may store
// them in another text encoding).
QStringList id3Frames(const QString& path)
{
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"),
                 {QStringLiteral("-c"), QStringLiteral("import sys, zlib\n"
                                                       "from mutagen.id3 import ID3\n"
                                                       "for k, v in sorted(ID3(sys.argv[1]).items()):\n"
                                                       "    if k.startswith('APIC'):\n"
                                                       "        print(k, len(v.data), zlib.crc32(v.data))\n"
                                                       "    elif hasattr(v, 'people'):\n"
                                                       "        print(k, v.people)\n"
                                                       "    else:\n"
                                                       "        print(k, str(v))\n"),
                  path});
    if (!python.waitForFinished(60000))
        return {};
    return QString::fromUtf8(python.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

}  // namespace

class MediaEditingTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir temp_;
    QString storage_;
    std::unique_ptr<test::LoopbackHttpServer> server_;
    std::unique_ptr<AppDelegate> app_;

    void importWithAddCommand(const QStringList& names)
    {
        QStringList paths;
        for (const QString& name : names)
            paths.append(test::dataPath(name));
        app_->panels.chooseFiles = [paths](QWidget*, const QString&, const QString&) { return paths; };
        app_->importActions()->AddMediaFileAction();
        app_->importer()->waitForDone();
    }

    int rowOf(const QString& name) const
    {
        for (int row = 0; row < app_->localPhotoItemArray()->rowCount(); ++row) {
            if (app_->localPhotoItemArray()->item(row).fileName == name)
                return row;
        }
        return -1;
    }

    // Selects the row in the media table and opens it as a user would, by a double click.
    void openInEditor(const QString& name)
    {
        MediaTableView* table = app_->window()->dragtableView;
        const QModelIndex index = app_->localPhotoItemArray()->index(rowOf(name), 0);
        QVERIFY(index.isValid());
        table->selectionModel()->select(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        table->scrollTo(index);
        const QPoint point = table->visualRect(index).center();
        // A real double click: the first click's press, then the double-click event.
        QTest::mousePress(table->viewport(), Qt::LeftButton, Qt::NoModifier, point);
        QTest::mouseRelease(table->viewport(), Qt::LeftButton, Qt::NoModifier, point);
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, point);
    }

    void waitForTiles(TileMapView* map)
    {
        QSignalSpy settled(map, &TileMapView::tilesSettled);
        settled.wait(3000);
        QTest::qWait(100);
    }

    void save()
    {
        QTest::mouseClick(app_->window()->SaveMediaChangesBtn, Qt::LeftButton);
        app_->runner()->waitForDone();
    }

    QString output(const QString& name) const { return storage_ + QLatin1Char('/') + name; }

private slots:
    void initTestCase()
    {
        prepareWindowTests();
        QVERIFY(temp_.isValid());
        server_ = std::make_unique<test::LoopbackHttpServer>();
        QVERIFY(server_->isListening());
        server_->handler = [](const QByteArray& path) {
            test::LoopbackHttpServer::Response response;
            if (path.startsWith("/tiles/")) {
                response.contentType = "image/png";
                response.body = tilePng(path);
            } else {
                response.status = 404;
            }
            return response;
        };
    }

    void init()
    {
        storage_ = temp_.filePath(QStringLiteral("storage-%1").arg(QTest::currentTestFunction()));
        QDir().mkpath(storage_);
        app_ = test::startTestWindow(
            temp_.filePath(QStringLiteral("%1.ini").arg(QTest::currentTestFunction())), storage_,
            {{DeploymentKey::MapTileUrl, server_->baseUrl() + QStringLiteral("/tiles/{z}/{x}/{y}.png")},
             {DeploymentKey::UpdateServer, server_->baseUrl()}});
        QVERIFY(app_);
    }

    void cleanup()
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (qobject_cast<QMessageBox*>(widget))
                widget->close();
        }
        app_.reset();
    }

    void audioTitleEditKeepsEveryOtherFrameAndPicture()
    {
        const QString name = QStringLiteral("atl-id3v23_utf16_apic.mp3");
        importWithAddCommand({name, QStringLiteral("ft-imovie.mp4")});
        openInEditor(name);
        AudioEditorView* editor = app_->mediaEdits()->audioView();
        QCOMPARE(app_->window()->rightStack->currentWidget(), editor);
        auto* title = editor->findChild<QLineEdit*>(QStringLiteral("titlelab"));
        QVERIFY(title);
        QCOMPARE(title->text(), app_->localPhotoItemArray()->item(rowOf(name)).fileTitle);
        title->selectAll();
        QTest::keyClicks(title, QStringLiteral("Harbour Song"));
        QCOMPARE(editor->changes().fields.keys(), QList<AudioField>{AudioField::Title});
        QTest::qWait(200);
        QVERIFY(app_->window()->grab().save(screenshotPath(QStringLiteral("audio-editor.png"))));
        save();

        const QString saved = output(name);
        QVERIFY(QFile::exists(saved));
        QStringList before = id3Frames(test::dataPath(name));
        QStringList after = id3Frames(saved);
        QVERIFY(!before.isEmpty());
        QVERIFY(after.contains(QStringLiteral("TIT2 Harbour Song")));
        before.removeIf([](const QString& line) { return line.startsWith(QLatin1String("TIT2 ")); });
        after.removeIf([](const QString& line) { return line.startsWith(QLatin1String("TIT2 ")); });
        QCOMPARE(after, before);  // both pictures and every other frame as they were
    }

    // The test machines have no sound device, where Qt's FFmpeg player used to crash on Play.
    // The window lives on, and an edit typed before pressing Play is still saved.
    void playWithoutSoundDeviceKeepsTheWindowAndTheEdit()
    {
        const QString song = QStringLiteral("atl-id3v23_utf16_apic.mp3");
        const QString movie = QStringLiteral("et-QuickTime.mov");
        importWithAddCommand({song, movie});
        for (const QString& name : {movie, song}) {
            openInEditor(name);
            QWidget* editor = app_->window()->rightStack->currentWidget();
            auto* play = editor->findChild<QToolButton*>(QStringLiteral("playPauseButton"));
            QVERIFY(play);
            QTest::mouseClick(play, Qt::LeftButton);
            QTest::qWait(1000);
            QVERIFY(app_->window()->isVisible());
        }
        auto* title = app_->mediaEdits()->audioView()->findChild<QLineEdit*>(QStringLiteral("titlelab"));
        title->selectAll();
        QTest::keyClicks(title, QStringLiteral("Played Silently"));
        QTest::mouseClick(app_->mediaEdits()->audioView()->findChild<QToolButton*>(QStringLiteral("playPauseButton")),
                          Qt::LeftButton);
        QTest::qWait(500);
        save();
        QVERIFY(id3Frames(output(song)).contains(QStringLiteral("TIT2 Played Silently")));
    }

    // The photo editor slides over the right pane; an editor asked for afterwards comes to the
    // front instead of opening behind it.
    void mediaEditorComesInFrontOfThePhotoEditor()
    {
        const QString song = QStringLiteral("atl-id3v23_utf16_apic.mp3");
        importWithAddCommand({song, QStringLiteral("et-QuickTime.mov")});
        app_->StartEditViewAction();
        QTRY_VERIFY(app_->window()->isEditorShown());
        openInEditor(song);
        QVERIFY(!app_->window()->isEditorShown());
        QCOMPARE(app_->window()->rightStack->currentWidget(), app_->mediaEdits()->audioView());
        QVERIFY(app_->mediaEdits()->audioView()->isVisible());
        app_->StartEditViewAction();
        openInEditor(QStringLiteral("et-QuickTime.mov"));
        QVERIFY(!app_->window()->isEditorShown());
        QVERIFY(app_->mediaEdits()->videoView()->isVisible());
    }

    void droppedArtworkIsWrittenOnSave()
    {
        const QString name = QStringLiteral("mutagen-no-tags.mp3");
        importWithAddCommand({name});
        openInEditor(name);
        ArtworkWell* well = app_->mediaEdits()->audioView()->artworkWell();
        QMimeData mime;
        mime.setUrls({QUrl::fromLocalFile(test::dataPath(QStringLiteral("exiv2-nikon-d70.jpg")))});
        QDragEnterEvent enter(well->rect().center(), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(well, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(QPointF(well->rect().center()), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(well, &drop);
        QVERIFY(well->hasPicture());
        QVERIFY(!app_->localPhotoItemArray()->item(rowOf(name)).fileImage.isNull());
        save();
        const QStringList frames = id3Frames(output(name));
        QFile jpeg(test::dataPath(QStringLiteral("exiv2-nikon-d70.jpg")));
        QVERIFY(jpeg.open(QIODevice::ReadOnly));
        const QByteArray bytes = jpeg.readAll();
        bool found = false;
        for (const QString& line : frames)
            found = found || (line.startsWith(QLatin1String("APIC")) && line.contains(QString::number(bytes.size())));
        QVERIFY2(found, qPrintable(frames.join(QLatin1Char('|'))));
    }

    void videoLocationEditShowsOnTheMapAndInTheFile()
    {
        const QString name = QStringLiteral("ft-imovie.mp4");
        importWithAddCommand({name});
        openInEditor(name);
        VideoEditorView* editor = app_->mediaEdits()->videoView();
        QCOMPARE(app_->window()->rightStack->currentWidget(), editor);
        auto* latitude = editor->findChild<QLineEdit*>(QStringLiteral("mediaLatitude"));
        auto* longitude = editor->findChild<QLineEdit*>(QStringLiteral("mediaLongtitude"));
        latitude->selectAll();
        QTest::keyClicks(latitude, QStringLiteral("-33.45"));
        longitude->selectAll();
        QTest::keyClicks(longitude, QStringLiteral("-70.66"));
        TileMapView* map = app_->mediaEdits()->videoMap();
        QVERIFY(map->hasPin());
        QVERIFY(std::abs(map->centre().x() + 33.45) < 1e-6);
        QVERIFY(std::abs(map->centre().y() + 70.66) < 1e-6);
        waitForTiles(map);
        QVERIFY(!map->isOffline());
        if (auto* scroll = editor->findChild<QScrollArea*>())
            scroll->ensureWidgetVisible(editor->mapArea());
        QTest::qWait(150);
        QVERIFY(app_->window()->grab().save(screenshotPath(QStringLiteral("window-video-editor-location.png"))));
        save();
        const QJsonObject tags = test::exiftool(output(name));
        QString coordinates;
        for (auto it = tags.begin(); it != tags.end(); ++it) {
            if (it.key().endsWith(QLatin1String(":GPSCoordinates")))
                coordinates = it.value().toVariant().toString();
        }
        QVERIFY2(coordinates.contains(QStringLiteral("-33.45")) && coordinates.contains(QStringLiteral("-70.66")),
                 qPrintable(coordinates));
    }

    void photoMapsFollowTheSelectedPhoto()
    {
        importWithAddCommand({QStringLiteral("et-GPS.jpg"), QStringLiteral("exiv2-nikon-d70.jpg")});
        PhotoBrowserView* browser = app_->window()->localImageBrowserView;
        const auto selectPhoto = [&](const QString& name) {
            for (int row = 0; row < app_->photoBrowserModel()->rowCount(); ++row) {
                const QModelIndex index = app_->photoBrowserModel()->index(row, 0);
                if (index.data().toString() == name)
                    browser->selectionModel()->select(index, QItemSelectionModel::ClearAndSelect);
            }
        };
        selectPhoto(QStringLiteral("et-GPS.jpg"));
        TileMapView* inspectorMap = app_->window()->inspector->map();
        QVERIFY(inspectorMap->isVisible() && inspectorMap->hasPin());
        QVERIFY(inspectorMap->centre().y() < 0);  // the photo was taken west of Greenwich
        app_->menus()->action(QStringLiteral("actionShowMap"))->trigger();
        MapWindow* mapWindow = app_->dateActions()->mapWindow();
        QVERIFY(mapWindow->isVisible());
        QCOMPARE(mapWindow->map()->centre(), inspectorMap->centre());

        selectPhoto(QStringLiteral("exiv2-nikon-d70.jpg"));
        QVERIFY(!inspectorMap->isVisible());
        app_->menus()->action(QStringLiteral("actionShowMap"))->trigger();  // hides the window
        QVERIFY(!mapWindow->isVisible());
        app_->menus()->action(QStringLiteral("actionShowMap"))->trigger();
        auto* alert = app_->window()->findChild<QMessageBox*>(QStringLiteral("alertSheet"));
        QVERIFY(alert && alert->isVisible());
        QCOMPARE(alert->text(), QStringLiteral("No GPS Data"));
    }

    void updateCheckFromTheHelpMenu()
    {
        const auto serve = [this](const QByteArray& version) {
            const QByteArray plist = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                                     "<key>lastestVersion</key><string>" + version + "</string>"
                                     "<key>WhatsNew</key><string>Faster imports.*A map in every editor.</string>"
                                     "</dict></plist>\n";
            server_->setResponse("/product/mediametaVersion.plist", {200, "application/xml", plist});
        };
        serve("99.1");
        app_->menus()->action(QStringLiteral("actionCheckForUpdates"))->trigger();
        UpdateWindow* update = app_->updates()->updateWindow();
        QTRY_VERIFY(update->isVisible());
        QCOMPARE(update->findChild<QLabel*>(QStringLiteral("newversionlab"))->text(),
                 QStringLiteral("Quorvane Pelorin 99.1 is available."));
        QVERIFY(update->grab().save(screenshotPath(QStringLiteral("update-window.png"))));
        update->hide();

        serve(PELORIN_VERSION);
        app_->menus()->action(QStringLiteral("actionCheckForUpdates"))->trigger();
        QTRY_VERIFY(app_->updates()->noUpdateWindow()->isVisible());
        QVERIFY(!update->isVisible());
    }

    void gpsDialogPreviewsOnItsMap()
    {
        importWithAddCommand({QStringLiteral("et-GPS.jpg")});
        app_->window()->localImageBrowserView->selectAll();
        app_->menus()->action(QStringLiteral("actionEditGps"))->trigger();
        GpsDialog* dialog = app_->dateActions()->gpsDialog();
        QVERIFY(dialog->isVisible());
        TileMapView* map = app_->dateActions()->previewMapView();
        QVERIFY(map->hasPin());
        auto* latitude = dialog->findChild<QLineEdit*>(QStringLiteral("latitudelab"));
        auto* longitude = dialog->findChild<QLineEdit*>(QStringLiteral("longtitudelab"));
        latitude->setText(QStringLiteral("36.4555"));
        longitude->setText(QStringLiteral("-116.8662"));
        QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("previewGpsButton")), Qt::LeftButton);
        QVERIFY(std::abs(map->centre().x() - 36.4555) < 1e-6);
        waitForTiles(map);
        QVERIFY(dialog->grab().save(screenshotPath(QStringLiteral("gps-dialog-map.png"))));
    }
};

QTEST_MAIN(MediaEditingTest)
#include "MediaEditingTest.moc"

// Drives the real main window on the offscreen platform: imports through the add command and
// drops, photo commands through the menus and dialogs, the preferences sheet, and screenshots.
#include "ExifTool.h"
#include "TestPaths.h"
#include "WindowTestApp.h"
#include "app/AppDelegate.h"
#include "app/BatchDateDialog.h"
#include "app/CommandMenus.h"
#include "app/DateActions.h"
#include "app/DateDialog.h"
#include "app/DesktopReveal.h"
#include "app/GpsDialog.h"
#include "app/PhotoEditorPanel.h"
#include "app/ImportActions.h"
#include "app/ImportedItemsModel.h"
#include "app/InspectorPanel.h"
#include "app/MainWindow.h"
#include "app/MediaImporter.h"
#include "app/PhotoBrowserModel.h"
#include "app/PreferencesDialog.h"
#include "app/TaskStatusBar.h"
#include "app/ThumbnailLoader.h"
#include "model/Preferences.h"
#include "model/PropertyList.h"
#include "ui/FileDropViews.h"
#include "ui/HoverToolButton.h"
#include "ui/WindowLook.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDBusConnection>
#include <QDir>
#include <QFile>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QProcess>
#include <QPushButton>
#include <QSettings>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>
#include <QtTest>

#include <unistd.h>

using namespace pelorin;

namespace {

const QStringList kPhotos = {QStringLiteral("et-GPS.jpg"), QStringLiteral("exiv2-nikon-d70.jpg"),
                             QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"), QStringLiteral("et-PNG.png")};
const QStringList kMedia = {QStringLiteral("et-MP3.mp3"), QStringLiteral("et-QuickTime.mov")};

QString screenshotPath(const QString& name)
{
    QDir().mkpath(QStringLiteral(PELORIN_SCREENSHOT_DIR));
    return QStringLiteral(PELORIN_SCREENSHOT_DIR "/") + name;
}

void saveScreenshot(QWidget* widget, const QString& name)
{
    QApplication::processEvents();
    QTest::qWait(250);
    QVERIFY(widget->grab().save(screenshotPath(name)));
}

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

QStringList dataFiles(const QStringList& names)
{
    QStringList paths;
    for (const QString& name : names)
        paths.append(test::dataPath(name));
    return paths;
}

// Sends a drag over the view's viewport and, when it is taken, the drop; answers whether the
// view took it.
bool dropFiles(QWidget* view, const QStringList& paths)
{
    QMimeData mime;
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path));
    mime.setUrls(urls);
    QWidget* target = view;
    if (auto* area = qobject_cast<QAbstractScrollArea*>(view))
        target = area->viewport();
    const QPoint point = target->rect().center();
    QDragEnterEvent enter(point, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent drop(QPointF(point), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &drop);
    return drop.isAccepted();
}

}  // namespace

class MainWindowTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir temp_;
    QString storage_;
    std::unique_ptr<AppDelegate> app_;

    void startApp(const QString& settingsFile)
    {
        app_ = test::startTestWindow(settingsFile, storage_);
        QVERIFY(app_);
    }

    void importWithAddCommand(const QStringList& paths)
    {
        app_->panels.chooseFiles = [paths](QWidget*, const QString& message, const QString&) {
            return message == QLatin1String("Please select videos or auidos to import.") ? paths : QStringList();
        };
        app_->importActions()->AddMediaFileAction();
        app_->importer()->waitForDone();
    }

    // Selects the photos of the browser with these file names.
    void selectPhotos(const QStringList& names)
    {
        PhotoBrowserView* view = app_->window()->localImageBrowserView;
        QItemSelection selection;
        for (int row = 0; row < app_->photoBrowserModel()->rowCount(); ++row) {
            const QModelIndex index = app_->photoBrowserModel()->index(row, 0);
            if (names.contains(index.data().toString()))
                selection.select(index, index);
        }
        view->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
        QCOMPARE(app_->currentPhotoSelection().items.size(), names.size());
    }

    void trigger(const QString& actionName)
    {
        QAction* action = app_->menus()->action(actionName);
        QVERIFY2(action, qPrintable(actionName));
        action->trigger();
        app_->runner()->waitForDone();
    }

    QString output(const QString& name) const { return storage_ + QLatin1Char('/') + name; }

    QString runCli(const QStringList& arguments, const QString& outputFolder)
    {
        QProcess cli;
        cli.start(QStringLiteral(PELORIN_CLI_PATH), QStringList{QStringLiteral("--output"), outputFolder} + arguments);
        if (!cli.waitForFinished(60000))
            return QStringLiteral("timeout");
        return cli.exitCode() == 0 ? QString() : QString::fromUtf8(cli.readAllStandardError());
    }

    QMessageBox* visibleAlert() const
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* box = qobject_cast<QMessageBox*>(widget); box && box->isVisible() &&
                                                               box->objectName() == QLatin1String("alertSheet"))
                return box;
        }
        return nullptr;
    }

    // A folder of thousands of photos, songs and movies (hard links to the samples) in nested
    // sub-folders, with a text file that no import takes; answers the paths an import must give,
    // in order.
    QStringList makeBigFolder(const QString& folder, int count)
    {
        const QStringList sources = dataFiles(kPhotos + kMedia + QStringList{QStringLiteral("beets-image.flac")});
        QStringList expected;
        for (int i = 0; i < count; ++i) {
            const QString sub = folder + QStringLiteral("/part %1").arg(i / 400, 2, 10, QLatin1Char('0'));
            QDir().mkpath(sub);
            const QString source = sources.at(i % sources.size());
            const QString path = sub + QStringLiteral("/%1-%2").arg(i, 5, 10, QLatin1Char('0')).arg(QFileInfo(source).fileName());
            if (::link(QFile::encodeName(source).constData(), QFile::encodeName(path).constData()) != 0 &&
                !QFile::copy(source, path))
                return {};
            expected.append(path);
        }
        QFile note(folder + QStringLiteral("/part 00/00000-notes.txt"));
        if (!note.open(QIODevice::WriteOnly) || note.write("not media") != 9)
            return {};
        return expected;
    }

    QStringList importedPaths() const
    {
        QStringList paths;
        for (const IKImageItem& record : app_->localPhotoItemArray()->items())
            paths.append(record.filePath);
        return paths;
    }

private slots:
    void initTestCase()
    {
        prepareWindowTests();
        QVERIFY(temp_.isValid());
    }

    void init()
    {
        storage_ = temp_.filePath(QStringLiteral("storage-%1").arg(QTest::currentTestFunction()));
        QDir().mkpath(storage_);
        startApp(temp_.filePath(QStringLiteral("%1.ini").arg(QTest::currentTestFunction())));
    }

    void cleanup()
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (qobject_cast<QMessageBox*>(widget))
                widget->close();
        }
        app_.reset();
    }

    void startsWithHintAndDefaultsWritten()
    {
        QCOMPARE(AppDelegate::GetAppDelegater(), app_.get());
        QCOMPARE(app_->window()->leftStack->currentWidget(), app_->window()->hintView);
        QSettings settings(temp_.filePath(QStringLiteral("startsWithHintAndDefaultsWritten.ini")), QSettings::IniFormat);
        QCOMPARE(settings.value(QStringLiteral("fontName")).toString(), QStringLiteral("Lucida Grande"));
        QCOMPARE(settings.value(QStringLiteral("Postion")).toString(), QStringLiteral("lower left corner"));
        QVERIFY(!settings.contains(QStringLiteral("fontsize")));
    }

    // At the smallest window every picture button shows its whole label, and the media table's
    // text columns are as wide as their texts (up to their cap).
    void labelsAndColumnsAreWholeAtTheMinimumSize()
    {
        importWithAddCommand(dataFiles(kMedia));
        app_->window()->resize(app_->window()->minimumSize());
        QTest::qWait(100);
        for (HoverToolButton* button : app_->window()->findChildren<HoverToolButton*>()) {
            if (button->isVisible())
                QVERIFY2(button->width() >= button->sizeHint().width(), qPrintable(button->objectName()));
        }
        MediaTableView* table = app_->window()->dragtableView;
        const QFontMetrics metrics(table->font());
        for (int row = 0; row < app_->localPhotoItemArray()->rowCount(); ++row) {
            const QString name = app_->localPhotoItemArray()->item(row).fileName;
            QVERIFY2(table->columnWidth(ImportedItemsModel::Name) >= metrics.horizontalAdvance(name), qPrintable(name));
            const QString kind = table->model()->index(row, ImportedItemsModel::Kind).data().toString();
            QVERIFY2(table->columnWidth(ImportedItemsModel::Kind) >= metrics.horizontalAdvance(kind), qPrintable(kind));
        }
    }

    // Where nothing can show the files (no file manager on the bus, no desktop opener), the
    // reveal says so instead of pretending.
    void revealWithoutFileManagerSaysWhereTheFilesAre()
    {
        const QByteArray path = qgetenv("PATH");
        const QByteArray bus = qgetenv("DBUS_SESSION_BUS_ADDRESS");
        qputenv("PATH", "/nonexistent");
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
        DesktopReveal::setEnabled(true);
        const bool shown = DesktopReveal::showFiles({output(QStringLiteral("x.jpg"))});
        DesktopReveal::setEnabled(false);
        qputenv("PATH", path);
        if (bus.isEmpty())
            qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        else
            qputenv("DBUS_SESSION_BUS_ADDRESS", bus);
        if (QDBusConnection::sessionBus().isConnected())
            QSKIP("a session bus was already connected in this process");
        QVERIFY(!shown);
    }

    // Photos that name their author show it in the media table's Artist column, from EXIF,
    // IPTC or XMP as exiftool wrote it.
    void photosShowTheirArtist()
    {
        const QStringList tags{QStringLiteral("-Artist=Ansel Adams"), QStringLiteral("-IPTC:By-line=Dorothea Lange"),
                               QStringLiteral("-XMP-dc:Creator=Vivian Maier")};
        QStringList paths;
        for (int i = 0; i < tags.size(); ++i) {
            const QString path = temp_.filePath(QStringLiteral("artist-%1.jpg").arg(i));
            QFile::remove(path);
            QVERIFY(QFile::copy(test::dataPath(QStringLiteral("exiv2-nikon-d70.jpg")), path));
            QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
            QVERIFY(test::exiftoolWrite(path, {QStringLiteral("-all="), tags[i]}));
            paths.append(path);
        }
        importWithAddCommand(paths);
        const QStringList expected{QStringLiteral("Ansel Adams"), QStringLiteral("Dorothea Lange"), QStringLiteral("Vivian Maier")};
        QCOMPARE(app_->localPhotoItemArray()->rowCount(), 3);
        for (int row = 0; row < 3; ++row) {
            const QModelIndex cell = app_->localPhotoItemArray()->index(row, ImportedItemsModel::Artist);
            const int which = app_->localPhotoItemArray()->item(row).fileName.mid(7, 1).toInt();
            QCOMPARE(cell.data().toString(), expected[which]);
        }
    }

    void addCommandAndDropsFillBothViews()
    {
        importWithAddCommand(dataFiles(kPhotos + kMedia));
        // The shared list holds everything in the order chosen; the browser shows photos and movies.
        QCOMPARE(app_->localPhotoItemArray()->rowCount(), kPhotos.size() + kMedia.size());
        QCOMPARE(app_->localPhotoItemArray()->item(4).fileName, QStringLiteral("et-MP3.mp3"));
        QCOMPARE(app_->photoBrowserModel()->rowCount(), kPhotos.size() + 1);
        QCOMPARE(app_->window()->leftStack->currentWidget(), app_->window()->localImageBrowserView);
        QVERIFY(!app_->localPhotoItemArray()->item(5).fileduratStr.isEmpty());

        // A drag whose first file is audio is refused by the browser and taken by the media table.
        const QString mp3 = test::dataPath(QStringLiteral("mutagen-no-tags.mp3"));
        const QString jpg = test::dataPath(QStringLiteral("pil-iptc_NokiaN70.jpg"));
        QVERIFY(!dropFiles(app_->window()->localImageBrowserView, {mp3, jpg}));
        QVERIFY(dropFiles(app_->window()->localImageBrowserView, {jpg, mp3}));
        app_->importer()->waitForDone();
        QCOMPARE(app_->localPhotoItemArray()->rowCount(), 7);  // the mp3 of the photo drop is filtered
        QCOMPARE(app_->currentPhotoSelection().items.size(), 1);
        QCOMPARE(app_->currentPhotoSelection().items.first().filePath, jpg);

        QVERIFY(!dropFiles(app_->window()->dragtableView, {jpg}));
        QVERIFY(dropFiles(app_->window()->dragtableView, {mp3}));
        app_->importer()->waitForDone();
        QCOMPARE(app_->localPhotoItemArray()->rowCount(), 8);
        QCOMPARE(app_->localPhotoItemArray()->items().last().filePath, mp3);

        // Removing from the list leaves the files alone; in camera mode nothing is removed.
        app_->ChangeToImportiOSDevicePhoto();
        app_->importActions()->ClearSelectedLeftPhotos();
        QCOMPARE(app_->localPhotoItemArray()->rowCount(), 8);
        app_->ChangeToImportComputerPhoto();
        app_->importActions()->ClearSelectedLeftPhotos();
        QCOMPARE(app_->localPhotoItemArray()->rowCount(), 7);
        QVERIFY(QFile::exists(jpg));
    }

    void inspectorShowsSelectedPhoto()
    {
        importWithAddCommand(dataFiles(kPhotos));
        selectPhotos({QStringLiteral("et-GPS.jpg")});
        QTreeWidget* tree = app_->window()->inspector->tree();
        QStringList groups;
        for (int i = 0; i < tree->topLevelItemCount(); ++i)
            groups.append(tree->topLevelItem(i)->text(0));
        QVERIFY2(groups.contains(QStringLiteral("GPS")), qPrintable(groups.join(',')));
        QVERIFY(app_->currentExifDictionary.contains(QStringLiteral("{GPS}")));
        QCOMPARE(app_->currentFileName, QStringLiteral("et-GPS.jpg"));
        app_->waitForThumbnails();
        saveScreenshot(app_->window(), QStringLiteral("main-window.png"));
        app_->StartEditViewAction();
        QTest::qWait(400);
        QVERIFY(app_->window()->isEditorShown());
        saveScreenshot(app_->window(), QStringLiteral("main-window-editor.png"));
    }

    void removalFromMenuMatchesCommandLine()
    {
        importWithAddCommand(dataFiles(kPhotos));
        selectPhotos({QStringLiteral("et-GPS.jpg"), QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg")});
        trigger(QStringLiteral("actionRemove1"));  // Remove GPS
        for (const QString& name : {QStringLiteral("et-GPS.jpg"), QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg")}) {
            QVERIFY2(QFile::exists(output(name)), qPrintable(name));
            QVERIFY(test::tagsOf(test::exiftool(output(name)), {QStringLiteral("GPS")}).isEmpty());
            QVERIFY(!test::tagsOf(test::exiftool(output(name)), {QStringLiteral("IFD0")}).isEmpty());
        }
        QVERIFY(app_->window()->taskStatus->summaryText().contains(QStringLiteral("Wrote 2 files")));
        QVERIFY(!DesktopReveal::recordedRequests().isEmpty());

        // The command-line twin writes the same bytes.
        const QString cliFolder = temp_.filePath(QStringLiteral("cli-strip"));
        QCOMPARE(runCli({QStringLiteral("strip"), QStringLiteral("gps"), test::dataPath(QStringLiteral("et-GPS.jpg"))},
                        cliFolder),
                 QString());
        QFile gui(output(QStringLiteral("et-GPS.jpg")));
        QFile cli(cliFolder + QStringLiteral("/et-GPS.jpg"));
        QVERIFY(gui.open(QIODevice::ReadOnly) && cli.open(QIODevice::ReadOnly));
        QCOMPARE(gui.readAll(), cli.readAll());
    }

    void menuCommandsMatchTheirCommandLineTwins_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QStringList>("cli");
        QTest::addColumn<QStringList>("outputs");
        const QStringList both = {QStringLiteral("et-GPS.jpg"), QStringLiteral("exiv2-nikon-d70.jpg")};
        QTest::newRow("strip exif") << "actionRemove0" << QStringList{"strip", "exif"} << both;
        QTest::newRow("strip iptc") << "actionRemove2" << QStringList{"strip", "iptc"} << both;
        QTest::newRow("strip all") << "actionRemove4" << QStringList{"strip", "all"} << both;
        QTest::newRow("name to comment") << "actionDateCopy1" << QStringList{"copy-date", "name-to-comment"} << both;
        QTest::newRow("date to file dates") << "actionDateCopy0" << QStringList{"copy-date", "exif-to-created"} << both;
        QTest::newRow("small copies") << "actionSmallCopies" << QStringList{"recompress"}
                                      << QStringList{"et-GPS_date.jpg", "exiv2-nikon-d70_date.jpg"};
        QTest::newRow("stamp") << "actionStampDates"
                               << QStringList{"stamp", "--font", "Lucida Grande", "--size", "14", "--color", "#ffffff",
                                              "--corner", "Lower left corner", "--format", "MM/DD/YYYY HH:MM"}
                               << QStringList{"et-GPS_date.jpg", "exiv2-nikon-d70_date.jpg"};
        QTest::newRow("export all") << "actionExport4" << QStringList{"export-plist", "all"}
                                    << QStringList{"ExportAllMetadataInfo.plist"};
    }

    void menuCommandsMatchTheirCommandLineTwins()
    {
        QFETCH(QString, action);
        QFETCH(QStringList, cli);
        QFETCH(QStringList, outputs);
        const QStringList names = {QStringLiteral("et-GPS.jpg"), QStringLiteral("exiv2-nikon-d70.jpg")};
        importWithAddCommand(dataFiles(names));
        selectPhotos(names);
        trigger(action);
        const QString cliFolder = temp_.filePath(QStringLiteral("cli-") + QTest::currentDataTag());
        QCOMPARE(runCli(cli + dataFiles(names), cliFolder), QString());
        for (const QString& name : outputs) {
            QFile gui(output(name));
            QFile twin(cliFolder + QLatin1Char('/') + name);
            QVERIFY2(gui.open(QIODevice::ReadOnly), qPrintable(name));
            QVERIFY2(twin.open(QIODevice::ReadOnly), qPrintable(name));
            QVERIFY2(gui.readAll() == twin.readAll(), qPrintable(name + QStringLiteral(" differs")));
            // Commands that date their outputs (by the capture date) date both the same.
            if (action == QLatin1String("actionDateCopy0") || cli.first() == QLatin1String("recompress"))
                QCOMPARE(QFileInfo(gui).lastModified(), QFileInfo(twin).lastModified());
        }
    }

    void cancelKeepsFinishedOutputsAndLeavesNoPartialOne()
    {
        const QString folder = temp_.filePath(QStringLiteral("to-cancel"));
        QDir().mkpath(folder);
        QStringList names;
        for (int i = 0; i < 300; ++i) {
            names.append(QStringLiteral("%1.jpg").arg(i, 3, 10, QLatin1Char('0')));
            QVERIFY(QFile::copy(test::dataPath(QStringLiteral("exiv2-nikon-d70.jpg")), folder + QLatin1Char('/') + names.last()));
        }
        app_->panels.chooseFolder = [folder](QWidget*, const QString&) { return folder; };
        trigger(QStringLiteral("actionImportFolder"));
        app_->importer()->waitForDone();
        app_->window()->localImageBrowserView->selectAll();
        app_->menus()->action(QStringLiteral("actionRemove4"))->trigger();
        QVERIFY(app_->runner()->isBusy());
        auto* cancel = app_->window()->taskStatus->findChild<QPushButton*>(QStringLiteral("taskCancelButton"));
        QVERIFY(cancel && cancel->isVisible());
        QTest::mouseClick(cancel, Qt::LeftButton);
        app_->runner()->waitForDone();
        QVERIFY2(app_->window()->taskStatus->summaryText().contains(QStringLiteral("(cancelled)")),
                 qPrintable(app_->window()->taskStatus->summaryText()));
        // Whatever was finished is whole; nothing half-written or temporary is left behind.
        const QStringList written = QDir(storage_).entryList(QDir::Files | QDir::Hidden);
        QVERIFY(written.size() < 300);
        for (const QString& name : written) {
            QVERIFY2(names.contains(name), qPrintable(name));
            QVERIFY(!QImage(storage_ + QLatin1Char('/') + name).isNull());
        }
    }

    void noSelectionRaisesTheAlert()
    {
        importWithAddCommand(dataFiles(kPhotos));
        trigger(QStringLiteral("actionRemove4"));
        QMessageBox* alert = visibleAlert();
        QVERIFY(alert);
        QCOMPARE(alert->text(), QStringLiteral("No Item has been selected"));
        QCOMPARE(alert->informativeText(), QStringLiteral("Please select at least one item to process."));
        QCOMPARE(alert->buttons().size(), 1);
        QCOMPARE(alert->buttons().first()->text(), QStringLiteral(" Ok "));
        QVERIFY(QDir(storage_).entryList(QDir::Files).isEmpty());
    }

    void dateDialogSavesOnePhoto()
    {
        importWithAddCommand(dataFiles(kPhotos));
        selectPhotos({QStringLiteral("exiv2-nikon-d70.jpg")});
        trigger(QStringLiteral("actionChangeDate"));
        DateDialog* dialog = app_->dateActions()->dateDialog();
        QVERIFY(dialog->isVisible());
        auto* original = dialog->findChild<QLineEdit*>(QStringLiteral("orignalDatelab"));
        auto* digitized = dialog->findChild<QLineEdit*>(QStringLiteral("diginalDatelab"));
        QVERIFY(original && digitized);
        QVERIFY(!original->text().isEmpty());
        saveScreenshot(dialog, QStringLiteral("main-window-date-dialog.png"));

        // A text that is no date: the alert over the dialog, nothing written, the dialog stays.
        original->setText(QStringLiteral("yesterday"));
        QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("dateSaveButton")), Qt::LeftButton);
        app_->runner()->waitForDone();
        QVERIFY(visibleAlert());
        QCOMPARE(visibleAlert()->text(), QStringLiteral("Invalid date format"));
        visibleAlert()->close();
        QVERIFY(dialog->isVisible());
        QVERIFY(!QFile::exists(output(QStringLiteral("exiv2-nikon-d70.jpg"))));

        original->setText(QStringLiteral("2015-06-01 10:00:00"));
        digitized->setText(QStringLiteral("2015:06:01 10:00:05"));
        QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("dateSaveButton")), Qt::LeftButton);
        app_->runner()->waitForDone();
        QVERIFY(!dialog->isVisible());
        const QJsonObject tags = test::exiftool(output(QStringLiteral("exiv2-nikon-d70.jpg")));
        QCOMPARE(tags.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("2015:06:01 10:00:00"));
        QCOMPARE(tags.value(QStringLiteral("ExifIFD:CreateDate")).toString(), QStringLiteral("2015:06:01 10:00:05"));
        QCOMPARE(QFileInfo(output(QStringLiteral("exiv2-nikon-d70.jpg"))).lastModified(),
                 QDateTime(QDate(2015, 6, 1), QTime(10, 0, 0)));
    }

    void batchDialogShiftsSeveralPhotos()
    {
        importWithAddCommand(dataFiles(kPhotos));
        const QStringList names = {QStringLiteral("exiv2-nikon-d70.jpg"), QStringLiteral("et-GPS.jpg")};
        selectPhotos(names);
        // With several photos the date command opens the batch dialog.
        trigger(QStringLiteral("actionChangeDate"));
        BatchDateDialog* dialog = app_->dateActions()->batchDialog();
        QVERIFY(dialog->isVisible());
        dialog->findChild<QLineEdit*>(QStringLiteral("dayVaulab"))->setText(QStringLiteral("1"));
        dialog->findChild<QLineEdit*>(QStringLiteral("hourVaulab"))->setText(QStringLiteral("2"));
        QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("AddTimeBtn")), Qt::LeftButton);
        saveScreenshot(dialog, QStringLiteral("main-window-batch-dialog.png"));
        QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("mutiDateSaveButton")), Qt::LeftButton);
        app_->runner()->waitForDone();
        QVERIFY(!dialog->isVisible());
        for (const QString& name : names) {
            const QString before =
                test::exiftool(test::dataPath(name)).value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString();
            const QString after = test::exiftool(output(name)).value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString();
            const QDateTime was = QDateTime::fromString(before, QStringLiteral("yyyy:MM:dd HH:mm:ss"));
            const QDateTime now = QDateTime::fromString(after, QStringLiteral("yyyy:MM:dd HH:mm:ss"));
            QVERIFY2(was.isValid() && now.isValid(), qPrintable(name + ": " + before + " -> " + after));
            QCOMPARE(was.secsTo(now), 26 * 3600);
        }
        // The fields are cleared for the next run.
        QVERIFY(dialog->findChild<QLineEdit*>(QStringLiteral("dayVaulab"))->text().isEmpty());
    }

    void gpsDialogEditorAndTemplateWrite()
    {
        importWithAddCommand(dataFiles(kPhotos));
        selectPhotos({QStringLiteral("exiv2-nikon-d70.jpg")});
        // A photo without a location has none to edit.
        trigger(QStringLiteral("actionEditGps"));
        QVERIFY(visibleAlert());
        QCOMPARE(visibleAlert()->text(), QStringLiteral("No GPS Data"));
        visibleAlert()->close();

        trigger(QStringLiteral("actionAddGps"));
        GpsDialog* gps = app_->dateActions()->gpsDialog();
        QVERIFY(gps->isVisible());
        const QList<std::pair<const char*, const char*>> typed = {{"latitudelab", "-33.45"},
                                                                  {"longtitudelab", "-70.66"},
                                                                  {"altitudelab", "-5"},
                                                                  {"dateStamplab", "2014:05:01"},
                                                                  {"timeStamplab", "10:20:30"}};
        for (const auto& [field, text] : typed)
            QTest::keyClicks(gps->findChild<QLineEdit*>(QLatin1String(field)), QLatin1String(text));
        QTest::mouseClick(gps->findChild<QPushButton*>(QStringLiteral("gpsSaveButton")), Qt::LeftButton);
        app_->runner()->waitForDone();
        QVERIFY(!gps->isVisible());
        const QJsonObject located = test::exiftool(output(QStringLiteral("exiv2-nikon-d70.jpg")));
        QCOMPARE(located.value(QStringLiteral("GPS:GPSLatitudeRef")).toString(), QStringLiteral("S"));
        QCOMPARE(located.value(QStringLiteral("GPS:GPSLongitudeRef")).toString(), QStringLiteral("W"));
        QVERIFY(std::abs(located.value(QStringLiteral("GPS:GPSLatitude")).toDouble() - 33.45) < 1e-4);
        QCOMPARE(located.value(QStringLiteral("GPS:GPSAltitudeRef")).toInt(), 1);

        // The editor writes only what was typed; its template applies to another photo.
        app_->StartEditViewAction();
        auto* title = app_->window()->photoEditorView->findChild<QLineEdit*>(QStringLiteral("titleField"));
        title->clear();
        QTest::keyClicks(title, QStringLiteral("Harbour at dawn"));
        auto* latitude = app_->window()->photoEditorView->findChild<QLineEdit*>(QStringLiteral("gpsLatitudeField"));
        latitude->clear();
        QTest::keyClicks(latitude, QStringLiteral("-34.5"));
        QTest::mouseClick(app_->window()->photoEditorView->button(QStringLiteral("editApplyBtn")), Qt::LeftButton);
        app_->runner()->waitForDone();
        const QJsonObject edited = test::exiftool(output(QStringLiteral("exiv2-nikon-d70.jpg")));
        QCOMPARE(edited.value(QStringLiteral("IPTC:ObjectName")).toString(), QStringLiteral("Harbour at dawn"));
        // The editor's save builds on the GPS save: both are in the record's working copy, and
        // the location keeps what was not typed over.
        QCOMPARE(edited.value(QStringLiteral("GPS:GPSLatitudeRef")).toString(), QStringLiteral("S"));
        QVERIFY(std::abs(edited.value(QStringLiteral("GPS:GPSLatitude")).toDouble() - 34.5) < 1e-4);
        QVERIFY(std::abs(edited.value(QStringLiteral("GPS:GPSLongitude")).toDouble() - 70.66) < 1e-4);
        QCOMPARE(edited.value(QStringLiteral("GPS:GPSAltitudeRef")).toInt(), 1);
        QCOMPARE(edited.value(QStringLiteral("GPS:GPSTimeStamp")).toString(), QStringLiteral("10:20:30"));

        QTest::mouseClick(app_->window()->photoEditorView->button(QStringLiteral("editTemplateBtn")), Qt::LeftButton);
        app_->runner()->waitForDone();
        const QString templateFile = output(QStringLiteral("templatefile.plist"));
        QVERIFY(QFile::exists(templateFile));
        selectPhotos({QStringLiteral("et-PNG.png")});
        app_->panels.chooseFile = [templateFile](QWidget*, const QString&, const QString&) { return templateFile; };
        trigger(QStringLiteral("actionImport5"));
        QCOMPARE(test::exiftool(output(QStringLiteral("et-PNG.png"))).value(QStringLiteral("IPTC:ObjectName")).toString(),
                 QStringLiteral("Harbour at dawn"));
    }

    // A phone's HEIC is edited like a JPEG: the removal and the editor's fields land in the file
    // itself, with no sidecar, and the inspector shows the written values.
    void heicEditsAreWrittenIntoTheFile()
    {
        const QString heic = QStringLiteral("exiv2-iPhoneXR_orient6.heic");
        importWithAddCommand(dataFiles({heic, QStringLiteral("exiv2-avif_exif_xmp.avif"), QStringLiteral("exiv2-Sony_ILCE-1.HIF")}));
        QCOMPARE(app_->photoBrowserModel()->rowCount(), 3);  // AVIF and Sony's HIF are photos too
        app_->waitForThumbnails();
        selectPhotos({heic});
        trigger(QStringLiteral("actionRemove1"));  // Remove GPS
        app_->runner()->waitForDone();
        QVERIFY(test::tagsOf(test::exiftool(output(heic)), {QStringLiteral("GPS")}).isEmpty());

        app_->StartEditViewAction();
        auto* title = app_->window()->photoEditorView->findChild<QLineEdit*>(QStringLiteral("titleField"));
        title->clear();
        QTest::keyClicks(title, QStringLiteral("Harbour at dawn"));
        QTest::mouseClick(app_->window()->photoEditorView->button(QStringLiteral("editApplyBtn")), Qt::LeftButton);
        app_->runner()->waitForDone();
        const QJsonObject edited = test::exiftool(output(heic));
        QCOMPARE(edited.value(QStringLiteral("XMP-dc:Title")).toString(), QStringLiteral("Harbour at dawn"));
        QCOMPARE(edited.value(QStringLiteral("IFD0:Model")).toString(), QStringLiteral("iPhone XR"));
        QVERIFY(QDir(storage_).entryList({QStringLiteral("*.xmp")}).isEmpty());
        QTest::qWait(300);
        saveScreenshot(app_->window(), QStringLiteral("main-window-heic-edited.png"));
        // The inspector shows what the working copy now holds.
        QTreeWidget* tree = app_->window()->inspector->tree();
        const QList<QTreeWidgetItem*> titles = tree->findItems(QStringLiteral("Harbour at dawn"), Qt::MatchRecursive | Qt::MatchExactly, 1);
        QVERIFY(!titles.isEmpty());
        QVERIFY(tree->findItems(QStringLiteral("GPS"), Qt::MatchExactly, 0).isEmpty());
        app_->window()->inspector->resize(600, 700);
        titles.first()->setSelected(true);
        tree->scrollToItem(titles.first());
        saveScreenshot(app_->window()->inspector, QStringLiteral("main-window-heic-inspector.png"));
    }

    // In the window a record's edits build on each other through its working copy; the
    // imported file stays as it was and Revert to Original starts again from it.
    void editsBuildOnTheWorkingCopy()
    {
        importWithAddCommand(dataFiles(kPhotos));
        const QString name = QStringLiteral("et-GPS.jpg");
        const QByteArray originalBytes = fileBytes(test::dataPath(name));
        const QJsonObject original = test::exiftool(test::dataPath(name));
        QVERIFY(original.contains(QStringLiteral("GPS:GPSLatitude")));
        selectPhotos({name});
        QAction* revert = app_->menus()->action(QStringLiteral("actionRevertToOriginal"));
        QVERIFY(revert && !revert->isEnabled());

        trigger(QStringLiteral("actionRemove1"));  // Remove GPS
        QVERIFY(!test::exiftool(output(name)).contains(QStringLiteral("GPS:GPSLatitude")));
        QCOMPARE(app_->localPhotoItemArray()->item(0).workingCopyPath, output(name));
        QVERIFY(revert->isEnabled());
        // The inspector shows the copy: no GPS group, and the facts name it.
        QVERIFY(!app_->currentExifDictionary.contains(QStringLiteral("{GPS}")));
        auto* facts = app_->window()->inspector->findChild<QLabel*>(QStringLiteral("inspectorFacts"));
        QVERIFY2(facts->text().contains(QStringLiteral("Edited copy: ") + output(name)), qPrintable(facts->text()));

        trigger(QStringLiteral("actionChangeDate"));
        DateDialog* dialog = app_->dateActions()->dateDialog();
        QVERIFY(dialog->isVisible());
        dialog->findChild<QLineEdit*>(QStringLiteral("orignalDatelab"))->setText(QStringLiteral("2015:06:01 10:00:00"));
        QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("dateSaveButton")), Qt::LeftButton);
        app_->runner()->waitForDone();
        QVERIFY(!dialog->isVisible());
        const QJsonObject dated = test::exiftool(output(name));
        QCOMPARE(dated.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("2015:06:01 10:00:00"));
        QVERIFY2(!dated.contains(QStringLiteral("GPS:GPSLatitude")), "the date change brought the GPS back");
        QVERIFY(!dated.contains(QStringLiteral("XMP:GPSLatitude")));
        QCOMPARE(QDir(storage_).entryList({QStringLiteral("et-GPS*")}, QDir::Files).size(), 1);
        QCOMPARE(app_->currentExifDictionary.value(QStringLiteral("{Exif}")).toMap().value(QStringLiteral("DateTimeOriginal")).toString(),
                 QStringLiteral("2015:06:01 10:00:00"));

        app_->waitForThumbnails();
        saveScreenshot(app_->window()->localImageBrowserView, QStringLiteral("edited-mark-browser.png"));
        saveScreenshot(app_->window()->dragtableView, QStringLiteral("edited-mark-table.png"));
        QVERIFY(app_->localPhotoItemArray()->index(0, ImportedItemsModel::Name).data(Qt::DecorationRole).isValid());

        // Revert: the original's values are shown again, and the next edit starts from it.
        revert->trigger();
        QVERIFY(app_->localPhotoItemArray()->item(0).workingCopyPath.isEmpty());
        QVERIFY(!revert->isEnabled());
        QVERIFY(app_->currentExifDictionary.contains(QStringLiteral("{GPS}")));
        QVERIFY(!facts->text().contains(QStringLiteral("Edited copy")));
        QVERIFY(!app_->localPhotoItemArray()->index(0, ImportedItemsModel::Name).data(Qt::DecorationRole).isValid());
        trigger(QStringLiteral("actionRemove2"));  // Remove IPTC, from the original again
        QVERIFY(test::exiftool(output(name)).contains(QStringLiteral("GPS:GPSLatitude")));
        QCOMPARE(fileBytes(test::dataPath(name)), originalBytes);
    }

    // A batch shift followed by a GPS save on one of its photos keeps the shift.
    void batchShiftThenGpsSaveKeepsTheShift()
    {
        importWithAddCommand(dataFiles(kPhotos));
        const QString name = QStringLiteral("et-GPS.jpg");
        const QByteArray originalBytes = fileBytes(test::dataPath(name));
        selectPhotos({name, QStringLiteral("exiv2-nikon-d70.jpg")});
        trigger(QStringLiteral("actionChangeDate"));
        BatchDateDialog* batch = app_->dateActions()->batchDialog();
        QVERIFY(batch->isVisible());
        batch->findChild<QLineEdit*>(QStringLiteral("dayVaulab"))->setText(QStringLiteral("1"));
        QTest::mouseClick(batch->findChild<QPushButton*>(QStringLiteral("AddTimeBtn")), Qt::LeftButton);
        QTest::mouseClick(batch->findChild<QPushButton*>(QStringLiteral("mutiDateSaveButton")), Qt::LeftButton);
        app_->runner()->waitForDone();
        const QString shifted = test::exiftool(output(name)).value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString();

        selectPhotos({name});
        trigger(QStringLiteral("actionEditGps"));
        GpsDialog* gps = app_->dateActions()->gpsDialog();
        QVERIFY(gps->isVisible());
        auto* latitude = gps->findChild<QLineEdit*>(QStringLiteral("latitudelab"));
        latitude->setText(QStringLiteral("12.5"));
        QTest::mouseClick(gps->findChild<QPushButton*>(QStringLiteral("gpsSaveButton")), Qt::LeftButton);
        app_->runner()->waitForDone();
        QVERIFY(!gps->isVisible());

        const QJsonObject saved = test::exiftool(output(name));
        QVERIFY(std::abs(saved.value(QStringLiteral("GPS:GPSLatitude")).toDouble() - 12.5) < 1e-4);
        const QString before =
            test::exiftool(test::dataPath(name)).value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString();
        const QDateTime was = QDateTime::fromString(before, QStringLiteral("yyyy:MM:dd HH:mm:ss"));
        const QDateTime now = QDateTime::fromString(
            saved.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("yyyy:MM:dd HH:mm:ss"));
        QVERIFY2(was.isValid() && now.isValid(), qPrintable(before + " -> " + shifted));
        QCOMPARE(was.secsTo(now), 24 * 3600);
        QCOMPARE(fileBytes(test::dataPath(name)), originalBytes);
    }

    void exportFromMenuWritesThePropertyList()
    {
        importWithAddCommand(dataFiles(kPhotos));
        selectPhotos({QStringLiteral("et-GPS.jpg"), QStringLiteral("exiv2-nikon-d70.jpg")});
        trigger(QStringLiteral("actionExport3"));  // EXIF and GPS
        const QString plist = output(QStringLiteral("ExportExifandGPSInfo.plist"));
        QVERIFY(QFile::exists(plist));
        QProcess check;
        check.start(QStringLiteral("plistutil"), {QStringLiteral("-i"), plist, QStringLiteral("-f"), QStringLiteral("xml")});
        QVERIFY(check.waitForFinished(30000));
        const QByteArray xml = check.readAllStandardOutput();
        QVERIFY(xml.contains("<key>et-GPS.jpg</key>"));
        QVERIFY(xml.contains("<key>exiv2-nikon-d70.jpg</key>"));
        QVERIFY(xml.contains("<key>{GPS}</key>"));
    }

    // The store of a first start holds "fontName" but no "fontsize": the second start still
    // uses size 14, saves 14, and names the font the stamp will really be drawn with.
    void secondStartKeepsTheFontSizeAndNamesTheFontUsed()
    {
        const QString file = temp_.filePath(QStringLiteral("secondStartKeepsTheFontSizeAndNamesTheFontUsed.ini"));
        app_.reset();
        app_ = test::startTestWindow(file, QString());
        QVERIFY(app_);
        PreferencesDialog* sheet = app_->preferencesSheet();
        QCOMPARE(sheet->values().fontSize, 14);
        const QString label = sheet->findChild<QLabel*>(QStringLiteral("fontLabel"))->text();
        if (QFontDatabase::families().contains(QStringLiteral("Lucida Grande"), Qt::CaseInsensitive)) {
            QCOMPARE(label, QStringLiteral("Lucida Grande 14"));
        } else {
            const QString general = QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
            QCOMPARE(label, general + QStringLiteral(" 14 (Lucida Grande is not installed)"));
        }
        trigger(QStringLiteral("actionPreferences"));
        QTest::mouseClick(sheet->findChild<QPushButton*>(QStringLiteral("savePreferencesButton")), Qt::LeftButton);
        QSettings settings(file, QSettings::IniFormat);
        QCOMPARE(settings.value(QStringLiteral("fontsize")).toInt(), 14);
        QCOMPARE(settings.value(QStringLiteral("fontName")).toString(), QStringLiteral("Lucida Grande"));
    }

    void preferencesRoundTrip()
    {
        PreferencesDialog* sheet = app_->preferencesSheet();
        trigger(QStringLiteral("actionPreferences"));
        QVERIFY(sheet->isVisible());
        const QString chosen = temp_.filePath(QStringLiteral("chosen-output"));
        sheet->chooseFolder = [chosen](QWidget*) { return chosen; };
        QTest::mouseClick(sheet->findChild<QPushButton*>(QStringLiteral("chooseStorageButton")), Qt::LeftButton);
        sheet->findChild<QComboBox*>(QStringLiteral("cornerPopup"))->setCurrentIndex(3);
        sheet->findChild<QComboBox*>(QStringLiteral("dateFormatPopup"))->setCurrentIndex(2);
        saveScreenshot(sheet, QStringLiteral("main-window-preferences.png"));
        QTest::mouseClick(sheet->findChild<QPushButton*>(QStringLiteral("savePreferencesButton")), Qt::LeftButton);
        QVERIFY(!sheet->isVisible());
        QCOMPARE(app_->storagelocation, chosen);
        QVERIFY(QFileInfo(chosen).isDir());

        const QString file = temp_.filePath(QStringLiteral("preferencesRoundTrip.ini"));
        {
            QSettings settings(file, QSettings::IniFormat);
            QCOMPARE(settings.value(QStringLiteral("storagePath")).toString(), chosen);
            QCOMPARE(settings.value(QStringLiteral("Postion")).toString(), QStringLiteral("Lower right corner"));
            QCOMPARE(settings.value(QStringLiteral("Dateformat")).toString(), QStringLiteral("YYYY/MM/DD HH:MM"));
            QCOMPARE(settings.value(QStringLiteral("fontsize")).toInt(), 14);
        }
        // The next start shows what was saved.
        app_.reset();
        app_ = test::startTestWindow(file, QString());
        QVERIFY(app_);
        QCOMPARE(app_->preferencesSheet()->values().storagePath, chosen);
        QCOMPARE(app_->preferencesSheet()->values().cornerIndex, 3);
        QCOMPARE(app_->preferencesSheet()->values().dateFormatIndex, 2);
    }

    void pictureButtonsShowTheirHoverPicture()
    {
        HoverToolButton* button = app_->window()->remoMetaDataLocalBtn;
        const QImage normal = button->icon().pixmap(32).toImage();
        QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
        QApplication::sendEvent(button, &enter);
        QVERIFY(button->isShowingHoverPicture());
        QVERIFY(button->icon().pixmap(32).toImage() != normal);
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(button, &leave);
        QVERIFY(!button->isShowingHoverPicture());
        QCOMPARE(button->icon().pixmap(32).toImage(), normal);
        // Its press pops up the removal menu under it.
        QTest::mouseClick(button, Qt::LeftButton);
        QTRY_VERIFY(app_->menus()->removeExifMenu->isVisible());
        app_->menus()->removeExifMenu->hide();
    }

    void removingScatteredRowsKeepsTheOthersInOrder()
    {
        ImportedItemsModel model;
        QList<IKImageItem> records;
        for (int i = 0; i < 8; ++i) {
            IKImageItem record;
            record.fileName = QString::number(i);
            records.append(record);
        }
        model.append(records);
        QSignalSpy removals(&model, &QAbstractItemModel::rowsRemoved);
        model.removeItemRows({5, 0, 2, 3, 5, 42, -1, 7});
        QStringList left;
        for (const IKImageItem& record : model.items())
            left.append(record.fileName);
        QCOMPARE(left, (QStringList{"1", "4", "6"}));
        QCOMPARE(removals.count(), 4);  // 7, 5, 2-3 and 0: neighbours go together
    }

    void closingAsksFirst()
    {
        MainWindow* window = app_->window();
        QTimer::singleShot(200, [] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                auto* box = qobject_cast<QMessageBox*>(widget);
                if (box && box->objectName() == QLatin1String("exitAlert")) {
                    QCOMPARE(box->text(), QStringLiteral("Are you sure you want to Exit ?"));
                    for (QAbstractButton* button : box->buttons()) {
                        if (button->text() == QLatin1String("Cancel"))
                            button->click();
                    }
                }
            }
        });
        window->close();
        QVERIFY(window->isVisible());
    }

    void importOfThousandsOfFilesKeepsOrderAndTheWindowAnswers()
    {
        const QString folder = temp_.filePath(QStringLiteral("many"));
        const QStringList expected = makeBigFolder(folder, 3000);
        QCOMPARE(expected.size(), 3000);
        app_->panels.chooseFolder = [folder](QWidget*, const QString&) { return folder; };
        // The longest time the event loop is kept from running, and whether the rows came in
        // while the import was under way (not all at the end).
        QElapsedTimer clock;
        qint64 longestStall = 0;
        qint64 last = 0;
        bool sawPartialList = false;
        bool grabbedHalfway = false;
        QTimer tick;
        tick.setInterval(5);
        clock.start();
        connect(&tick, &QTimer::timeout, [&] {
            longestStall = std::max(longestStall, clock.elapsed() - last);
            last = clock.elapsed();
            const int rows = app_->localPhotoItemArray()->rowCount();
            sawPartialList = sawPartialList || (rows > 0 && rows < expected.size());
            // How the window looks halfway.
            if (rows >= expected.size() / 2 && !grabbedHalfway) {
                grabbedHalfway = app_->window()->grab().save(screenshotPath(QStringLiteral("main-window-importing.png")));
                last = clock.elapsed();  // the picture's own time is not the window's
            }
        });
        tick.start();
        trigger(QStringLiteral("actionImportFolder"));
        // Waiting through the event loop, as a person would: nothing here may hold it.
        QTRY_VERIFY_WITH_TIMEOUT(!app_->importer()->isBusy(), 120000);
        QTRY_VERIFY_WITH_TIMEOUT(app_->thumbnails()->isIdle(), 60000);
        tick.stop();
        qInfo("longest event-loop stall during the import of %lld files: %lld ms", qlonglong(expected.size()), longestStall);
        // Every file once, in the order of the folders and names; the text file left out.
        QCOMPARE(importedPaths(), expected);
        QCOMPARE(app_->window()->taskStatus->summaryText(), QStringLiteral("Imported 3000 files."));
        const auto songs = std::count_if(expected.begin(), expected.end(), [](const QString& path) {
            return path.endsWith(QLatin1String(".mp3")) || path.endsWith(QLatin1String(".flac"));
        });
        QCOMPARE(app_->photoBrowserModel()->rowCount(), expected.size() - songs);  // photos and movies
        QCOMPARE(app_->window()->dragtableView->model()->rowCount(), 3000);
        QVERIFY(sawPartialList);
        // The cells on screen got their pictures, handed over in batches.
        for (int row = 0; row < 4; ++row) {
            const QString path = app_->photoBrowserModel()->index(row, 0).data(ImportedItemsModel::PathRole).toString();
            QVERIFY2(!app_->thumbnails()->thumbnail(path).isNull(), qPrintable(path));
        }
        // Generous on purpose: it catches a loop blocked for the whole import, not a slow machine.
        QVERIFY2(longestStall < 500, qPrintable(QString::number(longestStall)));
        saveScreenshot(app_->window(), QStringLiteral("main-window-3000-files.png"));

        // All photos and movies selected and taken out of the list: the songs stay, in order.
        app_->window()->localImageBrowserView->selectAll();
        QCOMPARE(app_->currentPhotoSelection().items.size(), expected.size() - songs);
        app_->importActions()->ClearSelectedLeftPhotos();
        QStringList expectedSongs;
        for (const QString& path : expected) {
            if (path.endsWith(QLatin1String(".mp3")) || path.endsWith(QLatin1String(".flac")))
                expectedSongs.append(path);
        }
        QCOMPARE(importedPaths(), expectedSongs);
        QCOMPARE(app_->photoBrowserModel()->rowCount(), 0);
    }

    void cancellingOrClearingMidwayStopsTheImport()
    {
        const QString folder = temp_.filePath(QStringLiteral("cancelled"));
        const QStringList expected = makeBigFolder(folder, 3000);
        QCOMPARE(expected.size(), 3000);
        app_->panels.chooseFolder = [folder](QWidget*, const QString&) { return folder; };
        const auto importUntil = [this](int rows) {
            trigger(QStringLiteral("actionImportFolder"));
            QTRY_VERIFY_WITH_TIMEOUT(app_->localPhotoItemArray()->rowCount() >= rows, 60000);
        };

        // The status bar's Cancel: what is in stays, in order and without gaps; nothing more comes.
        importUntil(200);
        QTest::mouseClick(app_->window()->taskStatus->findChild<QPushButton*>(QStringLiteral("taskCancelButton")),
                          Qt::LeftButton);
        app_->importer()->waitForDone();
        QTest::qWait(100);
        const QStringList kept = importedPaths();
        QVERIFY2(kept.size() < expected.size(), qPrintable(QString::number(kept.size())));
        QCOMPARE(kept, expected.mid(0, kept.size()));
        QVERIFY2(app_->window()->taskStatus->summaryText().startsWith(QStringLiteral("Imported ")),
                 qPrintable(app_->window()->taskStatus->summaryText()));

        // Clear while importing, then add two files at once: the list holds those two alone.
        app_->importActions()->ClearLeftPhotos();
        importUntil(kept.size() + 200);
        const QStringList two = dataFiles({QStringLiteral("et-GPS.jpg"), QStringLiteral("et-MP3.mp3")});
        app_->panels.chooseFiles = [two](QWidget*, const QString&, const QString&) { return two; };
        app_->importActions()->ClickClearandImportPhotosAction();
        app_->importer()->waitForDone();
        QTest::qWait(100);
        QCOMPARE(importedPaths(), two);
        QCOMPARE(app_->window()->taskStatus->summaryText(), QStringLiteral("Imported 2 files."));
    }
};

QTEST_MAIN(MainWindowTest)
#include "MainWindowTest.moc"

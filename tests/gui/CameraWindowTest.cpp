// A folder served by libgphoto2's Directory Browse driver stands in for a camera: the window
// lists it with thumbnails, downloads, deletes, and runs photo commands on the downloads.
#include "ExifTool.h"
#include "TestPaths.h"
#include "WindowTestApp.h"
#include "app/AppDelegate.h"
#include "app/CameraActions.h"
#include "app/CameraItemsModel.h"
#include "app/CommandMenus.h"
#include "app/DateActions.h"
#include "app/DateDialog.h"
#include "app/DesktopReveal.h"
#include "app/ImportActions.h"
#include "app/ImportedItemsModel.h"
#include "app/InspectorPanel.h"
#include "app/MainWindow.h"
#include "app/MediaImporter.h"
#include "camera/CameraDevices.h"
#include "model/Preferences.h"
#include "ui/FileDropViews.h"
#include "ui/HoverToolButton.h"
#include "ui/WindowLook.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>
#include <QtTest>

using namespace pelorin;

namespace {

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Answers the next delete question with the button of that text.
void answerDeleteWith(const QString& text)
{
    QTimer::singleShot(100, [text] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* box = qobject_cast<QMessageBox*>(widget);
            if (!box || box->objectName() != QLatin1String("deleteAlert"))
                continue;
            QCOMPARE(box->text(), QStringLiteral("Are you sure you want to delete the selected photo ?"));
            for (QAbstractButton* button : box->buttons()) {
                if (button->text() == text)
                    button->click();
            }
        }
    });
}

}  // namespace

class CameraWindowTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir temp_;
    QString device_;
    QString storage_;
    std::unique_ptr<AppDelegate> app_;

    void selectCameraFiles(const QStringList& names)
    {
        QItemSelection selection;
        CameraItemsModel* model = app_->camera()->items();
        for (int row = 0; row < model->rowCount(); ++row) {
            const QModelIndex index = model->index(row);
            if (names.contains(index.data().toString()))
                selection.select(index, index);
        }
        app_->window()->imageBrowserView->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
        QCOMPARE(app_->currentPhotoSelection().items.size(), names.size());
    }

    QString output(const QString& name) const { return storage_ + QLatin1Char('/') + name; }

private slots:
    void initTestCase()
    {
        prepareWindowTests();
        QVERIFY(temp_.isValid());
    }

    void init()
    {
        device_ = temp_.filePath(QStringLiteral("camera-%1").arg(QTest::currentTestFunction()));
        QDir().mkpath(device_ + QStringLiteral("/DCIM/100CANON"));
        for (const char* name : {"et-GPS.jpg", "ft-imovie.mp4", "pil-iptc_NokiaN70.jpg"})
            QVERIFY(QFile::copy(test::dataPath(QLatin1String(name)), device_ + QLatin1Char('/') + QLatin1String(name)));
        QVERIFY(QFile::copy(test::dataPath(QStringLiteral("exiv2-nikon-d70.jpg")),
                            device_ + QStringLiteral("/DCIM/100CANON/exiv2-nikon-d70.jpg")));
        storage_ = temp_.filePath(QStringLiteral("storage-%1").arg(QTest::currentTestFunction()));
        app_ = test::startTestWindow(temp_.filePath(QStringLiteral("%1.ini").arg(QTest::currentTestFunction())),
                                     storage_);
        QVERIFY(app_);

        QVERIFY(!app_->changtoiOSmodemenu()->isEnabled());
        app_->camera()->deviceBrowserDidAddDevice(directoryCamera(device_));
        QVERIFY(app_->changtoiOSmodemenu()->isEnabled());
        QTest::mouseClick(app_->window()->cameraphotoBtn, Qt::LeftButton);
        QVERIFY(!app_->blocalMode);
        QTest::mouseClick(app_->window()->opendeviceBtn, Qt::LeftButton);
        app_->runner()->waitForDone();
        QCOMPARE(app_->camera()->items()->rowCount(), 4);
        QCOMPARE(app_->window()->leftStack->currentWidget(), app_->window()->imageBrowserView);
    }

    void cleanup() { app_.reset(); }

    void listsWithThumbnailsAndDownloadsBothWays()
    {
        app_->camera()->waitForThumbnails();
        QStringList names;
        for (const IKImageItem& item : app_->camera()->items()->items())
            names.append(item.fileName);
        QVERIFY2(names.contains(QStringLiteral("exiv2-nikon-d70.jpg")), qPrintable(names.join(',')));
        QVERIFY(names.contains(QStringLiteral("ft-imovie.mp4")));
        // Every photo shows a picture: the device's preview, or one made from the photo itself
        // where the device has none (et-GPS.jpg carries no usable thumbnail).
        for (const IKImageItem& item : app_->camera()->items()->items())
            QVERIFY2(item.fileImage.isNull() == (item.fileType == QLatin1String("Movie")), qPrintable(item.fileName));
        QTest::qWait(200);
        QVERIFY(app_->window()->grab().save(QStringLiteral(PELORIN_SCREENSHOT_DIR "/camera-window.png")));

        selectCameraFiles({QStringLiteral("et-GPS.jpg")});
        QTest::mouseClick(app_->window()->downloadPhotoBtn, Qt::LeftButton);
        app_->runner()->waitForDone();
        QCOMPARE(bytesOf(output(QStringLiteral("et-GPS.jpg"))), bytesOf(test::dataPath(QStringLiteral("et-GPS.jpg"))));
        QCOMPARE(app_->localPhotoItemArray()->rowCount(), 0);

        // The edit variant adds the download to the computer photos as well.
        selectCameraFiles({QStringLiteral("exiv2-nikon-d70.jpg")});
        QTest::mouseClick(app_->window()->importEditPhotoBtn, Qt::LeftButton);
        app_->runner()->waitForDone();
        app_->importer()->waitForDone();
        QCOMPARE(app_->localPhotoItemArray()->rowCount(), 1);
        QCOMPARE(app_->localPhotoItemArray()->item(0).filePath, output(QStringLiteral("exiv2-nikon-d70.jpg")));
        QVERIFY(app_->blocalMode);
    }

    // The right pane follows the pane on the left: a computer photo's metadata does not stay
    // when the camera is shown, and a camera photo shows its downloaded copy's metadata.
    void rightPaneFollowsTheCameraSelection()
    {
        QTest::mouseClick(app_->window()->localphotoBtn, Qt::LeftButton);
        app_->panels.chooseFiles = [](QWidget*, const QString&, const QString&) {
            return QStringList{test::dataPath(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"))};
        };
        app_->importActions()->OpenComputerFoldertoImportAction();
        app_->importer()->waitForDone();
        QTRY_COMPARE(app_->localPhotoItemArray()->rowCount(), 1);
        app_->window()->localImageBrowserView->selectionModel()->select(
            app_->window()->localImageBrowserView->model()->index(0, 0), QItemSelectionModel::ClearAndSelect);
        auto* name = app_->window()->inspector->findChild<QLabel*>(QStringLiteral("inspectorFileName"));
        QVERIFY(name);
        QTRY_COMPARE(name->text(), QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"));
        QVERIFY(app_->window()->inspector->tree()->topLevelItemCount() > 0);

        QTest::mouseClick(app_->window()->cameraphotoBtn, Qt::LeftButton);
        QVERIFY(name->text() != QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"));
        QCOMPARE(app_->window()->inspector->tree()->topLevelItemCount(), 0);

        selectCameraFiles({QStringLiteral("pil-iptc_NokiaN70.jpg")});
        QCOMPARE(name->text(), QStringLiteral("pil-iptc_NokiaN70.jpg"));
        QCOMPARE(app_->window()->inspector->tree()->topLevelItemCount(), 0);  // not downloaded yet
        QTest::mouseClick(app_->window()->downloadPhotoBtn, Qt::LeftButton);
        app_->runner()->waitForDone();
        selectCameraFiles({QStringLiteral("et-GPS.jpg")});
        selectCameraFiles({QStringLiteral("pil-iptc_NokiaN70.jpg")});
        QVERIFY(app_->window()->inspector->tree()->topLevelItemCount() > 0);
    }

    void photoCommandsWorkOnTheDownloadedCopies()
    {
        // Not downloaded yet: the removal fetches the copy first, then writes its own output.
        selectCameraFiles({QStringLiteral("et-GPS.jpg")});
        app_->menus()->action(QStringLiteral("actionRemove1"))->trigger();
        app_->runner()->waitForDone();
        QVERIFY(QFile::exists(output(QStringLiteral("et-GPS.jpg"))));
        QVERIFY(QFile::exists(output(QStringLiteral("NoGPS_et-GPS.jpg"))));
        QVERIFY(test::tagsOf(test::exiftool(output(QStringLiteral("NoGPS_et-GPS.jpg"))), {QStringLiteral("GPS")}).isEmpty());

        // The date dialog of a camera photo downloads it, then rewrites that copy in place.
        selectCameraFiles({QStringLiteral("exiv2-nikon-d70.jpg")});
        app_->menus()->action(QStringLiteral("actionChangeDate"))->trigger();
        app_->runner()->waitForDone();
        DateDialog* dialog = app_->dateActions()->dateDialog();
        QTRY_VERIFY(dialog->isVisible());
        dialog->findChild<QLineEdit*>(QStringLiteral("orignalDatelab"))->setText(QStringLiteral("2016:05:01 12:30:45"));
        dialog->findChild<QLineEdit*>(QStringLiteral("diginalDatelab"))->setText(QStringLiteral("2016:05:01 12:30:45"));
        QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("dateSaveButton")), Qt::LeftButton);
        app_->runner()->waitForDone();
        QCOMPARE(test::exiftool(output(QStringLiteral("exiv2-nikon-d70.jpg")))
                     .value(QStringLiteral("ExifIFD:DateTimeOriginal"))
                     .toString(),
                 QStringLiteral("2016:05:01 12:30:45"));
        // The device's own file is untouched.
        QCOMPARE(bytesOf(device_ + QStringLiteral("/DCIM/100CANON/exiv2-nikon-d70.jpg")),
                 bytesOf(test::dataPath(QStringLiteral("exiv2-nikon-d70.jpg"))));
    }

    void deleteAsksAndRemovesOnlyWhatTheDeviceDeleted()
    {
        selectCameraFiles({QStringLiteral("ft-imovie.mp4")});
        answerDeleteWith(QStringLiteral("Cancel"));
        QTest::mouseClick(app_->window()->deletePhotoBtn, Qt::LeftButton);
        app_->runner()->waitForDone();
        QVERIFY(QFile::exists(device_ + QStringLiteral("/ft-imovie.mp4")));
        QCOMPARE(app_->camera()->items()->rowCount(), 4);

        answerDeleteWith(QStringLiteral(" Delete "));
        QTest::mouseClick(app_->window()->deletePhotoBtn, Qt::LeftButton);
        app_->runner()->waitForDone();
        QVERIFY(!QFile::exists(device_ + QStringLiteral("/ft-imovie.mp4")));
        QCOMPARE(app_->camera()->items()->rowCount(), 3);

        // A file that vanished from the device behind our back stays listed: it was not deleted here.
        QVERIFY(QFile::remove(device_ + QStringLiteral("/pil-iptc_NokiaN70.jpg")));
        selectCameraFiles({QStringLiteral("pil-iptc_NokiaN70.jpg")});
        answerDeleteWith(QStringLiteral(" Delete "));
        QTest::mouseClick(app_->window()->deletePhotoBtn, Qt::LeftButton);
        app_->runner()->waitForDone();
        QCOMPARE(app_->camera()->items()->rowCount(), 3);
    }

    void anotherCameraComingAndGoingKeepsTheListing()
    {
        const QString other = temp_.filePath(QStringLiteral("second-camera"));
        QDir().mkpath(other);
        app_->camera()->deviceBrowserDidAddDevice(directoryCamera(other));
        QCOMPARE(app_->camera()->currentDevice()->port, QStringLiteral("disk:") + other);
        app_->camera()->deviceBrowserDidRemoveDevice(directoryCamera(other));
        QCOMPARE(app_->camera()->currentDevice()->port, QStringLiteral("disk:") + device_);
        QCOMPARE(app_->camera()->items()->rowCount(), 4);
    }

    void aCameraRemovedWhileListedEmptiesTheView()
    {
        app_->camera()->deviceBrowserDidRemoveDevice(directoryCamera(device_));
        QCOMPARE(app_->camera()->items()->rowCount(), 0);
        QCOMPARE(app_->window()->leftStack->currentWidget(), app_->window()->cameraHintView);
        QVERIFY(!app_->window()->opendeviceBtn->isEnabled());
        // Commands in camera mode now find nothing selected.
        app_->menus()->action(QStringLiteral("actionRemove1"))->trigger();
        auto* alert = app_->window()->findChild<QMessageBox*>(QStringLiteral("alertSheet"));
        QVERIFY(alert && alert->isVisible());
    }
};

QTEST_MAIN(CameraWindowTest)
#include "CameraWindowTest.moc"

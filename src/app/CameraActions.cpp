#include "app/CameraActions.h"

#include "app/AppDelegate.h"
#include "app/CameraItemsModel.h"
#include "app/MainWindow.h"
#include "app/MediaImporter.h"
#include "app/TaskStatusBar.h"
#include "camera/CameraCommands.h"
#include "camera/CameraHotplug.h"
#include "camera/CameraSession.h"
#include "model/FileKinds.h"
#include "model/SafeOutput.h"
#include "photo/PhotoThumbnails.h"
#include "video/MoviePoster.h"
#include "ui/FileDropViews.h"
#include "ui/HoverToolButton.h"

#include <QAction>
#include <QCoreApplication>
#include <QFileInfo>
#include <QHash>
#include <QItemSelectionModel>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QThread>

namespace pelorin {

CameraActions::CameraActions(AppDelegate& app) : QObject(&app), app_(app), items_(new CameraItemsModel(this))
{
    // libgphoto2 talks to one device at a time; one thread keeps its calls in order.
    devicePool_.setMaxThreadCount(1);
    MainWindow* w = app_.window();
    w->imageBrowserView->setModel(items_);
    connect(w->opendeviceBtn, &QToolButton::clicked, this, &CameraActions::OpenDeviceAction);
    connect(w->downloadPhotoBtn, &QToolButton::clicked, this, &CameraActions::DownloadPhotoAction);
    connect(w->importEditPhotoBtn, &QToolButton::clicked, this, &CameraActions::DownloadImportEditePhotoAction);
    connect(w->deletePhotoBtn, &QToolButton::clicked, this, &CameraActions::DeletePhotoAction);
    const auto enableSelectionButtons = [this] {
        const bool any = app_.window()->imageBrowserView->selectionModel()->hasSelection();
        for (QWidget* button : {static_cast<QWidget*>(app_.window()->downloadPhotoBtn),
                                static_cast<QWidget*>(app_.window()->importEditPhotoBtn),
                                static_cast<QWidget*>(app_.window()->deletePhotoBtn)})
            button->setEnabled(any);
    };
    connect(w->imageBrowserView->selectionModel(), &QItemSelectionModel::selectionChanged, this, enableSelectionButtons);
    connect(w->imageBrowserView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &CameraActions::showSelectedFile);
    connect(items_, &QAbstractItemModel::modelReset, this, enableSelectionButtons);
}

CameraActions::~CameraActions()
{
    ++listing_;
    devicePool_.clear();
    devicePool_.waitForDone();
}

void CameraActions::startDeviceBrowser()
{
    hotplug_ = new CameraHotplug(this);
    connect(hotplug_, &CameraHotplug::devicesMayHaveChanged, this, &CameraActions::rescan);
    rescan();
}

void CameraActions::rescan()
{
    // One scan at a time; events during a scan ask for one more afterwards.
    if (scanning_) {
        rescanWanted_ = true;
        return;
    }
    scanning_ = true;
    QPointer<CameraActions> self(this);
    devicePool_.start([self] {
        const QList<CameraDevice> found = detectCameras();
        if (!self)
            return;
        QMetaObject::invokeMethod(
            self.data(),
            [self, found] {
                if (!self)
                    return;
                // Directory cameras are opened by the user, never found by a scan.
                for (const CameraDevice& known : QList<CameraDevice>(self->mCameras)) {
                    const bool detected = std::any_of(found.begin(), found.end(), [&](const CameraDevice& d) {
                        return d.port == known.port;
                    });
                    if (!detected && !known.port.startsWith(QLatin1String("disk:")))
                        self->deviceBrowserDidRemoveDevice(known);
                }
                for (const CameraDevice& device : found) {
                    const bool known = std::any_of(self->mCameras.begin(), self->mCameras.end(),
                                                   [&](const CameraDevice& d) { return d.port == device.port; });
                    if (!known)
                        self->deviceBrowserDidAddDevice(device);
                }
                self->scanning_ = false;
                if (self->rescanWanted_) {
                    self->rescanWanted_ = false;
                    self->rescan();
                }
            },
            Qt::QueuedConnection);
    });
}

void CameraActions::deviceBrowserDidAddDevice(const CameraDevice& device)
{
    MainWindow* w = app_.window();
    w->deviceNamelab->setText(device.name);
    mCameras.append(device);
    currentDevice_ = device;
    w->opendeviceBtn->setEnabled(true);
    if (QAction* menu = app_.changtoiOSmodemenu())
        menu->setEnabled(true);
    if (!app_.blocalMode)
        app_.ChangeToImportiOSDevicePhoto();
}

void CameraActions::deviceBrowserDidRemoveDevice(const CameraDevice& device)
{
    mCameras.removeIf([&](const CameraDevice& d) { return d.port == device.port; });
    // A listing of the device that went goes too; the last camera still there becomes current.
    if (session_ && session_->device().port == device.port) {
        ++listing_;
        session_.reset();
        items_->clear();
    }
    if (currentDevice_ && currentDevice_->port == device.port) {
        currentDevice_.reset();
        if (!mCameras.isEmpty()) {
            currentDevice_ = mCameras.last();
            app_.window()->deviceNamelab->setText(currentDevice_->name);
        }
    }
    if (!mCameras.isEmpty()) {
        if (!app_.blocalMode)
            app_.ChangeToImportiOSDevicePhoto();
        return;
    }
    currentDevice_.reset();
    session_.reset();
    ++listing_;
    items_->clear();
    app_.window()->deviceNamelab->clear();
    app_.window()->opendeviceBtn->setEnabled(false);
    if (!app_.blocalMode)
        app_.ChangeToImportiOSDevicePhoto();
}

void CameraActions::openFolderAsCameraAction()
{
    const QString folder = app_.panels.chooseFolder(app_.window(), QStringLiteral("Please select a folder to open as a camera."));
    if (folder.isEmpty())
        return;
    deviceBrowserDidAddDevice(directoryCamera(folder));
    app_.ChangeToImportiOSDevicePhoto();
    OpenDeviceAction();
}

void CameraActions::OpenDeviceAction()
{
    if (!currentDevice_) {
        app_.showAlert({QStringLiteral("No camera connected"),
                        QStringLiteral("Connect a camera or phone, or open a folder as a camera.")});
        return;
    }
    ensureFolder(app_.storagelocation);
    const CameraDevice device = *currentDevice_;
    struct Listing {
        std::shared_ptr<CameraSession> session;
        QList<IKImageItem> records;
    };
    auto listing = std::make_shared<Listing>();
    const quint64 generation = ++listing_;
    app_.runCommand(
        QStringLiteral("Open %1").arg(device.name),
        [device, listing](const CommandContext& context) {
            CommandResult result;
            QString error;
            std::unique_ptr<CameraSession> session = CameraSession::open(device, &error);
            if (!session) {
                result.skip(device.port, error);
                return result;
            }
            const QList<CameraFileInfo> files = session->listFiles(context.cancelled, &error);
            if (!error.isEmpty())
                result.skip(device.port, error);
            for (const CameraFileInfo& file : files)
                listing->records.append(cameraRecord(file, QImage()));
            listing->session = std::move(session);
            result.noteOnce(QStringLiteral("%1 files on %2").arg(files.size()).arg(device.name));
            return result;
        },
        [this, listing, generation](const CommandResult&) {
            if (generation != listing_ || !listing->session)
                return;
            session_ = listing->session;
            items_->setItems(listing->records);
            app_.window()->showCameraMode(!listing->records.isEmpty());
            fetchThumbnails();
        });
}

// The right pane follows the camera's selection: a photo already downloaded shows the metadata
// of its copy, any other file what the device says of it.
void CameraActions::showSelectedFile()
{
    const QList<CameraFileRef> files = selectedFiles();
    if (files.isEmpty() || app_.blocalMode)
        return;
    const CameraFileRef& file = files.first();
    const QString copy = storageOutputPath(app_.storagelocation, file.name);
    const auto it = std::find_if(items_->items().begin(), items_->items().end(),
                                 [&](const IKImageItem& item) { return item.cameraItem == file; });
    if (it == items_->items().end())
        return;
    const QModelIndex index = items_->index(int(it - items_->items().begin()));
    const QImage preview = index.data(Qt::DecorationRole).value<QIcon>().pixmap(170).toImage();
    if (isImageExtension(pathExtension(file.name)) && hasUniqueName(file) && QFileInfo(copy).isFile()) {
        app_.showPhotoDetails(copy, file.name, preview);
        return;
    }
    QStringList facts;
    if (!it->fileSize.isEmpty())
        facts.append(it->fileSize);
    if (it->fileModifyDate.isValid())
        facts.append(QStringLiteral("modified ") + it->fileModifyDate.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")));
    QString message = QStringLiteral("Download it to see all of its metadata.");
    if (!facts.isEmpty())
        message.prepend(QStringLiteral("On the camera: %1. ").arg(facts.join(QStringLiteral(", "))));
    app_.showNoPhotoDetails(file.name, message);
}

void CameraActions::fetchThumbnails()
{
    // Thumbnails arrive one by one, each shown as it comes.
    const quint64 generation = listing_;
    std::shared_ptr<CameraSession> session = session_;
    QPointer<CameraActions> self(this);
    for (const IKImageItem& item : items_->items()) {
        const CameraFileRef file = item.cameraItem;
        devicePool_.start([self, session, file, generation] {
            if (!self || self->listing_ != generation)
                return;
            QString error;
            const QImage thumbnail = session->thumbnail(file, &error);
            if (thumbnail.isNull())
                return;
            QMetaObject::invokeMethod(
                self.data(),
                [self, file, thumbnail, generation] {
                    if (self && self->listing_ == generation)
                        self->items_->setThumbnail(file, thumbnail);
                },
                Qt::QueuedConnection);
        });
    }
}

void CameraActions::waitForThumbnails()
{
    devicePool_.waitForDone();
    QCoreApplication::processEvents();
}

QList<CameraFileRef> CameraActions::selectedFiles() const
{
    QList<int> rows;
    for (const QModelIndex& index : app_.window()->imageBrowserView->selectionModel()->selectedIndexes())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    QList<CameraFileRef> files;
    for (int row : rows) {
        if (row >= 0 && row < items_->items().size())
            files.append(items_->items().at(row).cameraItem);
    }
    return files;
}

void CameraActions::download(bool importToEdit)
{
    const QList<CameraFileRef> files = selectedFiles();
    if (files.isEmpty() || !session_) {
        app_.showAlert(Alerts::noSelection());
        return;
    }
    if (importToEdit)
        app_.ChangeToImportComputerPhoto();
    std::shared_ptr<CameraSession> session = session_;
    app_.runCommand(
        importToEdit ? QStringLiteral("Download and Edit") : QStringLiteral("Download"),
        [session, files](const CommandContext& context) { return downloadCameraFiles(*session, files, context); },
        [this, importToEdit](const CommandResult& result) {
            thumbnailsFromDownloads(result.written);
            // Only what really arrived is added for editing.
            if (importToEdit && !result.written.isEmpty())
                app_.importer()->import(result.written, ImportScope::PhotosAndMovies);
        });
}

bool CameraActions::hasUniqueName(const CameraFileRef& file) const
{
    return std::count_if(items_->items().begin(), items_->items().end(),
                         [&](const IKImageItem& item) { return item.cameraItem.name == file.name; })
           <= 1;
}

void CameraActions::thumbnailsFromDownloads(const QStringList& written)
{
    // A file the device had no preview for gets one from its downloaded copy. (A name that two
    // folders of the device share is left alone: its copies are numbered in download order.)
    QHash<QString, int> nameCounts;
    for (const IKImageItem& item : items_->items())
        ++nameCounts[item.cameraItem.name];
    for (const IKImageItem& item : items_->items()) {
        if (!item.fileImage.isNull() || nameCounts.value(item.cameraItem.name) > 1)
            continue;
        const QString copy = storageOutputPath(app_.storagelocation, item.cameraItem.name);
        if (!written.contains(copy))
            continue;
        const CameraFileRef file = item.cameraItem;
        QPointer<CameraActions> self(this);
        const quint64 generation = listing_;
        devicePool_.start([self, file, copy, generation] {
            const QImage picture = isVideoExtension(pathExtension(copy)) ? moviePosterFrame(copy, 170)
                                                                         : makePhotoThumbnail(copy, 170);
            if (picture.isNull() || !self)
                return;
            QMetaObject::invokeMethod(
                self.data(),
                [self, file, picture, generation] {
                    if (self && self->listing_ == generation)
                        self->items_->setThumbnail(file, picture);
                },
                Qt::QueuedConnection);
        });
    }
}

void CameraActions::DeletePhotoAction()
{
    const QList<CameraFileRef> files = selectedFiles();
    if (files.isEmpty() || !session_) {
        app_.showAlert(Alerts::noSelection());
        return;
    }
    QMessageBox ask(app_.window());
    ask.setObjectName(QStringLiteral("deleteAlert"));
    ask.setIcon(QMessageBox::Warning);
    ask.setText(QStringLiteral("Are you sure you want to delete the selected photo ?"));
    ask.setInformativeText(QString());
    QPushButton* remove = ask.addButton(QStringLiteral(" Delete "), QMessageBox::DestructiveRole);
    ask.addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    ask.setDefaultButton(remove);
    ask.exec();
    if (ask.clickedButton() != remove)
        return;
    std::shared_ptr<CameraSession> session = session_;
    auto deleted = std::make_shared<QList<CameraFileRef>>();
    app_.runCommand(
        QStringLiteral("Delete from Camera"),
        [session, files, deleted](const CommandContext& context) {
            return deleteCameraFiles(*session, files, context, deleted.get());
        },
        [this, deleted](const CommandResult&) { items_->removeFiles(*deleted); });
}

std::function<void(const CommandContext&, CommandResult&)> CameraActions::copiesDownloader(const PhotoSelection& selection)
{
    std::shared_ptr<CameraSession> session = session_;
    QList<CameraFileRef> files;
    for (const IKImageItem& item : selection.items)
        files.append(item.cameraItem);
    return [session, files](const CommandContext& context, CommandResult& result) {
        QList<CameraFileRef> missing;
        for (const CameraFileRef& file : files) {
            if (!QFileInfo::exists(storageOutputPath(context.storageFolder, file.name)))
                missing.append(file);
        }
        if (missing.isEmpty())
            return;
        if (!session) {
            for (const CameraFileRef& file : missing)
                result.skip(file.name, QStringLiteral("the camera is no longer open"));
            return;
        }
        // The copies are only a means here: they are not revealed on their own.
        CommandContext quiet = context;
        quiet.reveal = {};
        const CommandResult downloaded = downloadCameraFiles(*session, missing, quiet);
        for (const SkippedItem& skipped : downloaded.skipped)
            result.skip(skipped.path, skipped.reason);
    };
}

}  // namespace pelorin

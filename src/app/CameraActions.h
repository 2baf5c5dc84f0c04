#pragma once
#include "camera/CameraDevices.h"
#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"

#include <QObject>
#include <QThreadPool>
#include <memory>
#include <optional>

namespace pelorin {

class AppDelegate;
class CameraHotplug;
class CameraItemsModel;
class CameraSession;

// Cameras and phones: the devices seen (at start and on hot-plug), the open device's files in
// the camera browser with their thumbnails, downloads, deletes, and the copies that the photo
// commands work on in camera mode.
class CameraActions : public QObject {
    Q_OBJECT
public:
    explicit CameraActions(AppDelegate& app);
    ~CameraActions() override;

    CameraItemsModel* items() const { return items_; }
    const QList<CameraDevice>& cameras() const { return mCameras; }
    std::optional<CameraDevice> currentDevice() const { return currentDevice_; }

    // Looks for cameras now and whenever a USB device comes or goes.
    void startDeviceBrowser();
    void deviceBrowserDidAddDevice(const CameraDevice& device);
    void deviceBrowserDidRemoveDevice(const CameraDevice& device);

    // In camera mode a photo command works on the downloaded copies; this downloads the ones
    // that are missing, on the command's thread, before the command itself runs.
    std::function<void(const CommandContext&, CommandResult&)> copiesDownloader(const PhotoSelection& selection);

    // Waits until thumbnails being fetched have arrived (tests).
    void waitForThumbnails();

public slots:
    void OpenDeviceAction();
    void DownloadPhotoAction() { download(false); }
    void DownloadImportEditePhotoAction() { download(true); }
    void DeletePhotoAction();
    void openFolderAsCameraAction();

private:
    void download(bool importToEdit);
    void rescan();
    void fetchThumbnails();
    void showSelectedFile();
    bool hasUniqueName(const CameraFileRef& file) const;
    void thumbnailsFromDownloads(const QStringList& written);
    QList<CameraFileRef> selectedFiles() const;

    AppDelegate& app_;
    CameraItemsModel* items_;
    CameraHotplug* hotplug_ = nullptr;
    QList<CameraDevice> mCameras;
    std::optional<CameraDevice> currentDevice_;
    std::shared_ptr<CameraSession> session_;
    QThreadPool devicePool_;
    bool scanning_ = false;
    bool rescanWanted_ = false;
    quint64 listing_ = 0;  // which listing the thumbnails being fetched belong to
};

}  // namespace pelorin

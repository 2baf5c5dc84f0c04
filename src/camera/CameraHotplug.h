#pragma once

#include <QObject>
#include <QTimer>

struct udev;
struct udev_monitor;
class QSocketNotifier;

namespace pelorin {

// Watches USB devices come and go through libudev, so the window can look for cameras again.
// A camera plugged in sends a burst of events (the device, then its interfaces); they are
// collapsed into one signal at most every collapse interval (2 s), which also gives the device
// time to settle before anyone opens it.
class CameraHotplug : public QObject {
    Q_OBJECT
public:
    explicit CameraHotplug(QObject* parent = nullptr);
    ~CameraHotplug() override;

    // False where udev is not available (containers, some sandboxes).
    bool isWatching() const { return monitor_ != nullptr; }

    // What a USB add or remove event does; public so that other causes (a manual refresh)
    // join the same collapsing.
    void noteDeviceChange();
    void setCollapseInterval(int milliseconds) { collapse_.setInterval(milliseconds); }

signals:
    void devicesMayHaveChanged();

private:
    void readEvents();

    struct udev* udev_ = nullptr;
    struct udev_monitor* monitor_ = nullptr;
    QSocketNotifier* notifier_ = nullptr;
    QTimer collapse_;
};

}  // namespace pelorin

#include "camera/CameraHotplug.h"

#include <libudev.h>

#include <QSocketNotifier>

#include <cstring>

namespace pelorin {
namespace {

constexpr int kCollapseMilliseconds = 2000;

}  // namespace

CameraHotplug::CameraHotplug(QObject* parent) : QObject(parent)
{
    collapse_.setSingleShot(true);
    collapse_.setInterval(kCollapseMilliseconds);
    connect(&collapse_, &QTimer::timeout, this, &CameraHotplug::devicesMayHaveChanged);

    udev_ = udev_new();
    if (!udev_)
        return;
    monitor_ = udev_monitor_new_from_netlink(udev_, "udev");
    if (!monitor_ || udev_monitor_filter_add_match_subsystem_devtype(monitor_, "usb", "usb_device") < 0
        || udev_monitor_enable_receiving(monitor_) < 0 || udev_monitor_get_fd(monitor_) < 0) {
        if (monitor_)
            udev_monitor_unref(monitor_);
        monitor_ = nullptr;
        return;
    }
    notifier_ = new QSocketNotifier(udev_monitor_get_fd(monitor_), QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, &CameraHotplug::readEvents);
}

CameraHotplug::~CameraHotplug()
{
    delete notifier_;  // before the socket it watches closes
    if (monitor_)
        udev_monitor_unref(monitor_);
    if (udev_)
        udev_unref(udev_);
}

void CameraHotplug::noteDeviceChange()
{
    if (!collapse_.isActive())
        collapse_.start();
}

void CameraHotplug::readEvents()
{
    // The socket is non-blocking: read every queued event, then wait for the next wake-up.
    while (udev_device* device = udev_monitor_receive_device(monitor_)) {
        const char* action = udev_device_get_action(device);
        if (action && (std::strcmp(action, "add") == 0 || std::strcmp(action, "remove") == 0))
            noteDeviceChange();
        udev_device_unref(device);
    }
}

}  // namespace pelorin

#pragma once

#include <QList>
#include <QString>

namespace pelorin {

// A camera or phone as libgphoto2 names it: the model and the port it answers on.
struct CameraDevice {
    QString name;  // model, e.g. "Canon EOS 80D"
    QString port;  // e.g. "usb:001,004" or "disk:/some/folder"
    friend bool operator==(const CameraDevice&, const CameraDevice&) = default;
};

// The cameras connected now. Empty with the reason in error when the search itself fails.
QList<CameraDevice> detectCameras(QString* error = nullptr);

// A folder served as a camera by libgphoto2's "Directory Browse" driver.
CameraDevice directoryCamera(const QString& folder);

}  // namespace pelorin

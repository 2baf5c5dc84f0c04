#pragma once

#include <QString>

namespace pelorin {

// Names a file on a connected camera or phone. The device owns the file; a record only points at
// it, so this is an address (device port, folder and name on the device), not a handle.
struct CameraFileRef {
    QString port;    // libgphoto2 port, e.g. "usb:001,004" or "disk:/some/folder"
    QString folder;  // folder on the device
    QString name;    // file name on the device

    bool isValid() const { return !port.isEmpty() && !name.isEmpty(); }
    friend bool operator==(const CameraFileRef&, const CameraFileRef&) = default;
};

}  // namespace pelorin

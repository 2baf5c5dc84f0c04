#pragma once

#include "model/CameraFileRef.h"

#include <QString>

namespace pelorin {

// "folder/name" as the device names it ("/DCIM/100CANON/IMG_0001.JPG"), for messages and lists.
QString cameraFilePath(const CameraFileRef& file);

// A path on the device as a ref: "folder/name", or a bare name in the root folder.
CameraFileRef cameraFileFromPath(const QString& port, const QString& path);

// Folder and name as libgphoto2 takes them: an absolute folder, a plain name.
bool isUsableCameraFile(const CameraFileRef& file);

}  // namespace pelorin

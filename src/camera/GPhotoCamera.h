#pragma once

// Private to src/camera: opening and closing one libgphoto2 Camera.

#include <gphoto2/gphoto2-camera.h>

#include <QString>

#include <mutex>

namespace pelorin::gphoto {

class GPhotoContext;

// The model name of libgphoto2's driver that serves a folder as a camera.
inline constexpr char kDirectoryBrowseModel[] = "Directory Browse";

// Held while libgphoto2 loads its driver and port lists or searches for devices: those walk
// shared library state, which concurrent sessions must not do at the same time.
std::mutex& libraryMutex();

// Opens the model on the port and initialises it; nullptr with the reason in error.
Camera* openCamera(const QString& model, const QString& port, GPhotoContext& context,
                   QString* error);
// gp_camera_exit and unref; a camera already gone is only released.
void closeCamera(Camera* camera, GPhotoContext& context);

}  // namespace pelorin::gphoto

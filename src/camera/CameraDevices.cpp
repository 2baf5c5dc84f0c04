#include "camera/CameraDevices.h"

#include "camera/GPhotoCamera.h"
#include "camera/GPhotoContext.h"

#include <gphoto2/gphoto2-camera.h>
#include <gphoto2/gphoto2-list.h>

#include <mutex>

namespace pelorin {

QList<CameraDevice> detectCameras(QString* error)
{
    std::lock_guard lock(gphoto::libraryMutex());
    gphoto::GPhotoContext context;
    CameraList* list = nullptr;
    if (gp_list_new(&list) < GP_OK) {
        if (error)
            *error = QStringLiteral("cannot look for cameras: out of memory");
        return {};
    }
    QList<CameraDevice> devices;
    context.begin();
    const int code = gp_camera_autodetect(list, context.get());
    if (code < GP_OK) {
        if (error)
            *error = context.failure(QStringLiteral("cannot look for cameras"), code);
    } else {
        for (int i = 0; i < gp_list_count(list); ++i) {
            const char* name = nullptr;
            const char* port = nullptr;
            if (gp_list_get_name(list, i, &name) < GP_OK || gp_list_get_value(list, i, &port) < GP_OK)
                continue;
            devices.append({QString::fromUtf8(name), QString::fromUtf8(port)});
        }
    }
    gp_list_free(list);
    return devices;
}

CameraDevice directoryCamera(const QString& folder)
{
    return {QString::fromLatin1(gphoto::kDirectoryBrowseModel), QStringLiteral("disk:") + folder};
}

}  // namespace pelorin

#include "camera/GPhotoCamera.h"

#include "camera/GPhotoContext.h"

#include <gphoto2/gphoto2-abilities-list.h>
#include <gphoto2/gphoto2-port-info-list.h>

#include <QFileInfo>

namespace pelorin::gphoto {
namespace {

void setError(QString* error, const QString& text)
{
    if (error)
        *error = text;
}

// Chooses the driver by model name.
bool setAbilities(Camera* camera, const QString& model, GPhotoContext& context, QString* error)
{
    CameraAbilitiesList* list = nullptr;
    if (gp_abilities_list_new(&list) < GP_OK) {
        setError(error, QStringLiteral("cannot open %1: out of memory").arg(model));
        return false;
    }
    bool ok = false;
    int code = gp_abilities_list_load(list, context.get());
    if (code >= GP_OK) {
        const int index = gp_abilities_list_lookup_model(list, model.toUtf8().constData());
        CameraAbilities abilities;
        if (index < GP_OK)
            setError(error, QStringLiteral("no driver knows the camera model '%1'").arg(model));
        else if ((code = gp_abilities_list_get_abilities(list, index, &abilities)) < GP_OK
                 || (code = gp_camera_set_abilities(camera, abilities)) < GP_OK)
            setError(error, context.failure(QStringLiteral("cannot open %1").arg(model), code));
        else
            ok = true;
    } else {
        setError(error, context.failure(QStringLiteral("cannot load the camera drivers"), code));
    }
    gp_abilities_list_free(list);
    return ok;
}

// Chooses the port by path ("usb:001,004", "disk:/folder").
bool setPort(Camera* camera, const QString& port, GPhotoContext& context, QString* error)
{
    GPPortInfoList* list = nullptr;
    if (gp_port_info_list_new(&list) < GP_OK) {
        setError(error, QStringLiteral("cannot open the port %1: out of memory").arg(port));
        return false;
    }
    bool ok = false;
    int code = gp_port_info_list_load(list);
    if (code >= GP_OK) {
        const int index = gp_port_info_list_lookup_path(list, port.toUtf8().constData());
        GPPortInfo info;
        if (index < GP_OK)
            setError(error, QStringLiteral("no camera port is named '%1'").arg(port));
        else if ((code = gp_port_info_list_get_info(list, index, &info)) < GP_OK
                 || (code = gp_camera_set_port_info(camera, info)) < GP_OK)
            setError(error, context.failure(QStringLiteral("cannot open the port %1").arg(port), code));
        else
            ok = true;
    } else {
        setError(error, context.failure(QStringLiteral("cannot load the camera ports"), code));
    }
    gp_port_info_list_free(list);
    return ok;
}

}  // namespace

std::mutex& libraryMutex()
{
    static std::mutex mutex;
    return mutex;
}

Camera* openCamera(const QString& model, const QString& port, GPhotoContext& context,
                   QString* error)
{
    if (model.isEmpty() || port.isEmpty()) {
        setError(error, QStringLiteral("no camera was chosen"));
        return nullptr;
    }
    // The directory driver opens a folder that does not exist and fails only later, with a
    // generic error; say what is wrong up front.
    if (port.startsWith(QLatin1String("disk:")) && !QFileInfo(port.mid(5)).isDir()) {
        setError(error, QStringLiteral("cannot open %1: the folder does not exist").arg(port));
        return nullptr;
    }
    std::lock_guard lock(libraryMutex());
    context.begin();
    Camera* camera = nullptr;
    if (gp_camera_new(&camera) < GP_OK) {
        setError(error, QStringLiteral("cannot open %1: out of memory").arg(model));
        return nullptr;
    }
    if (!setAbilities(camera, model, context, error) || !setPort(camera, port, context, error)) {
        gp_camera_unref(camera);
        return nullptr;
    }
    const int code = gp_camera_init(camera, context.get());
    if (code < GP_OK) {
        setError(error, context.failure(QStringLiteral("cannot open %1 on %2").arg(model, port), code));
        gp_camera_unref(camera);
        return nullptr;
    }
    return camera;
}

void closeCamera(Camera* camera, GPhotoContext& context)
{
    if (!camera)
        return;
    context.begin();
    gp_camera_exit(camera, context.get());
    gp_camera_unref(camera);
}

}  // namespace pelorin::gphoto

#include "camera/CameraSession.h"

#include "camera/CameraPaths.h"
#include "camera/CameraSessionImpl.h"
#include "camera/GPhotoCamera.h"
#include "model/FileKinds.h"

#include <gphoto2/gphoto2-list.h>

#include <algorithm>

namespace pelorin {
namespace {

// Bounds of a listing: a looping or hostile file system must not keep the caller forever.
constexpr int kMaxFolderDepth = 16;
constexpr int kMaxFiles = 100000;

void setError(QString* error, const QString& text)
{
    if (error)
        *error = text;
}

QString childFolder(const QString& folder, const QString& name)
{
    return folder == QLatin1String("/") ? folder + name : folder + QLatin1Char('/') + name;
}

// A name a device may answer in a listing that cannot stand for a child of the folder.
bool isUnusableName(const QString& name)
{
    return name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..")
           || name.contains(QLatin1Char('/'));
}

bool isPhotoOrMovie(const QString& name)
{
    const QString extension = pathExtension(name);
    return isImageExtension(extension) || isVideoExtension(extension);
}

// The names of a CameraList; libgphoto2 owns the list.
QStringList listNames(CameraList* list)
{
    QStringList names;
    for (int i = 0; i < gp_list_count(list); ++i) {
        const char* name = nullptr;
        if (gp_list_get_name(list, i, &name) >= GP_OK && name) {
            const QString text = QString::fromUtf8(name);
            if (!isUnusableName(text))
                names << text;
        }
    }
    return names;
}

CameraFileInfo infoFrom(const CameraFileRef& ref, const ::CameraFileInfo& info)
{
    CameraFileInfo out;
    out.ref = ref;
    if (info.file.fields & GP_FILE_INFO_SIZE)
        out.size = static_cast<qint64>(info.file.size);
    if ((info.file.fields & GP_FILE_INFO_MTIME) && info.file.mtime > 0)
        out.modified = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(info.file.mtime));
    return out;
}

}  // namespace

CameraSession::CameraSession(std::unique_ptr<Impl> impl) : d(std::move(impl)) {}

CameraSession::~CameraSession()
{
    std::lock_guard lock(d->mutex);
    gphoto::closeCamera(d->camera, d->context);
}

std::unique_ptr<CameraSession> CameraSession::open(const CameraDevice& device, QString* error)
{
    auto impl = std::make_unique<Impl>();
    impl->device = device;
    impl->camera = gphoto::openCamera(device.name, device.port, impl->context, error);
    if (!impl->camera)
        return nullptr;
    return std::unique_ptr<CameraSession>(new CameraSession(std::move(impl)));
}

const CameraDevice& CameraSession::device() const { return d->device; }

bool CameraSession::Impl::accepts(const CameraFileRef& file, QString* error) const
{
    if (!isUsableCameraFile(file)) {
        setError(error, QStringLiteral("'%1' does not name a file on a camera").arg(cameraFilePath(file)));
        return false;
    }
    if (file.port != device.port) {
        setError(error, QStringLiteral("%1 is on another device (%2)").arg(cameraFilePath(file), file.port));
        return false;
    }
    return true;
}

QList<CameraFileInfo> CameraSession::listFiles(const std::atomic_bool* cancelled, QString* error)
{
    std::lock_guard lock(d->mutex);
    d->context.begin(cancelled);
    QList<CameraFileInfo> files;
    QStringList pending{QStringLiteral("/")};
    QList<int> depths{0};
    int seen = 0;
    QString shortfall;
    CameraList* list = nullptr;
    if (gp_list_new(&list) < GP_OK) {
        setError(error, QStringLiteral("cannot list the camera: out of memory"));
        return {};
    }
    auto fail = [&](const QString& text) {
        gp_list_free(list);
        setError(error, text);
        return QList<CameraFileInfo>{};
    };
    while (!pending.isEmpty()) {
        const QString folder = pending.takeLast();
        const int depth = depths.takeLast();
        const QByteArray folderBytes = folder.toUtf8();
        gp_list_reset(list);
        int code = gp_camera_folder_list_files(d->camera, folderBytes.constData(), list, d->context.get());
        if (code < GP_OK)
            return fail(d->context.failure(QStringLiteral("cannot list %1").arg(folder), code));
        for (const QString& name : listNames(list)) {
            if (d->context.wasCancelled())
                return fail(QStringLiteral("listing the camera was cancelled"));
            if (++seen > kMaxFiles) {
                shortfall = QStringLiteral("the camera holds more than %1 files; only the first are listed")
                                .arg(kMaxFiles);
                break;
            }
            if (!isPhotoOrMovie(name))
                continue;
            const CameraFileRef ref{d->device.port, folder, name};
            ::CameraFileInfo info{};
            code = gp_camera_file_get_info(d->camera, folderBytes.constData(), name.toUtf8().constData(),
                                           &info, d->context.get());
            // Some devices know no sizes or dates; the file is listed all the same. Any other
            // failure means the device stopped answering.
            if (code == GP_ERROR_NOT_SUPPORTED)
                info = {};
            else if (code < GP_OK)
                return fail(d->context.failure(QStringLiteral("cannot read %1").arg(cameraFilePath(ref)), code));
            files.append(infoFrom(ref, info));
        }
        if (!shortfall.isEmpty())
            break;
        gp_list_reset(list);
        code = gp_camera_folder_list_folders(d->camera, folderBytes.constData(), list, d->context.get());
        if (code < GP_OK)
            return fail(d->context.failure(QStringLiteral("cannot list %1").arg(folder), code));
        const QStringList children = listNames(list);
        if (!children.isEmpty() && depth >= kMaxFolderDepth) {
            shortfall = QStringLiteral("folders deeper than %1 levels were not searched").arg(kMaxFolderDepth);
            continue;
        }
        for (const QString& child : children) {
            pending << childFolder(folder, child);
            depths << depth + 1;
        }
    }
    gp_list_free(list);
    std::sort(files.begin(), files.end(), [](const CameraFileInfo& a, const CameraFileInfo& b) {
        const int byFolder = a.ref.folder.compare(b.ref.folder);
        return byFolder != 0 ? byFolder < 0 : a.ref.name < b.ref.name;
    });
    if (!shortfall.isEmpty())
        setError(error, shortfall);
    return files;
}

std::optional<CameraFileInfo> CameraSession::fileInfo(const CameraFileRef& file, QString* error)
{
    std::lock_guard lock(d->mutex);
    if (!d->accepts(file, error))
        return std::nullopt;
    d->context.begin();
    ::CameraFileInfo info{};
    const int code = gp_camera_file_get_info(d->camera, file.folder.toUtf8().constData(),
                                             file.name.toUtf8().constData(), &info, d->context.get());
    if (code == GP_ERROR_NOT_SUPPORTED)
        return infoFrom(file, {});
    if (code < GP_OK) {
        setError(error, d->context.failure(QStringLiteral("cannot find %1 on the camera").arg(cameraFilePath(file)), code));
        return std::nullopt;
    }
    return infoFrom(file, info);
}

bool CameraSession::remove(const CameraFileRef& file, QString* error)
{
    std::lock_guard lock(d->mutex);
    if (!d->accepts(file, error))
        return false;
    d->context.begin();
    const int code = gp_camera_file_delete(d->camera, file.folder.toUtf8().constData(),
                                           file.name.toUtf8().constData(), d->context.get());
    if (code < GP_OK) {
        setError(error, d->context.failure(QStringLiteral("cannot delete %1").arg(cameraFilePath(file)), code));
        return false;
    }
    return true;
}

}  // namespace pelorin

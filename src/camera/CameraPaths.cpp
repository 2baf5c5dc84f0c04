#include "camera/CameraPaths.h"

namespace pelorin {

QString cameraFilePath(const CameraFileRef& file)
{
    if (file.folder.isEmpty() || file.folder == QLatin1String("/"))
        return QLatin1Char('/') + file.name;
    return file.folder + QLatin1Char('/') + file.name;
}

CameraFileRef cameraFileFromPath(const QString& port, const QString& path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return {port, QStringLiteral("/"), path};
    QString folder = path.left(slash);
    if (!folder.startsWith(QLatin1Char('/')))
        folder.prepend(QLatin1Char('/'));
    return {port, folder, path.mid(slash + 1)};
}

bool isUsableCameraFile(const CameraFileRef& file)
{
    return file.isValid() && file.folder.startsWith(QLatin1Char('/'))
           && !file.name.contains(QLatin1Char('/')) && file.name != QLatin1String(".")
           && file.name != QLatin1String("..");
}

}  // namespace pelorin

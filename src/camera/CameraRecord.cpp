#include "camera/CameraCommands.h"

#include "model/DisplayTexts.h"
#include "model/FileKinds.h"
#include "model/ItemPictureImage.h"

namespace pelorin {

IKImageItem cameraRecord(const CameraFileInfo& file, const QImage& thumbnail)
{
    IKImageItem item;
    item.fileName = file.ref.name;
    const QString extension = pathExtension(file.ref.name);
    item.fileType = !isImageExtension(extension) && isVideoExtension(extension) ? QStringLiteral("Movie")
                                                                                : QStringLiteral("Image");
    item.cameraItem = file.ref;
    item.fileImage = itemPicture(thumbnail);
    if (file.size >= 0)
        item.fileSize = sizeText(static_cast<std::uint64_t>(file.size));
    item.fileModifyDate = file.modified;
    return item;
}

}  // namespace pelorin

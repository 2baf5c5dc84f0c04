#include "photo/PhotoInspection.h"

#include "model/FileDates.h"

#include <QFileInfo>

namespace pelorin {

PhotoInspection inspectPhoto(const QString& path, const QString& shownName)
{
    PhotoInspection inspection;
    inspection.photo = readPhotoProperties(path);
    if (!inspection.photo.ok())
        return inspection;
    const QFileInfo info(path);
    const FileDateReading dates = readFileDates(path);
    const PhotoFileFacts facts{shownName.isEmpty() ? info.fileName() : shownName, dates.created, dates.modified, info.size()};
    inspection.fill = fillPhotoEditorFields(inspection.photo.properties, facts);
    return inspection;
}

}  // namespace pelorin

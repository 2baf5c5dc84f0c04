#pragma once

#include "camera/CameraSession.h"
#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/IKImageItem.h"

#include <QImage>
#include <QList>

namespace pelorin {

// Downloads each file into the storage folder under its name on the device (replacing a file
// of that name) with the device's date as its modification date, and reveals each. A failed
// download is skipped with the reason and leaves no file; a cancel keeps what was finished.
CommandResult downloadCameraFiles(CameraSession& session, const QList<CameraFileRef>& files,
                                  const CommandContext& context);

// Deletes the files on the device; deleted (when given) receives exactly the ones the device
// deleted, in order; the others are skipped with the reason.
CommandResult deleteCameraFiles(CameraSession& session, const QList<CameraFileRef>& files,
                                const CommandContext& context, QList<CameraFileRef>* deleted = nullptr);

// The record of a camera file for the window: the name on the device, "Image" or "Movie" by the
// extension lists, the ref, the preview as its picture, the size text and the device's date.
// filePath stays empty: the file is on the device.
IKImageItem cameraRecord(const CameraFileInfo& file, const QImage& thumbnail);

}  // namespace pelorin

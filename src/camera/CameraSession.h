#pragma once

#include "camera/CameraDevices.h"
#include "model/CameraFileRef.h"
#include "model/SafeOutput.h"

#include <QDateTime>
#include <QImage>
#include <QList>
#include <QString>

#include <atomic>
#include <memory>
#include <optional>

namespace pelorin {

struct CameraFileInfo {
    CameraFileRef ref;
    qint64 size = -1;     // -1 when the device does not say
    QDateTime modified;   // invalid when the device does not say
};

// One open camera. Every method locks the session, so one session serves several threads (the
// window lists on one worker and downloads on another) while libgphoto2's calls on the camera
// never overlap. A device that goes away mid-call makes the call fail with the reason.
class CameraSession {
public:
    static std::unique_ptr<CameraSession> open(const CameraDevice& device, QString* error);
    ~CameraSession();
    CameraSession(const CameraSession&) = delete;
    CameraSession& operator=(const CameraSession&) = delete;

    const CameraDevice& device() const;

    // Every photo and movie on the device (the image and video extension lists), folders
    // descended, in folder then name order. A listing cut short (too deep, too many files) still
    // answers what it found, with the reason in error.
    QList<CameraFileInfo> listFiles(const std::atomic_bool* cancelled, QString* error);
    // Size and date of one file as the device last reported them (libgphoto2 keeps what it was
    // told for the session); nullopt with the reason when the device does not know the file.
    std::optional<CameraFileInfo> fileInfo(const CameraFileRef& file, QString* error);
    // The device's own preview picture of a file; null (and no error) when it has none.
    QImage thumbnail(const CameraFileRef& file, QString* error);
    // The file's bytes, unchanged, written atomically to target: a failed or cancelled download
    // leaves no file.
    // Deferred leaves forcing the bytes to disk to the caller's one flush after a batch.
    bool download(const CameraFileRef& file, const QString& target, QString* error,
                  const std::atomic_bool* cancelled = nullptr, Durability durability = Durability::FlushEach);
    bool remove(const CameraFileRef& file, QString* error);

    struct Impl;

private:
    explicit CameraSession(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> d;
};

}  // namespace pelorin

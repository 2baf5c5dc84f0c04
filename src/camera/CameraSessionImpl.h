#pragma once

// Private to src/camera: the state behind a CameraSession, shared by its .cpp files.

#include "camera/CameraSession.h"
#include "camera/GPhotoContext.h"

#include <gphoto2/gphoto2-camera.h>

#include <QByteArray>

#include <mutex>

namespace pelorin {

class AtomicFileWriter;

// Where the bytes of a file being fetched go: a file being written, or a bounded buffer. It
// lives as long as the session, because libgphoto2 may keep a fetched file (and with it the
// pointer to this sink) in its cache after the call; between calls it accepts nothing.
struct TransferSink {
    AtomicFileWriter* writer = nullptr;
    QByteArray* buffer = nullptr;
    qint64 limit = 0;      // for the buffer
    qint64 received = 0;
    QString error;         // why the sink refused bytes

    void reset() { *this = TransferSink{}; }
};

struct CameraSession::Impl {
    CameraDevice device;
    std::mutex mutex;
    gphoto::GPhotoContext context;
    Camera* camera = nullptr;
    TransferSink sink;

    // Checks that the ref names a file on this device; false with the reason otherwise.
    bool accepts(const CameraFileRef& file, QString* error) const;
    // Fetches one kind of a file into the sink; answers libgphoto2's result code.
    int fetch(const CameraFileRef& file, CameraFileType type);
    QImage pictureOfPhoto(const CameraFileRef& file);
};

}  // namespace pelorin

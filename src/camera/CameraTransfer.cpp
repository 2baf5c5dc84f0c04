#include "camera/CameraPaths.h"
#include "camera/CameraSession.h"
#include "camera/CameraSessionImpl.h"
#include "model/FileKinds.h"
#include "model/SafeOutput.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageReader>

#include <algorithm>

#include <gphoto2/gphoto2-file.h>

namespace pelorin {
namespace {

// A device's preview is a small picture; anything larger is not one.
constexpr qint64 kMaxPreviewBytes = 32 * 1024 * 1024;
// The longer side of a preview made from a photo's own pixels, as large as a device's.
constexpr int kPreviewSide = 256;

void setError(QString* error, const QString& text)
{
    if (error)
        *error = text;
}

int sinkSize(void* priv, uint64_t* size)
{
    *size = static_cast<uint64_t>(static_cast<TransferSink*>(priv)->received);
    return GP_OK;
}

// The sink only takes bytes; nothing reads a download back through libgphoto2.
int sinkRead(void*, unsigned char*, uint64_t* length)
{
    *length = 0;
    return GP_ERROR_NOT_SUPPORTED;
}

int sinkWrite(void* priv, unsigned char* data, uint64_t* length)
{
    auto* sink = static_cast<TransferSink*>(priv);
    const auto bytes = QByteArrayView(reinterpret_cast<const char*>(data), static_cast<qsizetype>(*length));
    if (sink->writer) {
        if (!sink->writer->write(bytes)) {
            sink->error = sink->writer->error();
            return GP_ERROR_IO_WRITE;
        }
    } else if (sink->buffer) {
        if (sink->received + bytes.size() > sink->limit) {
            sink->error = QStringLiteral("the preview is too large");
            return GP_ERROR_FIXED_LIMIT_EXCEEDED;
        }
        sink->buffer->append(bytes);
    } else {
        return GP_ERROR_IO_WRITE;  // a cached file written to after its call ended
    }
    sink->received += bytes.size();
    return GP_OK;
}

CameraFileHandler sinkHandler{&sinkSize, &sinkRead, &sinkWrite};

}  // namespace

// A photo the device has no preview for (no thumbnail in its EXIF, a PNG, a thumbnail that does
// not decode) is shown from its own pixels, as long as it is small enough to fetch for that.
QImage CameraSession::Impl::pictureOfPhoto(const CameraFileRef& file)
{
    if (!isImageExtension(pathExtension(file.name)))
        return {};
    QByteArray bytes;
    sink.reset();
    sink.buffer = &bytes;
    sink.limit = kMaxPreviewBytes;
    context.begin();
    const int code = fetch(file, GP_FILE_TYPE_NORMAL);
    sink.reset();
    if (code < GP_OK)
        return {};
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.isValid() && std::max(size.width(), size.height()) > kPreviewSide)
        reader.setScaledSize(size.scaled(kPreviewSide, kPreviewSide, Qt::KeepAspectRatio));
    return reader.read();
}

int CameraSession::Impl::fetch(const CameraFileRef& file, CameraFileType type)
{
    CameraFile* cameraFile = nullptr;
    int code = gp_file_new_from_handler(&cameraFile, &sinkHandler, &sink);
    if (code < GP_OK)
        return code;
    code = gp_camera_file_get(camera, file.folder.toUtf8().constData(), file.name.toUtf8().constData(),
                              type, cameraFile, context.get());
    gp_file_unref(cameraFile);
    return code;
}

QImage CameraSession::thumbnail(const CameraFileRef& file, QString* error)
{
    std::lock_guard lock(d->mutex);
    if (!d->accepts(file, error))
        return {};
    QByteArray bytes;
    d->sink.reset();
    d->sink.buffer = &bytes;
    d->sink.limit = kMaxPreviewBytes;
    d->context.begin();
    const int code = d->fetch(file, GP_FILE_TYPE_PREVIEW);
    d->sink.reset();
    if (code >= GP_OK) {
        QImage preview = QImage::fromData(bytes);  // a preview that does not decode is no preview
        return preview.isNull() ? d->pictureOfPhoto(file) : preview;
    }
    if (code == GP_ERROR_NOT_SUPPORTED || code == GP_ERROR_FIXED_LIMIT_EXCEEDED)
        return d->pictureOfPhoto(file);
    const QString failure = d->context.failure(QStringLiteral("cannot read the preview of %1")
                                                   .arg(cameraFilePath(file)), code);
    if (code != GP_ERROR) {
        setError(error, failure);
        return {};
    }
    // Drivers also answer a file they cannot make a preview of with a generic error; that
    // is a failure only when the device no longer knows the file.
    d->context.begin();
    ::CameraFileInfo info{};
    if (gp_camera_file_get_info(d->camera, file.folder.toUtf8().constData(), file.name.toUtf8().constData(),
                                &info, d->context.get()) < GP_OK)
        setError(error, failure);
    return {};
}

bool CameraSession::download(const CameraFileRef& file, const QString& target, QString* error,
                             const std::atomic_bool* cancelled, Durability durability)
{
    std::lock_guard lock(d->mutex);
    if (!d->accepts(file, error))
        return false;
    AtomicFileWriter writer(target, {}, durability);
    if (!writer.open()) {
        setError(error, writer.error());
        return false;
    }
    // The device's own listing of the file's size is what the download must come to.
    ::CameraFileInfo info{};
    d->context.begin();
    const bool sized = gp_camera_file_get_info(d->camera, file.folder.toUtf8().constData(), file.name.toUtf8().constData(),
                                               &info, d->context.get()) >= GP_OK
                       && (info.file.fields & GP_FILE_INFO_SIZE);
    writer.setCheck([&](const QString& pending) {
        const qint64 got = QFileInfo(pending).size();
        if (got <= 0)
            return QStringLiteral("the camera sent no bytes");
        if (sized && got != qint64(info.file.size))
            return QStringLiteral("the camera sent %1 bytes of the %2 it lists").arg(got).arg(qint64(info.file.size));
        return QString();
    });
    d->sink.reset();
    d->sink.writer = &writer;
    d->context.begin(cancelled);
    const int code = d->fetch(file, GP_FILE_TYPE_NORMAL);
    const QString sinkError = d->sink.error;
    d->sink.reset();
    const QString what = QStringLiteral("cannot download %1").arg(cameraFilePath(file));
    if (code < GP_OK) {
        setError(error, sinkError.isEmpty() ? d->context.failure(what, code)
                                            : QStringLiteral("%1: %2").arg(what, sinkError));
        return false;
    }
    // A driver that ignores the cancel request still finishes; the user asked for no file.
    if (d->context.wasCancelled()) {
        setError(error, QStringLiteral("%1: cancelled").arg(what));
        return false;
    }
    if (!writer.commit()) {
        setError(error, QStringLiteral("%1: %2").arg(what, writer.error()));
        return false;
    }
    return true;
}

}  // namespace pelorin

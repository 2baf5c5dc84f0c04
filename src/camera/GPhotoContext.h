#pragma once

// Private to src/camera: the only header besides GPhotoCamera.h that includes libgphoto2.

#include <gphoto2/gphoto2-context.h>

#include <QString>
#include <QStringList>

#include <atomic>

namespace pelorin::gphoto {

// One GPContext whose callbacks collect what libgphoto2 and the driver report during a call, so
// that a failure carries the driver's own words, and nothing is ever printed. Not thread-safe:
// its owner serialises the calls that use it.
class GPhotoContext {
public:
    GPhotoContext();
    ~GPhotoContext();
    GPhotoContext(const GPhotoContext&) = delete;
    GPhotoContext& operator=(const GPhotoContext&) = delete;

    GPContext* get() const { return context_; }

    // Starts a call: forgets earlier messages and asks the driver to stop a transfer as soon as
    // *cancelled turns true (when given).
    void begin(const std::atomic_bool* cancelled = nullptr);
    bool wasCancelled() const { return cancelled_ && cancelled_->load(); }

    // "<what>: <libgphoto2's reason> (<the driver's messages>)".
    QString failure(const QString& what, int code) const;

private:
    static void onError(GPContext*, const char* text, void* self);
    static void onStatus(GPContext*, const char* text, void* self);
    static GPContextFeedback onCancel(GPContext*, void* self);

    GPContext* context_ = nullptr;
    QStringList errors_;
    QStringList statuses_;
    const std::atomic_bool* cancelled_ = nullptr;
};

}  // namespace pelorin::gphoto

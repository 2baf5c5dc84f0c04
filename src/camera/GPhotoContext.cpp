#include "camera/GPhotoContext.h"

#include <gphoto2/gphoto2-port-result.h>
#include <gphoto2/gphoto2-result.h>

namespace pelorin::gphoto {
namespace {

// A misbehaving driver could send endless messages; a reason needs only the first few.
constexpr qsizetype kMaxMessages = 8;

void keep(QStringList& list, const char* text)
{
    if (!text || list.size() >= kMaxMessages)
        return;
    const QString message = QString::fromUtf8(text).trimmed();
    if (!message.isEmpty() && !list.contains(message))
        list.append(message);
}

}  // namespace

GPhotoContext::GPhotoContext() : context_(gp_context_new())
{
    gp_context_set_error_func(context_, &GPhotoContext::onError, this);
    gp_context_set_status_func(context_, &GPhotoContext::onStatus, this);
    // Messages are things the driver wants the user to read, so they count as errors.
    gp_context_set_message_func(context_, &GPhotoContext::onError, this);
    gp_context_set_cancel_func(context_, &GPhotoContext::onCancel, this);
}

GPhotoContext::~GPhotoContext() { gp_context_unref(context_); }

void GPhotoContext::begin(const std::atomic_bool* cancelled)
{
    errors_.clear();
    statuses_.clear();
    cancelled_ = cancelled;
}

QString GPhotoContext::failure(const QString& what, int code) const
{
    if (code == GP_ERROR_CANCEL || wasCancelled())
        return QStringLiteral("%1: cancelled").arg(what);
    QString reason = QString::fromUtf8(gp_result_as_string(code));
    // Status texts say what the driver was doing; they help only when it gave no error text.
    const QStringList& detail = errors_.isEmpty() ? statuses_ : errors_;
    if (!detail.isEmpty())
        reason += QStringLiteral(" (%1)").arg(detail.join(QStringLiteral("; ")));
    return QStringLiteral("%1: %2").arg(what, reason);
}

void GPhotoContext::onError(GPContext*, const char* text, void* self)
{
    keep(static_cast<GPhotoContext*>(self)->errors_, text);
}

void GPhotoContext::onStatus(GPContext*, const char* text, void* self)
{
    keep(static_cast<GPhotoContext*>(self)->statuses_, text);
}

GPContextFeedback GPhotoContext::onCancel(GPContext*, void* self)
{
    return static_cast<GPhotoContext*>(self)->wasCancelled() ? GP_CONTEXT_FEEDBACK_CANCEL
                                                             : GP_CONTEXT_FEEDBACK_OK;
}

}  // namespace pelorin::gphoto

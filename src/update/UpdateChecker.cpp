#include "update/UpdateChecker.h"

#include "update/UpdateDocument.h"
#include "update/VersionCompare.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <algorithm>

namespace pelorin {

namespace {

QUrl documentUrlFor(QString server)
{
    while (server.endsWith(u'/'))
        server.chop(1);
    return QUrl(server + QStringLiteral("/product/mediametaVersion.plist"));
}

QString describeError(QNetworkReply* reply)
{
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid() && status.toInt() >= 400)
        return QStringLiteral("The server answered with status %1.").arg(status.toInt());
    return QStringLiteral("The update server could not be reached: %1").arg(reply->errorString());
}

}  // namespace

UpdateChecker::UpdateChecker(const QString& server, const QString& currentVersion, QObject* parent)
    : QObject(parent),
      url_(documentUrlFor(server)),
      current_(currentVersion.isEmpty() ? QStringLiteral(PELORIN_VERSION) : currentVersion),
      network_(new QNetworkAccessManager(this))
{
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, [this] {
        stop(QStringLiteral("The server did not answer within %1 seconds.")
                 .arg(std::chrono::duration<double>(timeout_).count()));
    });
}

void UpdateChecker::check(bool userAsked)
{
    if (reply_) {
        // The earlier request's answer must not reach anyone.
        reply_->disconnect(this);
        reply_->abort();
        reply_->deleteLater();
    }
    userAsked_ = userAsked;
    stopReason_.clear();

    QNetworkRequest request(url_);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(5);
    QNetworkReply* reply = network_->get(request);
    reply_ = reply;

    // `total` is the announced length (-1 when none): a long answer is refused before it arrives.
    connect(reply, &QNetworkReply::downloadProgress, this, [this](qint64 received, qint64 total) {
        if (std::max(received, total) > kMaxUpdateDocumentSize)
            stop(QStringLiteral("The server's answer is larger than %1 KiB.").arg(kMaxUpdateDocumentSize / 1024));
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply] { finish(reply); });
    timer_.start(timeout_);
}

void UpdateChecker::stop(const QString& reason)
{
    if (!reply_ || !stopReason_.isEmpty())
        return;
    stopReason_ = reason;
    reply_->abort();  // emits finished, which reports the reason
}

void UpdateChecker::finish(QNetworkReply* reply)
{
    timer_.stop();
    reply_ = nullptr;
    reply->deleteLater();

    if (!stopReason_.isEmpty())
        return fail(stopReason_);
    if (reply->error() != QNetworkReply::NoError)
        return fail(describeError(reply));
    const QByteArray bytes = reply->read(kMaxUpdateDocumentSize + 1);
    const UpdateDocument document = parseUpdateDocument(bytes);
    if (!document.error.isEmpty())
        return fail(document.error);
    if (isNewerVersion(document.lastestVersion, current_))
        emit updateAvailable(document.lastestVersion, current_, document.whatsNew);
    else if (userAsked_)
        emit upToDate(current_);
}

void UpdateChecker::fail(const QString& reason)
{
    if (userAsked_)
        emit checkFailed(reason);
}

}  // namespace pelorin

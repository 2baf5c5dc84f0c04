#pragma once
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QUrl>

#include <chrono>

class QNetworkAccessManager;
class QNetworkReply;

namespace pelorin {

// Fetches the maker's version document and says whether a newer version exists. Runs on the
// event loop; the document is read in memory and nothing is written to disk.
//
// Failures and "you are up to date" are told only to a user who asked (an automatic check stays
// silent unless there is an update). A new check replaces the one still running.
class UpdateChecker : public QObject {
    Q_OBJECT
public:
    // `server` is the site's root, e.g. "https://example.com"; an empty `currentVersion` means
    // this program's own version.
    explicit UpdateChecker(const QString& server, const QString& currentVersion = QString(), QObject* parent = nullptr);

    void check(bool userAsked);
    bool isChecking() const { return !reply_.isNull(); }

    QUrl documentUrl() const { return url_; }
    QString currentVersion() const { return current_; }
    void setTimeout(std::chrono::milliseconds timeout) { timeout_ = timeout; }

signals:
    void updateAvailable(const QString& newest, const QString& current, const QString& whatsNew);
    void upToDate(const QString& current);
    void checkFailed(const QString& reason);

private:
    void stop(const QString& reason);
    void finish(QNetworkReply* reply);
    void fail(const QString& reason);

    QUrl url_;
    QString current_;
    QNetworkAccessManager* network_;
    QPointer<QNetworkReply> reply_;
    QTimer timer_;
    std::chrono::milliseconds timeout_{15000};
    bool userAsked_ = false;
    QString stopReason_;
};

}  // namespace pelorin

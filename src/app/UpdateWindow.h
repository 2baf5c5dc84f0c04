#pragma once
#include <QDialog>
#include <QUrl>

#include <functional>

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace pelorin {

// Tells the user that a newer version exists, with its news, and offers the download page.
class UpdateWindow : public QDialog {
    Q_OBJECT
public:
    explicit UpdateWindow(QWidget* parent = nullptr);

    // `whatsNew` as the server sends it ("*" for a line break).
    void setUpdate(const QString& newest, const QString& current, const QString& whatsNew);
    void setDownloadPage(const QUrl& page);
    QUrl downloadPage() const { return downloadPage_; }

    // Opens the download page; the desktop's browser unless replaced.
    std::function<void(const QUrl&)> openUrl;

private:
    QLabel* newVersion_;
    QLabel* currentVersion_;
    QPlainTextEdit* whatsNew_;
    QPushButton* download_;
    QUrl downloadPage_;
};

// Tells the user, who asked, that this is the newest version.
class NoUpdateWindow : public QDialog {
    Q_OBJECT
public:
    explicit NoUpdateWindow(QWidget* parent = nullptr);
    void setCurrentVersion(const QString& current);

private:
    QLabel* message_;
};

// "The update check failed." with the reason, without blocking the window; closes itself.
void showUpdateCheckFailure(QWidget* parent, const QString& reason);

}  // namespace pelorin

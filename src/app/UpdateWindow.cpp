#include "app/UpdateWindow.h"

#include "ui/DialogLook.h"
#include "update/UpdateDocument.h"

#include <QDesktopServices>
#include <QFile>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace pelorin {

namespace {

// The shared dialog rules cover the alert too: a QMessageBox is a QDialog.
const char* const kLook = R"(
QLabel#newversionlab { font-weight: bold; font-size: 13pt; }
QPlainTextEdit { background-color: #2C3E50; color: #FFFFFF; border: 1px solid #4F6275;
    border-radius: 4px; padding: 4px; }
QPushButton { min-width: 64px; }
QPushButton:disabled { background-color: #3E5164; color: #8A9BAC; }
QLabel#qt_msgbox_informativelabel { min-width: 300px; }
)";

const QString kWindowTitle = QStringLiteral("Software Update");

// The application's icon; the resource may be absent (a test build), and then the window
// simply goes without it.
QLabel* appIcon(QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setObjectName(QStringLiteral("updateIconLabel"));
    const QString path = QStringLiteral(":/icons/pelorin.svg");
    const QPixmap pixmap = QFile::exists(path) ? QIcon(path).pixmap(64, 64) : QPixmap();
    if (pixmap.isNull()) {
        label->hide();
    } else {
        label->setPixmap(pixmap);
        label->setFixedSize(64, 64);
    }
    label->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    return label;
}

QLabel* wrappingLabel(const char* name, QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);  // versions come from the network: never markup
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QString look()
{
    return dialogStyleSheet(QString::fromLatin1(kLook));
}

// The window's icon on the left, its texts and buttons beside it.
void layOutBesideIcon(QDialog* window, QVBoxLayout* text, const QList<QWidget*>& buttons)
{
    text->addLayout(trailingButtonRow(buttons));
    auto* layout = new QHBoxLayout(window);
    layout->setContentsMargins(18, 18, 18, 14);
    layout->setSpacing(16);
    layout->addWidget(appIcon(window), 0, Qt::AlignTop);
    layout->addLayout(text, 1);
}

}  // namespace

UpdateWindow::UpdateWindow(QWidget* parent)
    : QDialog(parent), openUrl([](const QUrl& url) { QDesktopServices::openUrl(url); })
{
    setObjectName(QStringLiteral("UpdateWindow"));
    setWindowTitle(kWindowTitle);
    setStyleSheet(look());
    setMinimumSize(540, 360);

    newVersion_ = wrappingLabel("newversionlab", this);
    currentVersion_ = wrappingLabel("currentversionlab", this);
    whatsNew_ = new QPlainTextEdit(this);
    whatsNew_->setObjectName(QStringLiteral("whatsnewContentView"));
    whatsNew_->setReadOnly(true);
    whatsNew_->setMinimumHeight(160);

    // Not Now stays an auto-default button: Enter while it has the focus chooses it.
    auto* notNow = new QPushButton(QStringLiteral("Not Now"), this);
    notNow->setObjectName(QStringLiteral("notNowButton"));
    download_ = dialogButton(this, QStringLiteral("Download"), "downloadButton", true);
    download_->setEnabled(false);
    connect(notNow, &QPushButton::clicked, this, &QDialog::hide);
    connect(download_, &QPushButton::clicked, this, [this] {
        if (openUrl && downloadPage_.isValid())
            openUrl(downloadPage_);
        hide();
    });

    auto* text = new QVBoxLayout;
    text->setSpacing(8);
    text->addWidget(newVersion_);
    text->addWidget(currentVersion_);
    text->addSpacing(4);
    text->addWidget(whatsNew_, 1);
    layOutBesideIcon(this, text, {notNow, download_});
}

void UpdateWindow::setUpdate(const QString& newest, const QString& current, const QString& whatsNew)
{
    newVersion_->setText(QStringLiteral("Quorvane Pelorin %1 is available.").arg(newest));
    currentVersion_->setText(
        QStringLiteral("You are using %1 version. Would you like to download it now?").arg(current));
    whatsNew_->setPlainText(whatsNewDisplayText(whatsNew));
}

void UpdateWindow::setDownloadPage(const QUrl& page)
{
    downloadPage_ = page;
    download_->setEnabled(page.isValid() && !page.isEmpty());
}

NoUpdateWindow::NoUpdateWindow(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("noUpdateWindow"));
    setWindowTitle(kWindowTitle);
    setStyleSheet(look());
    setMinimumWidth(420);

    message_ = wrappingLabel("noUpdateLabel", this);
    QPushButton* ok = dialogButton(this, QStringLiteral("OK"), "noUpdateOkButton", true);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);

    auto* text = new QVBoxLayout;
    text->setSpacing(14);
    text->addWidget(message_);
    text->addStretch(1);
    layOutBesideIcon(this, text, {ok});
}

void NoUpdateWindow::setCurrentVersion(const QString& current)
{
    message_->setText(QStringLiteral("Quorvane Pelorin %1 is the newest version.").arg(current));
}

void showUpdateCheckFailure(QWidget* parent, const QString& reason)
{
    auto* box = new QMessageBox(parent);
    box->setObjectName(QStringLiteral("updateCheckFailedAlert"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setStyleSheet(look());
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(kWindowTitle);
    box->setText(QStringLiteral("The update check failed."));
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(reason);
    box->addButton(QStringLiteral(" Ok "), QMessageBox::AcceptRole);
    box->setWindowModality(Qt::NonModal);
    box->show();
}

}  // namespace pelorin

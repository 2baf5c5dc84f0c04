#include "app/UpdateActions.h"

#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "app/UpdateWindow.h"
#include "model/Preferences.h"
#include "update/UpdateChecker.h"

namespace pelorin {

UpdateActions::UpdateActions(AppDelegate& app)
    : QObject(&app),
      app_(app),
      checker_(new UpdateChecker(app.preferences().deployment().updateServer, QStringLiteral(PELORIN_VERSION), this)),
      updateWindow_(new UpdateWindow(app.window())),
      noUpdateWindow_(new NoUpdateWindow(app.window()))
{
    updateWindow_->setDownloadPage(QUrl(app.preferences().deployment().downloadPage));
    updateWindow_->openUrl = [this](const QUrl& url) { app_.openUrl(url); };
    connect(checker_, &UpdateChecker::updateAvailable, this,
            [this](const QString& newest, const QString& current, const QString& whatsNew) {
                updateWindow_->setUpdate(newest, current, whatsNew);
                updateWindow_->show();
                updateWindow_->raise();
            });
    connect(checker_, &UpdateChecker::upToDate, this, [this](const QString& current) {
        noUpdateWindow_->setCurrentVersion(current);
        noUpdateWindow_->show();
        noUpdateWindow_->raise();
    });
    connect(checker_, &UpdateChecker::checkFailed, this,
            [this](const QString& reason) { showUpdateCheckFailure(app_.window(), reason); });
}

void UpdateActions::CheckforUpdateAction()
{
    checker_->check(true);
}

}  // namespace pelorin

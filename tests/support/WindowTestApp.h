#pragma once
// The editor as the window tests start it: offscreen, revealing nothing, with its preferences in
// a test's own settings file, so that no test touches the user's store, storage folder or the
// network.
#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "app/DesktopReveal.h"
#include "model/Preferences.h"
#include "ui/WindowLook.h"

#include <QApplication>
#include <QMap>
#include <QSettings>
#include <QTest>
#include <memory>

// Once per test program, before the first window. (Resources cannot be initialised from inside
// a namespace.)
inline void prepareWindowTests()
{
    Q_INIT_RESOURCE(pelorin);
    // As the editor's main() does: the players need the FFmpeg backend.
    if (qEnvironmentVariableIsEmpty("QT_MEDIA_BACKEND"))
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    pelorin::DesktopReveal::setEnabled(false);
    pelorin::applyWindowLook(*qApp);
}

namespace pelorin::test {

// Starts the editor through its three stages with the storage folder (when given; an empty one
// keeps what the file holds, as on a second start) and any other settings written first. Maps get a closed loopback port (their offline state) unless told otherwise.
inline std::unique_ptr<AppDelegate> startTestWindow(const QString& settingsFile, const QString& storageFolder,
                                                    const QMap<QString, QString>& settings = {})
{
    {
        QSettings store(settingsFile, QSettings::IniFormat);
        if (!storageFolder.isEmpty())
            store.setValue(QStringLiteral("storagePath"), storageFolder);
        store.setValue(DeploymentKey::MapTileUrl, QStringLiteral("http://127.0.0.1:9/{z}/{x}/{y}.png"));
        for (auto it = settings.begin(); it != settings.end(); ++it)
            store.setValue(it.key(), it.value());
    }
    auto app = std::make_unique<AppDelegate>(
        std::make_unique<Preferences>(std::make_unique<QSettings>(settingsFile, QSettings::IniFormat)));
    app->openUrl = [](const QUrl&) {};
    app->awakeFromNib();
    app->applicationDidFinishLaunching();
    if (!QTest::qWaitForWindowExposed(app->window()))
        return nullptr;
    return app;
}

}  // namespace pelorin::test

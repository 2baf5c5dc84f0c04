#include "app/DesktopReveal.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMutex>
#include <QUrl>

namespace pelorin {

namespace {

QMutex revealMutex;
bool revealEnabled = qEnvironmentVariableIsEmpty("PELORIN_NO_REVEAL");
QStringList recorded;

bool record(const QString& request)
{
    QMutexLocker lock(&revealMutex);
    recorded.append(request);
    return revealEnabled;
}

bool showItemsOverDBus(const QStringList& files)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    const QString service = QStringLiteral("org.freedesktop.FileManager1");
    if (!bus.isConnected() || !bus.interface())
        return false;
    // A file manager that is not running yet may be started by the bus on request.
    const bool registered = bus.interface()->isServiceRegistered(service);
    const QStringList activatable = bus.interface()->activatableServiceNames();
    if (!registered && !activatable.contains(service))
        return false;
    // A file manager asked to select thousands of files at once becomes unusable; beyond a few
    // hundred the folder is shown with the first of them selected.
    constexpr qsizetype kMaxSelected = 500;
    QStringList uris;
    for (const QString& file : files.size() > kMaxSelected ? files.mid(0, 1) : files)
        uris.append(QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath()).toString());
    QDBusMessage call = QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/FileManager1"),
                                                       service, QStringLiteral("ShowItems"));
    call << uris << QString();
    return bus.send(call);
}

}  // namespace

bool DesktopReveal::showFiles(const QStringList& files)
{
    if (files.isEmpty() || !record(QStringLiteral("show:") + files.join(QLatin1Char('|'))))
        return true;
    return showItemsOverDBus(files)
           || QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(files.first()).absolutePath()));
}

bool DesktopReveal::openFolder(const QString& folder)
{
    if (folder.isEmpty() || !record(QStringLiteral("open:") + folder))
        return true;
    return QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
}

void DesktopReveal::setEnabled(bool enabled)
{
    QMutexLocker lock(&revealMutex);
    revealEnabled = enabled;
}

QStringList DesktopReveal::recordedRequests()
{
    QMutexLocker lock(&revealMutex);
    return recorded;
}

void DesktopReveal::clearRecorded()
{
    QMutexLocker lock(&revealMutex);
    recorded.clear();
}

}  // namespace pelorin

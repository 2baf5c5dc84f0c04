#include "app/CommandRunner.h"

#include "app/DesktopReveal.h"

#include <QFileInfo>

#include <QCoreApplication>
#include <QMetaObject>
#include <QMutex>
#include <QThread>
#include <memory>

namespace pelorin {

namespace {

// What the command asked to reveal, gathered from its worker threads and shown once at the end.
struct RevealRequests {
    QMutex mutex;
    QStringList files;
    QString folder;
};

}  // namespace

CommandRunner::CommandRunner(QObject* parent) : QObject(parent)
{
    pool_.setMaxThreadCount(1);
}

CommandRunner::~CommandRunner()
{
    cancelled_ = true;
    pool_.waitForDone();
}

bool CommandRunner::run(const QString& title, const QString& storageFolder, EngineCommand command, CommandDone done)
{
    if (busy_)
        return false;
    busy_ = true;
    cancelled_ = false;
    emit started(title);
    auto reveals = std::make_shared<RevealRequests>();
    pool_.start([this, title, storageFolder, command = std::move(command), done = std::move(done), reveals] {
        CommandContext context;
        context.storageFolder = storageFolder;
        context.cancelled = &cancelled_;
        context.reveal.revealFile = [reveals](const QString& file) {
            QMutexLocker lock(&reveals->mutex);
            if (!reveals->files.contains(file))
                reveals->files.append(file);
        };
        context.reveal.openFolder = [reveals](const QString& folder) {
            QMutexLocker lock(&reveals->mutex);
            reveals->folder = folder;
        };
        context.progress = [this](int doneCount, int total) {
            QMetaObject::invokeMethod(this, [this, doneCount, total] { emit progressed(doneCount, total); },
                                      Qt::QueuedConnection);
        };
        const CommandResult result = command(context);
        QMetaObject::invokeMethod(
            this,
            [this, title, result, done, reveals] {
                busy_ = false;
                const bool wasCancelled = cancelled_.load();
                CommandResult shown = result;
                bool revealed = true;
                QString where = reveals->folder;
                if (!reveals->files.isEmpty()) {
                    revealed = DesktopReveal::showFiles(reveals->files);
                    where = QFileInfo(reveals->files.first()).absolutePath();
                } else if (!reveals->folder.isEmpty()) {
                    revealed = DesktopReveal::openFolder(reveals->folder);
                }
                if (!revealed)
                    shown.noteOnce(QStringLiteral("No file manager answered to show the files; they are in %1").arg(where));
                if (done)
                    done(shown);
                emit ended(title, shown, wasCancelled);
            },
            Qt::QueuedConnection);
    });
    return true;
}

void CommandRunner::waitForDone()
{
    while (busy_) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        QThread::msleep(5);
    }
}

}  // namespace pelorin

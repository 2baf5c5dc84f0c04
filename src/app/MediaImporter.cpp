#include "app/MediaImporter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMetaObject>
#include <QPointer>
#include <QThread>
#include <QtConcurrent/QtConcurrentMap>

namespace pelorin {

namespace {
// Files read in parallel before their records go to the window together.
constexpr int kBatchSize = 48;
}

MediaImporter::MediaImporter(QObject* parent) : QObject(parent)
{
    coordinator_.setMaxThreadCount(1);
    readers_.setMaxThreadCount(std::max(2, QThread::idealThreadCount()));
}

MediaImporter::~MediaImporter()
{
    cancelled_ = true;
    coordinator_.waitForDone();
    readers_.waitForDone();
}

void MediaImporter::import(const QStringList& paths, ImportScope scope)
{
    if (paths.isEmpty())
        return;
    if (running_ == 0)
        cancelled_ = false;
    ++running_;
    coordinator_.start([this, paths, scope] { run(paths, scope); });
}

void MediaImporter::cancel()
{
    cancelled_ = true;
}

void MediaImporter::run(const QStringList& paths, ImportScope scope)
{
    const QStringList files = expandImportPaths(paths, scope, &cancelled_);
    int delivered = 0;
    for (qsizetype start = 0; start < files.size() && !cancelled_; start += kBatchSize) {
        const QStringList batch = files.mid(start, kBatchSize);
        const QList<std::optional<IKImageItem>> read =
            QtConcurrent::blockingMapped<QList<std::optional<IKImageItem>>>(&readers_, batch, &readImportRecord);
        QList<IKImageItem> records;
        for (const auto& record : read) {
            if (record)
                records.append(*record);
        }
        delivered += int(records.size());
        const int done = int(start + batch.size());
        const int total = int(files.size());
        QMetaObject::invokeMethod(
            this,
            [this, records, done, total] {
                emit recordsReady(records);
                emit progress(done, total);
            },
            Qt::QueuedConnection);
    }
    QMetaObject::invokeMethod(
        this,
        [this, delivered] {
            --running_;
            emit finished(delivered);
        },
        Qt::QueuedConnection);
}

void MediaImporter::waitForDone()
{
    while (running_ > 0) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        QThread::msleep(5);
    }
    QCoreApplication::processEvents();
}

}  // namespace pelorin

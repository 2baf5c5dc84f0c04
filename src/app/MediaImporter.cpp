#include "app/MediaImporter.h"

#include "app/BackgroundThreads.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMetaObject>
#include <QThread>
#include <QtConcurrent/QtConcurrentMap>

namespace pelorin {

namespace {
// Files read in parallel before their records are queued for the window together.
constexpr int kBatchSize = 48;
// The window takes queued records this often, in pieces of at most kSliceRows, until
// kSliceBudgetMs have gone by: short enough that painting and input never wait long, frequent
// enough that a big folder still fills in a few seconds.
constexpr int kFeedIntervalMs = 12;
constexpr int kSliceRows = 64;
constexpr qint64 kSliceBudgetMs = 8;
}  // namespace

MediaImporter::MediaImporter(QObject* parent) : QObject(parent)
{
    coordinator_.setMaxThreadCount(1);
    readers_.setMaxThreadCount(std::max(2, QThread::idealThreadCount()));
    feed_.setObjectName(QStringLiteral("importFeed"));
    feed_.setInterval(kFeedIntervalMs);
    connect(&feed_, &QTimer::timeout, this, &MediaImporter::feedSlice);
}

MediaImporter::~MediaImporter()
{
    cancel();
    coordinator_.waitForDone();
    readers_.waitForDone();
}

void MediaImporter::import(const QStringList& paths, ImportScope scope)
{
    if (paths.isEmpty())
        return;
    auto cancelled = std::make_shared<std::atomic_bool>(false);
    cancelFlags_.push_back(cancelled);
    ++running_;
    coordinator_.start([this, paths, scope, cancelled] { run(paths, scope, *cancelled); });
}

void MediaImporter::cancel()
{
    for (const auto& flag : cancelFlags_)
        flag->store(true);
    // What was read but not shown yet goes; each import's last word stays, so that it still
    // reports how many records it did hand over.
    std::lock_guard lock(queueMutex_);
    for (Delivery& delivery : queue_)
        delivery.records.clear();
}

void MediaImporter::run(const QStringList& paths, ImportScope scope, const std::atomic_bool& cancelled)
{
    yieldCoresToWindow();
    const QStringList files = expandImportPaths(paths, scope, &cancelled);
    const int found = int(files.size());
    QMetaObject::invokeMethod(
        this, [this, found] { emit expecting(found); }, Qt::QueuedConnection);
    const auto read = [](const QString& path) {
        yieldCoresToWindow();
        return readImportRecord(path);
    };
    for (qsizetype start = 0; start < files.size() && !cancelled; start += kBatchSize) {
        const QStringList batch = files.mid(start, kBatchSize);
        const QList<std::optional<IKImageItem>> records =
            QtConcurrent::blockingMapped<QList<std::optional<IKImageItem>>>(&readers_, batch, read);
        Delivery delivery;
        for (const auto& record : records) {
            if (record)
                delivery.records.append(*record);
        }
        delivery.done = int(start + batch.size());
        delivery.total = int(files.size());
        if (!cancelled)
            hand(std::move(delivery));
    }
    Delivery end;
    end.last = true;
    hand(std::move(end));
}

void MediaImporter::hand(Delivery delivery)
{
    std::lock_guard lock(queueMutex_);
    queue_.push_back(std::move(delivery));
    if (feedRequested_)
        return;
    feedRequested_ = true;
    QMetaObject::invokeMethod(
        this, [this] { feed_.start(); }, Qt::QueuedConnection);
}

void MediaImporter::feedSlice()
{
    QElapsedTimer budget;
    budget.start();
    while (budget.elapsed() < kSliceBudgetMs) {
        QList<IKImageItem> slice;
        int done = -1, total = 0;
        bool last = false;
        {
            std::lock_guard lock(queueMutex_);
            if (queue_.empty()) {
                feedRequested_ = false;
                feed_.stop();
                return;
            }
            Delivery& front = queue_.front();
            const qsizetype take = std::min<qsizetype>(kSliceRows, front.records.size());
            slice = front.records.mid(0, take);
            front.records.remove(0, take);
            if (front.records.isEmpty()) {
                done = front.done;
                total = front.total;
                last = front.last;
                queue_.pop_front();
            }
        }
        if (!slice.isEmpty()) {
            handedThisImport_ += int(slice.size());
            emit recordsReady(slice);
        }
        if (last) {
            const int handed = handedThisImport_;
            handedThisImport_ = 0;
            if (!cancelFlags_.empty())
                cancelFlags_.pop_front();
            --running_;
            emit finished(handed);
        } else if (done >= 0) {
            emit progress(done, total);
        }
    }
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

#pragma once
#include "media/ImportRecords.h"

#include <QList>
#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>

namespace pelorin {

// Imports files without blocking the window: the files are read on a small pool of threads and
// handed back in the order the user gave them. The records wait in a queue that the window takes
// in short slices on a timer, so that however fast the readers are, the window never spends more
// than a few milliseconds at a time adding rows and always gets to paint and answer the user in
// between. Imports started one after another run one after another.
class MediaImporter : public QObject {
    Q_OBJECT
public:
    explicit MediaImporter(QObject* parent = nullptr);
    ~MediaImporter() override;

    void import(const QStringList& paths, ImportScope scope);
    bool isBusy() const { return running_ > 0; }
    // Stops every import started so far; records read but not yet handed over are dropped. An
    // import started after this runs in full.
    void cancel();
    // Runs the event loop until every import has delivered its records (tests).
    void waitForDone();

signals:
    // How many files an import has found, before their records come: room for them can be made
    // at once instead of growing the list again and again.
    void expecting(int files);
    void recordsReady(const QList<pelorin::IKImageItem>& records);
    void progress(int done, int total);
    void finished(int imported);

private:
    // What the readers hand over: a batch of records, how far the import is, and whether it is
    // the import's last word.
    struct Delivery {
        QList<IKImageItem> records;
        int done = 0;
        int total = 0;
        bool last = false;
    };

    void run(const QStringList& paths, ImportScope scope, const std::atomic_bool& cancelled);
    void hand(Delivery delivery);
    void feedSlice();

    QThreadPool coordinator_;
    QThreadPool readers_;
    // One flag per import not yet finished, oldest first (window thread only).
    std::deque<std::shared_ptr<std::atomic_bool>> cancelFlags_;
    int running_ = 0;
    int handedThisImport_ = 0;

    std::mutex queueMutex_;
    std::deque<Delivery> queue_;  // guarded by queueMutex_
    bool feedRequested_ = false;  // guarded by queueMutex_
    QTimer feed_;
};

}  // namespace pelorin

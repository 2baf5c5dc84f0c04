#pragma once
#include "app/ImportRecords.h"

#include <QFuture>
#include <QObject>
#include <QThreadPool>
#include <atomic>

namespace pelorin {

// Imports files without blocking the window: the files are read on a small pool of threads and
// handed back in the order the user gave them, in batches, so that the views refresh a few times
// a second instead of once per file. Imports started one after another run one after another.
class MediaImporter : public QObject {
    Q_OBJECT
public:
    explicit MediaImporter(QObject* parent = nullptr);
    ~MediaImporter() override;

    void import(const QStringList& paths, ImportScope scope);
    bool isBusy() const { return running_ > 0; }
    void cancel();
    // Runs the event loop until every import has delivered its records (tests).
    void waitForDone();

signals:
    void recordsReady(const QList<pelorin::IKImageItem>& records);
    void progress(int done, int total);
    void finished(int imported);

private:
    void run(const QStringList& paths, ImportScope scope);

    QThreadPool coordinator_;
    QThreadPool readers_;
    std::atomic_bool cancelled_{false};
    int running_ = 0;
};

}  // namespace pelorin

// How smoothly the window keeps answering while it imports a big folder: the real window
// (offscreen) imports, through its Import Folder action, a folder of real copies of small photos,
// songs and movies, and waits for the records and the thumbnails on screen. A precise 5 ms timer
// notes every gap of the event loop. Prints the total time, the longest gap, the 99th
// percentile, how many gaps passed 50 ms and the peak resident memory.
//
//   build/bench/import_stall_bench [FILES] [RUNS] [FOLDER]    (default 10000 files, 1 run)
// A FOLDER given is filled once and kept, so that later runs (under perf, say) time only the
// import.
#include "app/AppDelegate.h"
#include "app/CommandMenus.h"
#include "app/ImportedItemsModel.h"
#include "app/MediaImporter.h"
#include "app/PhotoBrowserModel.h"
#include "app/ThumbnailLoader.h"
#include "WindowTestApp.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

#include <sys/resource.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace pelorin;

namespace {

QElapsedTimer sinceStart;

// Small real files of each kind; names are varied as cameras, phones and people name them.
const char* const kSamples[] = {
    "et-GPS.jpg", "exiv2-nikon-d70.jpg", "mde-Canon_PowerShot_S330.jpg", "pil-iptc_NokiaN70.jpg", "et-PNG.png",
    "exiv2-Stonehenge.heic", "et-Canon_350D.cr2", "et-MP3.mp3", "beets-image.flac", "beets-image.m4a",
    "atl-cart.wav", "et-QuickTime.mov", "ft-imovie.mp4", "mde-sample.3gp",
};
const char* const kNamePatterns[] = {"IMG_%1", "DSC%1", "Holiday 2019 - beach %1", "Ünïcødé %1", "track %1", "a.b.%1"};

void fillFolder(const QString& root, int count)
{
    const QDir data(QStringLiteral(PELORIN_SOURCE_DIR "/tests/data"));
    const int sampleCount = int(std::size(kSamples));
    for (int i = 0; i < count; ++i) {
        const QString sample = data.filePath(QString::fromLatin1(kSamples[i % sampleCount]));
        const QString folder = root + QStringLiteral("/%1/part %2").arg(i % 3 ? "camera" : "phone").arg(i / 700);
        QDir().mkpath(folder);
        const QString stem = QString::fromUtf8(kNamePatterns[(i / sampleCount) % std::size(kNamePatterns)])
                                 .arg(i, 5, 10, QLatin1Char('0'));
        QString extension = QFileInfo(sample).suffix();
        if (i % 5 == 0)
            extension = extension.toUpper();
        QFile::copy(sample, folder + QLatin1Char('/') + stem + QLatin1Char('.') + extension);
    }
}

struct RunFigures {
    double seconds = 0;
    double recordsSeconds = 0;
    qint64 longest = 0;
    qint64 p99 = 0;
    int over50 = 0;
    int rows = 0;
};

RunFigures importOnce(const QString& folder, const QString& settingsFile, const QString& storage)
{
    auto app = test::startTestWindow(settingsFile, storage);
    app->panels.chooseFolder = [folder](QWidget*, const QString&) { return folder; };
    QTest::qWait(200);

    std::vector<qint64> gaps;
    gaps.reserve(1 << 16);
    QElapsedTimer clock;
    qint64 last = 0;
    QTimer tick;
    tick.setTimerType(Qt::PreciseTimer);
    tick.setInterval(5);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        const qint64 now = clock.elapsed();
        gaps.push_back(now - last);
        last = now;
    });

    RunFigures figures;
    QEventLoop loop;
    QObject::connect(app->importer(), &MediaImporter::finished, &loop, [&] {
        figures.recordsSeconds = clock.nsecsElapsed() / 1e9;
    });
    // Done when the records are in and the thumbnails on screen are made and shown.
    QTimer poll;
    poll.setInterval(20);
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (!app->importer()->isBusy() && app->thumbnails()->isIdle() && !app->photoBrowserModel()->isRepaintPending())
            loop.quit();
    });
    clock.start();
    tick.start();
    if (qEnvironmentVariableIsSet("PELORIN_BENCH_TRACE"))
        std::printf("  import starts at %lld ms\n", sinceStart.elapsed());
    app->menus()->action(QStringLiteral("actionImportFolder"))->trigger();
    poll.start();
    loop.exec();
    figures.seconds = clock.nsecsElapsed() / 1e9;
    tick.stop();
    figures.rows = app->localPhotoItemArray()->rowCount();
    std::sort(gaps.begin(), gaps.end());
    if (!gaps.empty()) {
        figures.longest = gaps.back();
        figures.p99 = gaps[std::min(gaps.size() - 1, gaps.size() * 99 / 100)];
        figures.over50 = int(std::count_if(gaps.begin(), gaps.end(), [](qint64 gap) { return gap > 50; }));
    }
    return figures;
}

// With PELORIN_BENCH_TRACE set, every event of the GUI thread that keeps the loop more than
// 20 ms is printed with its receiver, its wall time and the processor time the thread had in
// it (little processor time: the thread waited for a core or a lock).
class TracingApplication : public QApplication {
public:
    using QApplication::QApplication;
    bool notify(QObject* receiver, QEvent* event) override
    {
        if (!tracing_ || depth_ > 0)
            return QApplication::notify(receiver, event);
        ++depth_;
        const qint64 cpuBefore = threadCpuMicroseconds();
        QElapsedTimer wall;
        wall.start();
        QString name = receiver->metaObject()->className() + QStringLiteral(" ") + receiver->objectName();
        if (receiver->parent())
            name += QStringLiteral(" in ") + receiver->parent()->metaObject()->className();
        const int type = event->type();
        const bool result = QApplication::notify(receiver, event);
        const qint64 ms = wall.elapsed();
        --depth_;
        if (ms > 20)
            std::fprintf(stdout, "  slow event %d to %s at %lld ms: %lld ms wall, %lld ms on a core\n", type,
                         qPrintable(name), sinceStart.elapsed(), ms, (threadCpuMicroseconds() - cpuBefore) / 1000);
        return result;
    }

private:
    static qint64 threadCpuMicroseconds()
    {
        timespec t{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
        return qint64(t.tv_sec) * 1000000 + t.tv_nsec / 1000;
    }
    bool tracing_ = qEnvironmentVariableIsSet("PELORIN_BENCH_TRACE");

    int depth_ = 0;
};

}  // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    sinceStart.start();
    TracingApplication qtApp(argc, argv);
    prepareWindowTests();
    const int count = argc > 1 ? std::max(1, std::atoi(argv[1])) : 10000;
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 1;

    QTemporaryDir root;
    const QString folder = argc > 3 ? QString::fromLocal8Bit(argv[3]) : root.filePath(QStringLiteral("import"));
    if (!QDir(folder).exists())
        fillFolder(folder, count);
    std::printf("%d copies of %zu small photos, songs and movies\n", count, std::size(kSamples));
    std::printf("run  total s  records s  rows   longest ms  p99 ms  gaps>50ms\n");
    for (int run = 0; run < runs; ++run) {
        const QString storage = root.filePath(QStringLiteral("storage%1").arg(run));
        QDir().mkpath(storage);
        const RunFigures f =
            importOnce(folder, root.filePath(QStringLiteral("settings%1.ini").arg(run)), storage);
        std::printf("%3d  %7.2f  %9.2f  %5d  %10lld  %6lld  %9d\n", run + 1, f.seconds, f.recordsSeconds, f.rows,
                    f.longest, f.p99, f.over50);
        std::fflush(stdout);
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("peak resident memory: %.0f MiB\n", usage.ru_maxrss / 1024.0);
    return 0;
}

// GPS removal and full inspection over a batch of real JPEGs, against exiftool's batch mode and
// a plain cp of the same files, in one run. Prints the ratios.
//
//   build/bench/photo_bench [COPIES] [SAMPLE_FOLDER...]
// COPIES (default 300) files are made from the JPEGs of the sample folders (default tests/data
// and, when present, ../shared/fixtures/photo). When a sample folder holds the real-size
// photo.png and photo.tif of bench/make-real-size-samples, GPS removal on 50 copies of each is
// measured first, with the peak memory of ours and of exiftool.
#include "BenchSupport.h"
#include "TestSelection.h"
#include "model/CommandContext.h"
#include "model/SafeOutput.h"
#include "photo/PhotoProperties.h"
#include "photo/PhotoRemoval.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <utility>

#include <sys/resource.h>
#include <cstdio>
#include <vector>

using namespace pelorin;
using namespace pelorin::bench;

namespace {

constexpr int kRealSizeCopies = 50;

// Wall-clock seconds and peak resident memory (KB) of one run of a program, as /usr/bin/time
// reports them.
std::pair<double, long> timeProcessWithPeak(const QString& program, const QStringList& args)
{
    QElapsedTimer t;
    t.start();
    QProcess p;
    p.setStandardOutputFile(QProcess::nullDevice());
    p.start(QStringLiteral("/usr/bin/time"), QStringList{QStringLiteral("-f"), QStringLiteral("peak %M")} + QStringList{program} + args);
    p.waitForFinished(-1);
    const double wall = seconds(t);
    const QList<QByteArray> lines = p.readAllStandardError().trimmed().split('\n');
    const QByteArray last = lines.isEmpty() ? QByteArray() : lines.last();
    return {wall, last.startsWith("peak ") ? last.mid(5).toLong() : -1L};
}

long peakMemoryKb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// GPS removal on copies of one real-size photo: ours, exiftool in one batch, cp. The rewrite of
// a PNG or a TIFF holds its skeleton only; the image data is copied in the kernel.
void measureRealSize(const QString& sample)
{
    const CopyBatch batch({sample}, kRealSizeCopies);
    CommandContext context;
    context.storageFolder = batch.folder("ours");
    QElapsedTimer t;
    t.start();
    const CommandResult result = removePhotoMetadata(MetadataRemoval::Gps, test::selectionOf(batch.files), context);
    syncDisks();
    const double ours = seconds(t);
    const long oursPeak = peakMemoryKb();
    const auto [exiftool, exiftoolPeak] = timeProcessWithPeak(
        QStringLiteral("exiftool"), QStringList{QStringLiteral("-q"), QStringLiteral("-m"), QStringLiteral("-gps:all="),
                                                QStringLiteral("-o"), batch.folder("exiftool") + QLatin1Char('/')} + batch.files);
    t.restart();
    syncDisks();
    const double exiftoolSync = exiftool + seconds(t);
    t.restart();
    QProcess::execute(QStringLiteral("cp"), batch.files + QStringList{batch.folder("cp")});
    syncDisks();
    const double cpSync = seconds(t);
    std::printf("GPS removal, %d copies of %s (%.1f MB; %lld written, %lld skipped)\n", kRealSizeCopies,
                qPrintable(QFileInfo(sample).fileName()), batch.bytes / 1e6 / kRealSizeCopies,
                qlonglong(result.written.size()), qlonglong(result.skipped.size()));
    std::printf("  ours (flushed once at the end)    %8.3f s   peak memory of the bench so far %6ld MB\n", ours, oursPeak / 1024);
    std::printf("  exiftool -gps:all= -o + sync      %8.3f s   ratio (exiftool+sync)/ours %6.2f   peak %6ld MB\n",
                exiftoolSync, exiftoolSync / ours, exiftoolPeak / 1024);
    std::printf("  cp + sync                         %8.3f s   ratio ours/cp+sync  %6.2f\n\n", cpSync, ours / cpSync);
}

}  // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int copies = argc > 1 ? std::atoi(argv[1]) : 300;
    // First, while the bench's peak memory is still the real-size rewrites' own.
    for (const QString& folder : sampleFolders(argc, argv)) {
        for (const char* name : {"photo.png", "photo.tif"}) {
            const QString path = QDir(folder).filePath(QString::fromLatin1(name));
            if (QFile::exists(path))
                measureRealSize(path);
        }
    }
    QStringList samples;
    for (const QString& folder : sampleFolders(argc, argv)) {
        for (const QString& name : QDir(folder).entryList({QStringLiteral("*.jpg")}, QDir::Files)) {
            const QString path = QDir(folder).filePath(name);
            if (readPhotoProperties(path).ok())
                samples << path;
        }
    }
    if (samples.isEmpty()) {
        std::fprintf(stderr, "no sample JPEGs found\n");
        return 1;
    }
    const CopyBatch batch(samples, copies);
    const QStringList& files = batch.files;
    std::printf("%d JPEG files (%.1f MB) made from %lld samples\n\n", copies, batch.bytes / 1e6, qlonglong(samples.size()));

    // GPS removal: ours, exiftool's batch and cp, each flushed, in paired rounds.
    const PhotoSelection selection = test::selectionOf(files);
    CommandResult result;
    int run = 0;
    double exiftoolUnflushed = 0;
    const std::vector<Contender> contenders = {
        [&] {
            return timedEngineBatch(batch.folder("ours") + QString::number(run++), [&](const QString& folder) {
                CommandContext context;
                context.storageFolder = folder;
                result = removePhotoMetadata(MetadataRemoval::Gps, selection, context);
            });
        },
        [&] {
            const QString folder = batch.folder("exiftool") + QString::number(run++);
            QDir().mkpath(folder);
            QElapsedTimer t;
            t.start();
            // exiftool leaves its outputs to the page cache; with the flush it does what ours does.
            exiftoolUnflushed = timeProcess(QStringLiteral("exiftool"),
                                            QStringList{QStringLiteral("-q"), QStringLiteral("-m"), QStringLiteral("-gps:all="),
                                                        QStringLiteral("-o"), folder + QLatin1Char('/')}
                                                + files);
            syncDisks();
            const double taken = seconds(t);
            QDir(folder).removeRecursively();
            return taken;
        },
        [&] {
            const QString folder = batch.folder("cp") + QString::number(run++);
            return timedWithFlush(QStringLiteral("cp"), files + QStringList{folder}, folder);
        },
    };
    const std::vector<double> medians = medianSecondsOfRounds(contenders);
    const double ours = medians[0], exiftoolSync = medians[1], cpSync = medians[2];
    std::printf("GPS removal (%lld written, %lld skipped), medians of 5 paired rounds\n",
                qlonglong(result.written.size()), qlonglong(result.skipped.size()));
    std::printf("  ours (flushed once at the end)    %8.3f s\n", ours);
    std::printf("  exiftool -gps:all= -o + sync      %8.3f s   ratio (exiftool+sync)/ours %6.2f   (last run unflushed %.3f s)\n",
                exiftoolSync, exiftoolSync / ours, exiftoolUnflushed);
    std::printf("  cp + sync                         %8.3f s   ratio ours/cp+sync  %6.2f\n\n", cpSync, ours / cpSync);

    // What reading every output back costs: the same removal with and without the content
    // checks, in turns, the best of three each; the processor time too, since the wall time of
    // small batches is mostly the flush, which other work on the machine sways.
    double checked = 1e9, unchecked = 1e9, checkedCpu = 1e9, uncheckedCpu = 1e9;
    QElapsedTimer t;
    for (int round = 0; round < 3; ++round) {
        for (const bool checks : {true, false}) {
            setOutputChecksForMeasurement(checks);
            CommandContext again;
            again.storageFolder = batch.folder("ours") + QStringLiteral("-%1-%2").arg(round).arg(checks);
            const double cpuBefore = processorSeconds();
            t.restart();
            removePhotoMetadata(MetadataRemoval::Gps, selection, again);
            const double cpu = processorSeconds() - cpuBefore;
            syncDisks();
            (checks ? checked : unchecked) = std::min(checks ? checked : unchecked, seconds(t));
            (checks ? checkedCpu : uncheckedCpu) = std::min(checks ? checkedCpu : uncheckedCpu, cpu);
            QDir(again.storageFolder).removeRecursively();
            syncDisks();
        }
    }
    setOutputChecksForMeasurement(true);
    std::printf("Read-back of every output (GPS removal, best of 3)      wall       processor\n");
    std::printf("  with the read-back                %8.3f s   %8.3f s\n", checked, checkedCpu);
    std::printf("  without                           %8.3f s   %8.3f s\n", unchecked, uncheckedCpu);
    std::printf("  cost of the read-back             %+7.1f %%   %+7.1f %%\n\n", 100.0 * (checked / unchecked - 1.0),
                100.0 * (checkedCpu / uncheckedCpu - 1.0));

    // Inspection
    t.restart();
    int groups = 0;
    for (const QString& f : files)
        groups += int(readPhotoProperties(f).properties.size());
    const double inspect = seconds(t);
    const double exiftoolInspect = timeProcess(QStringLiteral("exiftool"),
                                               QStringList{QStringLiteral("-j"), QStringLiteral("-G1"), QStringLiteral("-a")} + files);
    std::printf("Full inspection (%d top-level entries)\n", groups);
    std::printf("  ours                              %8.3f s\n", inspect);
    std::printf("  exiftool -j -G1 -a (one batch)    %8.3f s   ratio exiftool/ours %6.2f\n", exiftoolInspect, exiftoolInspect / inspect);
    return 0;
}

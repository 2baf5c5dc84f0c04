// GPS removal over a batch of real-size phone HEICs, against exiftool's batch mode and a plain cp
// of the same files, in one run. Prints the times and the ratios, and checks with exiftool that
// the outputs really lost their GPS, so the numbers measure real work.
//
//   build/bench/heif_bench [COPIES] [SAMPLE_FOLDER...]
// COPIES (default 300) files are made from the HEICs of at least 500 KB that carry GPS in the
// sample folders (default tests/data and, when present, ../shared/fixtures/photo).
#include "BenchSupport.h"
#include "TestSelection.h"
#include "model/CommandContext.h"
#include "photo/PhotoProperties.h"
#include "photo/PhotoRemoval.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

#include <sys/resource.h>

#include <cstdio>

using namespace pelorin;
using namespace pelorin::bench;

namespace {

constexpr qint64 kMinSampleSize = 500 * 1000;  // a real photo, not a test stub

// CPU seconds (user + system) of this process or of its finished children: on a loaded machine
// these compare the work done better than the wall clock.
double cpuSeconds(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// tests/data holds copies of some shared fixtures under the same names; each photo counts once.
QStringList sampleHeics(const QStringList& folders)
{
    QStringList samples;
    QSet<QString> names;
    for (const QString& folder : folders) {
        const QDir dir(folder);
        for (const QString& name : dir.entryList({QStringLiteral("*.heic"), QStringLiteral("*.HEIC")}, QDir::Files)) {
            const QString path = dir.filePath(name);
            if (QFileInfo(path).size() < kMinSampleSize || names.contains(name))
                continue;
            const PhotoProperties read = readPhotoProperties(path);
            if (read.ok() && read.properties.contains(QStringLiteral("{GPS}"))) {
                samples << path;
                names.insert(name);
            }
        }
    }
    return samples;
}

// The files under folder in which exiftool still finds a GPS position, in EXIF or XMP.
QStringList filesWithGps(const QString& folder)
{
    QProcess p;
    p.start(QStringLiteral("exiftool"), {QStringLiteral("-q"), QStringLiteral("-m"), QStringLiteral("-if"),
                                         QStringLiteral("$gps:all or $xmp-exif:GPSLatitude"), QStringLiteral("-p"),
                                         QStringLiteral("$FileName"), folder});
    p.waitForFinished(-1);
    return QString::fromUtf8(p.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

}  // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int copies = argc > 1 ? std::atoi(argv[1]) : 300;
    const QStringList samples = sampleHeics(sampleFolders(argc, argv));
    if (samples.isEmpty() || copies < 1) {
        std::fprintf(stderr, "no sample HEICs with GPS found\n");
        return 1;
    }
    const CopyBatch batch(samples, copies);
    const QStringList& files = batch.files;
    std::printf("%d HEIC files (%.1f MB) made from %lld samples:\n", copies, batch.bytes / 1e6, qlonglong(samples.size()));
    for (const QString& sample : samples)
        std::printf("  %s\n", qPrintable(sample));
    std::printf("\n");

    const PhotoSelection selection = test::selectionOf(files);
    CommandContext context;
    context.storageFolder = batch.folder("ours");
    QElapsedTimer t;
    t.start();
    const double cpuBefore = cpuSeconds(RUSAGE_SELF);
    const CommandResult result = removePhotoMetadata(MetadataRemoval::Gps, selection, context);
    const double oursCpu = cpuSeconds(RUSAGE_SELF) - cpuBefore;
    syncDisks();
    const double ours = seconds(t);
    const double childrenBefore = cpuSeconds(RUSAGE_CHILDREN);
    const double exiftool = timeProcess(QStringLiteral("exiftool"),
                                        QStringList{QStringLiteral("-q"), QStringLiteral("-m"), QStringLiteral("-gps:all="),
                                                    QStringLiteral("-o"), batch.folder("exiftool") + QLatin1Char('/')}
                                            + files);
    const double exiftoolCpu = cpuSeconds(RUSAGE_CHILDREN) - childrenBefore;
    // Our command flushes its outputs to disk once, exiftool never does; this is the same work.
    QElapsedTimer flush;
    flush.start();
    syncDisks();
    const double exiftoolSync = exiftool + seconds(flush);
    const double afterExiftool = cpuSeconds(RUSAGE_CHILDREN);
    t.restart();
    QProcess::execute(QStringLiteral("cp"), files + QStringList{batch.folder("cp")});
    const double cp = seconds(t);
    const double cpCpu = cpuSeconds(RUSAGE_CHILDREN) - afterExiftool;
    syncDisks();
    const double cpSync = seconds(t);

    std::printf("GPS removal (%lld written, %lld skipped)\n", qlonglong(result.written.size()), qlonglong(result.skipped.size()));
    for (const auto& skipped : result.skipped)
        std::printf("  skipped: %s\n", qPrintable(skipped.reason));
    std::printf("  ours (flushed once at the end)    %8.3f s\n", ours);
    std::printf("  exiftool -gps:all= -o (one batch) %8.3f s   ours/exiftool %6.3f  (exiftool/ours %5.2f)\n", exiftool,
                ours / exiftool, exiftool / ours);
    std::printf("  exiftool + sync                   %8.3f s   ours/exiftool+sync %6.3f  (%5.2f)\n", exiftoolSync,
                ours / exiftoolSync, exiftoolSync / ours);
    std::printf("  cp                                %8.3f s   ours/cp       %6.3f\n", cp, ours / cp);
    std::printf("  cp + sync                         %8.3f s   ours/cp+sync  %6.3f\n", cpSync, ours / cpSync);
    std::printf("CPU time (user + system)\n");
    std::printf("  ours %.3f s, exiftool %.3f s, cp %.3f s   ours/exiftool %6.3f  ours/cp %6.3f\n\n", oursCpu, exiftoolCpu,
                cpCpu, oursCpu / exiftoolCpu, oursCpu / cpCpu);

    const QStringList inputsWithGps = filesWithGps(batch.folder("src"));
    const QStringList oursWithGps = filesWithGps(context.storageFolder);
    const qsizetype oursWritten = QDir(context.storageFolder).entryList(QDir::Files).size();
    std::printf("exiftool finds GPS in %lld of %d inputs and in %lld of our %lld outputs\n", qlonglong(inputsWithGps.size()),
                copies, qlonglong(oursWithGps.size()), qlonglong(oursWritten));
    const bool real = inputsWithGps.size() == copies && oursWithGps.isEmpty() && oursWritten == copies;
    if (!real)
        std::printf("NOT A VALID RUN: the outputs do not show the work being done\n");
    return real ? 0 : 2;
}

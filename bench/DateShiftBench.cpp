// Shifting every date of a batch of real JPEGs by one hour, against exiftool's batch mode and a
// plain cp of the same files, in one run. Prints the ratios.
//
//   build/bench/date_shift_bench [COPIES] [SAMPLE_FOLDER...]
// COPIES (default 300) files are made from the JPEGs of the sample folders (default tests/data
// and, when present, ../shared/fixtures/photo) that carry an EXIF date.
#include "BenchSupport.h"
#include "TestSelection.h"
#include "dates/PhotoDateShift.h"
#include "photo/PhotoProperties.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <vector>

using namespace pelorin;
using namespace pelorin::bench;

namespace {

bool hasExifDate(const QString& path)
{
    const PhotoProperties read = readPhotoProperties(path);
    return read.ok() && read.properties.value(QStringLiteral("{Exif}")).toMap().contains(QStringLiteral("DateTimeOriginal"));
}

}  // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int copies = argc > 1 ? std::atoi(argv[1]) : 300;
    QStringList samples;
    for (const QString& folder : sampleFolders(argc, argv)) {
        for (const QString& name : QDir(folder).entryList({QStringLiteral("*.jpg")}, QDir::Files)) {
            const QString path = QDir(folder).filePath(name);
            if (hasExifDate(path))
                samples << path;
        }
    }
    if (samples.isEmpty() || copies <= 0) {
        std::fprintf(stderr, "no sample JPEGs with EXIF dates found\n");
        return 1;
    }
    const CopyBatch batch(samples, copies);
    const QStringList& files = batch.files;
    const PhotoSelection selection = test::selectionOf(files);
    std::printf("%d JPEG files (%.1f MB) made from %lld samples with EXIF dates\n\n", copies, batch.bytes / 1e6,
                qlonglong(samples.size()));

    BatchDateRequest request;
    request.span.hours = 1;
    request.add = true;
    CommandResult result;
    int run = 0;
    const std::vector<Contender> contenders = {
        [&] {
            return timedEngineBatch(batch.folder("ours") + QString::number(run++), [&](const QString& folder) {
                CommandContext context;
                context.storageFolder = folder;
                result = shiftPhotoDates(selection, request, context);
            });
        },
        [&] {
            const QString folder = batch.folder("exiftool") + QString::number(run++);
            return timedWithFlush(QStringLiteral("exiftool"),
                                  QStringList{QStringLiteral("-q"), QStringLiteral("-m"), QStringLiteral("-AllDates+=1"),
                                              QStringLiteral("-o"), folder + QLatin1Char('/')}
                                      + files,
                                  folder);
        },
        [&] {
            const QString folder = batch.folder("cp") + QString::number(run++);
            return timedWithFlush(QStringLiteral("cp"), files + QStringList{folder}, folder);
        },
    };
    const std::vector<double> medians = medianSecondsOfRounds(contenders);
    const double ours = medians[0], peer = medians[1], cpSync = medians[2];

    std::printf("Date shift by one hour (%lld written, %lld skipped), medians of 5 paired rounds\n",
                qlonglong(result.written.size()), qlonglong(result.skipped.size()));
    std::printf("  ours (engine batch, flushed once)         %8.3f s\n", ours);
    std::printf("  exiftool -AllDates+=1 -o (one run) + sync %8.3f s   ratio exiftool/ours %6.2f\n", peer, peer / ours);
    std::printf("  cp + sync                                 %8.3f s   ratio ours/cp+sync  %6.2f\n", cpSync, ours / cpSync);
    return result.skipped.isEmpty() ? 0 : 1;
}

// Changing the title of a batch of songs, against a plain cp + sync of the same files and against
// cp + kid3-cli (a peer tag editor, which edits in place, so it is given copies) + sync, in one
// run. Prints the ratios.
//
//   build/bench/audio_bench [COPIES] [SONG...]
// COPIES (default 200) files are made from each song: by default the small MP3 and FLAC samples
// of tests/data; bench/make-real-size-samples makes a real-size MP3 with a cover to pass here.
// kid3-cli comes with `scripts/install-deps --bench`.
#include "BenchSupport.h"
#include "audio/AudioTagChanges.h"
#include "model/CommandContext.h"
#include "model/SafeOutput.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace pelorin;
using namespace pelorin::bench;

namespace {

// The title written into every copy, as one batch that flushes once, the way `tags set` runs.
double oursSeconds(const QStringList& files, const QString& folder, int* failed)
{
    CommandContext context;
    context.storageFolder = folder;
    AudioTagChanges changes;
    changes.fields.insert(AudioField::Title, QStringLiteral("Benchmark title"));
    QElapsedTimer t;
    t.start();
    *failed += int(saveAudioTags(files, changes, context).skipped.size());
    return seconds(t);
}

}  // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int copies = argc > 1 ? std::atoi(argv[1]) : 200;
    QStringList songs;
    for (int i = 2; i < argc; ++i)
        songs << QString::fromLocal8Bit(argv[i]);
    if (songs.isEmpty())
        songs << QStringLiteral(PELORIN_SOURCE_DIR "/tests/data/atl-id3v23_utf16_apic.mp3")
              << QStringLiteral(PELORIN_SOURCE_DIR "/tests/data/beets-image.flac");
    const bool kid3 = !QStandardPaths::findExecutable(QStringLiteral("kid3-cli")).isEmpty();

    for (const QString& song : songs) {
        QTemporaryDir dir(QStringLiteral("/var/tmp/pelorin-audio-bench-XXXXXX"));
        QDir(dir.path()).mkdir(QStringLiteral("in"));
        QStringList files;
        for (int i = 0; i < copies; ++i) {
            const QString file = dir.filePath(QStringLiteral("in/%1_%2").arg(i).arg(QFileInfo(song).fileName()));
            QFile::copy(song, file);
            files << file;
        }
        syncDisks();
        std::printf("%d copies of %s (%.1f MB each)\n", copies, qPrintable(QFileInfo(song).fileName()),
                    QFileInfo(song).size() / 1e6);

        int failed = 0;
        int run = 0;
        std::vector<Contender> contenders = {
            [&] {
                const QString folder = dir.filePath(QStringLiteral("ours%1").arg(run++));
                const double taken = oursSeconds(files, folder, &failed);
                syncDisks();
                QDir(folder).removeRecursively();
                return taken;
            },
            [&] {
                const QString folder = dir.filePath(QStringLiteral("cp%1").arg(run++));
                return timedWithFlush(QStringLiteral("cp"), files + QStringList{folder}, folder);
            },
        };
        if (kid3) {
            contenders.push_back([&] {
                const QString folder = dir.filePath(QStringLiteral("kid3-%1").arg(run++));
                QDir().mkpath(folder);
                QElapsedTimer t;
                t.start();
                QProcess::execute(QStringLiteral("cp"), files + QStringList{folder});
                QStringList copied;
                for (const QString& file : files)
                    copied << folder + QLatin1Char('/') + QFileInfo(file).fileName();
                timeProcess(QStringLiteral("kid3-cli"),
                            QStringList{QStringLiteral("-c"), QStringLiteral("set title 'Benchmark title'")} + copied);
                syncDisks();
                const double taken = seconds(t);
                QDir(folder).removeRecursively();
                return taken;
            });
        }
        const std::vector<double> medians = medianSecondsOfRounds(contenders);
        const double ours = medians[0], cpSync = medians[1], cpKid3 = kid3 ? medians[2] : 0.0;
        std::printf("  medians of 5 paired rounds\n");
        std::printf("  ours (one flush at the end)        %8.3f s%s\n", ours, failed ? "   (some files failed)" : "");
        std::printf("  cp + sync                          %8.3f s   ratio ours/cp+sync        %6.2f\n", cpSync, ours / cpSync);
        if (kid3)
            std::printf("  cp + kid3-cli set title + sync     %8.3f s   ratio (cp+kid3-cli)/ours  %6.2f\n\n", cpKid3, cpKid3 / ours);
        else
            std::printf("  (kid3-cli not installed: scripts/install-deps --bench)\n\n");
    }
    return 0;
}

// Changing the title of a batch of MP3 and FLAC files, against a plain cp of the same files.
// Prints the ratio per kind.
//
//   build/bench/audio_bench [COPIES]
// COPIES (default 300) files of each kind are made from the samples in tests/data.
#include "BenchSupport.h"
#include "audio/AudioEdits.h"
#include "model/CommandContext.h"
#include "model/SafeOutput.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

using namespace pelorin;
using pelorin::bench::seconds;

namespace {

}  // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int copies = argc > 1 ? std::atoi(argv[1]) : 300;
    const struct {
        const char* kind;
        const char* sample;
    } kinds[] = {{"mp3", "atl-id3v23_utf16_apic.mp3"}, {"flac", "beets-image.flac"}};

    QTemporaryDir dir;
    for (const auto& kind : kinds) {
        const QString inputs = dir.filePath(QStringLiteral("in-%1").arg(QString::fromLatin1(kind.kind)));
        QDir().mkpath(inputs);
        QStringList files;
        for (int i = 0; i < copies; ++i) {
            const QString file = QStringLiteral("%1/%2.%3").arg(inputs).arg(i).arg(QString::fromLatin1(kind.kind));
            QFile::copy(QStringLiteral(PELORIN_SOURCE_DIR "/tests/data/") + QString::fromLatin1(kind.sample), file);
            files << file;
        }
        QProcess::execute(QStringLiteral("sync"), {});

        CommandContext context;
        context.storageFolder = dir.filePath(QStringLiteral("out-%1").arg(QString::fromLatin1(kind.kind)));
        QElapsedTimer ours;
        ours.start();
        int failed = 0;
        for (const QString& file : files) {
            AudioEdit edit;
            edit.sourcePath = file;
            edit.current = {{AudioField::Title, QStringLiteral("Benchmark title")}};
            edit.basicInfoChange = true;
            failed += saveAudioEdits(edit, context).succeeded() ? 0 : 1;
        }
        flushFileSystem(context.storageFolder);
        const double oursSeconds = seconds(ours);

        const QString copyFolder = dir.filePath(QStringLiteral("cp-%1").arg(QString::fromLatin1(kind.kind)));
        QDir().mkpath(copyFolder);
        QElapsedTimer cp;
        cp.start();
        QProcess::execute(QStringLiteral("cp"), files + QStringList{copyFolder});
        QProcess::execute(QStringLiteral("sync"), {});
        const double cpSeconds = seconds(cp);

        std::printf("%-5s %d files: ours %.3f s, cp %.3f s, ours/cp %.2f%s\n", kind.kind, copies,
                    oursSeconds, cpSeconds, cpSeconds > 0 ? oursSeconds / cpSeconds : 0.0,
                    failed ? " (some files failed)" : "");
    }
    return 0;
}

// Setting the title of a large MP4: ours against an FFmpeg stream-copy remux with the title and
// against a plain cp of the same file. Prints the ratios.
//
//   build/bench/movie_bench [MEGABYTES]
// A movie of about MEGABYTES (default 1024) is made from FFmpeg's test sources, with the movie
// box in front of the media so that the chunk offsets have to move.
#include "BenchSupport.h"
#include "model/CommandContext.h"
#include "model/SafeOutput.h"
#include "video/MovieSave.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <algorithm>
#include <cstdlib>

using namespace pelorin;
using pelorin::bench::seconds;

namespace {

double timed(const QString& program, const QStringList& arguments)
{
    QElapsedTimer timer;
    timer.start();
    QProcess::execute(program, arguments);
    QProcess::execute(QStringLiteral("sync"), {});
    return seconds(timer);
}

}  // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int megabytes = argc > 1 ? std::atoi(argv[1]) : 1024;
    QTemporaryDir dir(QStringLiteral("/var/tmp/pelorin-movie-bench-XXXXXX"));
    const QString source = dir.filePath(QStringLiteral("large.mp4"));
    // A high bit rate of noise keeps the making short; the length gives the size.
    const int bitsPerSecond = 80'000'000;
    const int length = std::max(1, megabytes * 8 / 80);
    std::printf("making a movie of about %d MB...\n", megabytes);
    QProcess::execute(QStringLiteral("ffmpeg"),
                      {"-v", "error", "-y", "-f", "lavfi", "-i",
                       QStringLiteral("nullsrc=s=1280x720:r=25:d=%1,geq=random(1)*255:128:128").arg(length), "-f",
                       "lavfi", "-i", QStringLiteral("sine=d=%1").arg(length), "-c:v", "mpeg2video", "-b:v",
                       QString::number(bitsPerSecond), "-maxrate", QString::number(bitsPerSecond), "-bufsize",
                       "20M", "-c:a", "aac", "-movflags", "+faststart", source});
    QProcess::execute(QStringLiteral("sync"), {});
    std::printf("source: %.0f MB\n", QFileInfo(source).size() / 1e6);

    // Three rounds in turn, the best of each: the page cache and the disk settle between runs.
    double oursSeconds = 1e9;
    double uncheckedSeconds = 1e9;  // the same write without reading the output back
    double cpSeconds = 1e9;
    double ffmpegSeconds = 1e9;
    bool succeeded = true;
    for (int round = 0; round < 3; ++round) {
        for (const bool checks : {true, false}) {
            setOutputChecksForMeasurement(checks);
            CommandContext context;
            context.storageFolder = dir.filePath(QStringLiteral("ours%1-%2").arg(round).arg(checks));
            MovieFieldEdits edits;
            edits.title = QStringLiteral("Benchmark title");
            QElapsedTimer ours;
            ours.start();
            succeeded = saveMovieFields({source}, edits, context).succeeded() && succeeded;
            QProcess::execute(QStringLiteral("sync"), {});
            double& best = checks ? oursSeconds : uncheckedSeconds;
            best = std::min(best, seconds(ours));
            QDir(context.storageFolder).removeRecursively();
        }
        setOutputChecksForMeasurement(true);
        cpSeconds = std::min(cpSeconds, timed(QStringLiteral("cp"), {source, dir.filePath(QStringLiteral("copy%1.mp4").arg(round))}));
        ffmpegSeconds = std::min(
            ffmpegSeconds, timed(QStringLiteral("ffmpeg"),
                                 {"-v", "error", "-y", "-i", source, "-map", "0", "-c", "copy", "-metadata",
                                  "title=Benchmark title", dir.filePath(QStringLiteral("remux%1.mp4").arg(round))}));
        QFile::remove(dir.filePath(QStringLiteral("copy%1.mp4").arg(round)));
        QFile::remove(dir.filePath(QStringLiteral("remux%1.mp4").arg(round)));
    }

    std::printf("ours %.3f s%s, cp %.3f s, ffmpeg remux %.3f s\n", oursSeconds,
                succeeded ? "" : " (failed)", cpSeconds, ffmpegSeconds);
    std::printf("ours/cp %.2f (target at most 1.2), ffmpeg/ours %.2f (target at least 2)\n",
                cpSeconds > 0 ? oursSeconds / cpSeconds : 0.0, oursSeconds > 0 ? ffmpegSeconds / oursSeconds : 0.0);
    std::printf("without reading the output back %.3f s: the read-back costs %+.1f%%\n", uncheckedSeconds,
                uncheckedSeconds > 0 ? 100.0 * (oursSeconds / uncheckedSeconds - 1.0) : 0.0);
    return 0;
}

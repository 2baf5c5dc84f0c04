// Setting the title of a large MP4: ours against an FFmpeg stream-copy remux with the title and
// against a plain cp of the same file. Prints the ratios.
//
//   build/bench/movie_bench [MEGABYTES] [FOLDER]
// A movie of about MEGABYTES (default 1024) is made from FFmpeg's test sources in FOLDER
// (default /var/tmp), with the movie box in front of the media so that the chunk offsets have to
// move. Give a folder on XFS or btrfs to see the media cloned instead of copied (cp clones there
// too; as root: `truncate -s 2G /var/tmp/xfs.img && mkfs.xfs -q /var/tmp/xfs.img && mount -o loop
// /var/tmp/xfs.img /mnt/xfs`). Five rounds, each running every contender once in a rotated order; medians.
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
#include <functional>
#include <vector>

using namespace pelorin;
using pelorin::bench::seconds;
using pelorin::bench::Contender;
using pelorin::bench::medianSecondsOfRounds;

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
    const QString parent = argc > 2 ? QString::fromLocal8Bit(argv[2]) : QStringLiteral("/var/tmp");
    QTemporaryDir dir(parent + QStringLiteral("/pelorin-movie-bench-XXXXXX"));
    const QString source = dir.filePath(QStringLiteral("large.mp4"));
    // A high bit rate of noise keeps the making short; the length gives the size.
    const int bitsPerSecond = 80'000'000;
    const int length = std::max(1, megabytes * 8 / 80);
    std::printf("making a movie of about %d MB in %s...\n", megabytes, qPrintable(parent));
    QProcess::execute(QStringLiteral("ffmpeg"),
                      {"-v", "error", "-y", "-f", "lavfi", "-i",
                       QStringLiteral("nullsrc=s=1280x720:r=25:d=%1,geq=random(1)*255:128:128").arg(length), "-f",
                       "lavfi", "-i", QStringLiteral("sine=d=%1").arg(length), "-c:v", "mpeg2video", "-b:v",
                       QString::number(bitsPerSecond), "-maxrate", QString::number(bitsPerSecond), "-bufsize",
                       "20M", "-c:a", "aac", "-movflags", "+faststart", source});
    QProcess::execute(QStringLiteral("sync"), {});
    std::printf("source: %.0f MB\n", QFileInfo(source).size() / 1e6);

    bool succeeded = true;
    int run = 0;
    const auto ours = [&](bool checks) {
        setOutputChecksForMeasurement(checks);
        CommandContext context;
        context.storageFolder = dir.filePath(QStringLiteral("ours%1").arg(run++));
        MovieChanges changes;
        changes.texts[MovieField::Title] = QStringLiteral("Benchmark title");
        QElapsedTimer timer;
        timer.start();
        succeeded = saveMovieFields({source}, changes, context).succeeded() && succeeded;
        QProcess::execute(QStringLiteral("sync"), {});
        const double taken = seconds(timer);
        setOutputChecksForMeasurement(true);
        QDir(context.storageFolder).removeRecursively();
        return taken;
    };
    const auto other = [&](const QString& program, QStringList arguments) {
        const QString target = dir.filePath(QStringLiteral("other%1.mp4").arg(run++));
        arguments << target;
        const double taken = timed(program, arguments);
        QFile::remove(target);
        return taken;
    };
    const std::vector<Contender> contenders = {
        [&] { return ours(true); },
        [&] { return ours(false); },
        [&] { return other(QStringLiteral("cp"), {source}); },
        [&] {
            return other(QStringLiteral("ffmpeg"), {"-v", "error", "-y", "-i", source, "-map", "0", "-c", "copy",
                                                    "-metadata", "title=Benchmark title"});
        },
    };
    const std::vector<double> medians = medianSecondsOfRounds(contenders);
    constexpr int kRounds = 5;
    const double oursSeconds = medians[0];
    const double uncheckedSeconds = medians[1];
    const double cpSeconds = medians[2];
    const double ffmpegSeconds = medians[3];
    std::printf("medians of %d rounds: ours %.3f s%s, cp+sync %.3f s, ffmpeg remux %.3f s\n", kRounds, oursSeconds,
                succeeded ? "" : " (failed)", cpSeconds, ffmpegSeconds);
    std::printf("ours/(cp+sync) %.2f (target at most 1.1), ffmpeg/ours %.2f\n",
                cpSeconds > 0 ? oursSeconds / cpSeconds : 0.0, oursSeconds > 0 ? ffmpegSeconds / oursSeconds : 0.0);
    std::printf("without reading the output back %.3f s: the read-back costs %+.1f%%\n", uncheckedSeconds,
                uncheckedSeconds > 0 ? 100.0 * (oursSeconds / uncheckedSeconds - 1.0) : 0.0);
    return succeeded ? 0 : 1;
}

// Measures the safe output path (temporary file, flush, atomic rename) against the plain-copy
// limit: the same bytes copied with cp into the same folder. Prints the ratio of the two times.
//
//   build/bench/safe_output_bench [FILES] [KIB] [FOLDER]
#include "model/SafeOutput.h"

#include <QByteArray>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <cstdio>

using namespace pelorin;

int main(int argc, char** argv)
{
    const int files = argc > 1 ? std::atoi(argv[1]) : 1000;
    const int kib = argc > 2 ? std::atoi(argv[2]) : 4096;
    QTemporaryDir root(argc > 3 ? QString::fromLocal8Bit(argv[3]) + QStringLiteral("/bench-XXXXXX")
                                : QDir::tempPath() + QStringLiteral("/bench-XXXXXX"));
    QDir dir(root.path());
    dir.mkpath(QStringLiteral("src"));
    dir.mkpath(QStringLiteral("cp"));
    dir.mkpath(QStringLiteral("safe"));

    QByteArray bytes(qsizetype(kib) * 1024, Qt::Uninitialized);
    QRandomGenerator(7).fillRange(reinterpret_cast<quint32*>(bytes.data()), bytes.size() / 4);
    QStringList sources;
    for (int i = 0; i < files; ++i) {
        const QString path = dir.filePath(QStringLiteral("src/%1.jpg").arg(i));
        writeFileAtomically(path, bytes, {}, nullptr);
        sources << path;
    }
    QProcess::execute(QStringLiteral("sync"), {});

    QElapsedTimer timer;
    timer.start();
    // One cp process for all files, so process start-up does not count against cp.
    QStringList cpArgs = sources;
    cpArgs << dir.filePath(QStringLiteral("cp"));
    QProcess::execute(QStringLiteral("cp"), cpArgs);
    QProcess::execute(QStringLiteral("sync"), {});
    const double cpSeconds = timer.nsecsElapsed() / 1e9;

    timer.restart();
    for (int i = 0; i < files; ++i) {
        QString error;
        if (!copyFileAtomically(sources[i], dir.filePath(QStringLiteral("safe/%1.jpg").arg(i)), &error)) {
            std::fprintf(stderr, "copy failed: %s\n", qPrintable(error));
            return 1;
        }
    }
    QProcess::execute(QStringLiteral("sync"), {});
    const double safeSeconds = timer.nsecsElapsed() / 1e9;

    std::printf("%d files of %d KiB in %s\n", files, kib, qPrintable(root.path()));
    std::printf("cp + sync:          %8.3f s\n", cpSeconds);
    std::printf("safe output + sync: %8.3f s\n", safeSeconds);
    std::printf("ratio safe/cp:      %8.2f\n", safeSeconds / cpSeconds);
    return 0;
}

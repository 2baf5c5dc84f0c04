// Downloading every file of a camera, against a plain cp of the same files, in one run. The
// camera is a folder served by libgphoto2's Directory Browse driver, so the ratio shows what
// the camera layer costs above the copy itself.
//
//   build/bench/camera_bench [FILES]      (default 500)
#include "camera/CameraCommands.h"
#include "camera/CameraDevices.h"
#include "camera/CameraSession.h"
#include "model/FileKinds.h"

#include <QStringList>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>

using namespace pelorin;

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int count = argc > 1 ? std::atoi(argv[1]) : 500;
    const QDir data(QStringLiteral(PELORIN_SOURCE_DIR "/tests/data"));
    QStringList samples;
    for (const QString& name : data.entryList(QDir::Files, QDir::Name)) {
        // The kinds the Directory Browse driver serves (it passes over HEIC, AVIF, MKV and others
        // by its own list), so that both sides move the same files.
        static const QStringList served = {QStringLiteral("jpg"), QStringLiteral("png"), QStringLiteral("mov"),
                                           QStringLiteral("mp4"), QStringLiteral("3gp")};
        if (served.contains(pathExtension(name).toLower()) && QFileInfo(data.filePath(name)).size() > 10000)
            samples.append(data.filePath(name));
    }
    QTemporaryDir root;
    const QString device = root.filePath(QStringLiteral("device/DCIM/100BENCH"));
    QDir().mkpath(device);
    qint64 bytes = 0;
    for (int i = 0; i < count; ++i) {
        const QString sample = samples.at(i % samples.size());
        const QString target = device + QStringLiteral("/%1-%2").arg(i, 5, 10, QLatin1Char('0')).arg(QFileInfo(sample).fileName());
        QFile::copy(sample, target);
        bytes += QFileInfo(target).size();
    }
    QProcess::execute(QStringLiteral("sync"), {});
    std::printf("%d files (%.1f MB) on a Directory Browse camera\n\n", count, bytes / 1e6);

    QElapsedTimer clock;
    clock.start();
    QString error;
    std::unique_ptr<CameraSession> session = CameraSession::open(directoryCamera(root.filePath(QStringLiteral("device"))), &error);
    if (!session) {
        std::fprintf(stderr, "cannot open the camera: %s\n", qPrintable(error));
        return 1;
    }
    const QList<CameraFileInfo> files = session->listFiles(nullptr, &error);
    const double listing = clock.nsecsElapsed() / 1e9;
    QList<CameraFileRef> refs;
    for (const CameraFileInfo& file : files)
        refs.append(file.ref);
    CommandContext context;
    context.storageFolder = root.filePath(QStringLiteral("ours"));
    clock.restart();
    const CommandResult result = downloadCameraFiles(*session, refs, context);
    QProcess::execute(QStringLiteral("sync"), {});
    const double ours = clock.nsecsElapsed() / 1e9;

    clock.restart();
    QProcess::execute(QStringLiteral("cp"), {QStringLiteral("-r"), device, root.filePath(QStringLiteral("cp"))});
    QProcess::execute(QStringLiteral("sync"), {});
    const double copy = clock.nsecsElapsed() / 1e9;

    std::printf("listing                  %8.3f s  (%lld files)\n", listing, qlonglong(files.size()));
    std::printf("download (ours)          %8.3f s  (%lld written, %lld skipped)\n", ours,
                qlonglong(result.written.size()), qlonglong(result.skipped.size()));
    std::printf("cp -r + sync             %8.3f s\n", copy);
    std::printf("ratio download / copy: %.2f\n", ours / copy);
    return 0;
}

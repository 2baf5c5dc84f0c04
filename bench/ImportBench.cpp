// Importing a folder of many photos and media into the real window (offscreen), against
// exiftool reading the same folder, in one run. Prints the time of each, their ratio, and the
// longest time the window's event loop was kept from running during the import.
//
//   build/bench/import_bench [FILES]      (default 10000)
// The files are hard links to the samples in tests/data (photos, audio and movies), spread over
// sub-folders of 500.
#include "app/AppDelegate.h"
#include "app/ImportActions.h"
#include "app/ImportedItemsModel.h"
#include "app/MainWindow.h"
#include "app/MediaImporter.h"
#include "app/PhotoBrowserModel.h"
#include "model/FileKinds.h"
#include "model/Preferences.h"
#include "ui/WindowLook.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>

#include <unistd.h>

#include <cstdio>

using namespace pelorin;

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("PELORIN_NO_REVEAL", "1");
    qputenv("QT_MEDIA_BACKEND", "ffmpeg");  // as the editor itself starts
    QApplication app(argc, argv);
    Q_INIT_RESOURCE(pelorin);
    applyWindowLook(app);
    const int count = argc > 1 ? std::atoi(argv[1]) : 10000;

    const QDir data(QStringLiteral(PELORIN_SOURCE_DIR "/tests/data"));
    QStringList samples;
    for (const QString& name : data.entryList(QDir::Files, QDir::Name)) {
        const QString extension = pathExtension(name);
        if (isImageExtension(extension) || isAudioExtension(extension) || isVideoExtension(extension))
            samples.append(data.filePath(name));
    }
    QTemporaryDir root;
    for (int i = 0; i < count; ++i) {
        const QString folder = root.filePath(QStringLiteral("part%1").arg(i / 500, 3, 10, QLatin1Char('0')));
        QDir().mkpath(folder);
        const QString sample = samples.at(i % samples.size());
        const QString link = folder + QStringLiteral("/%1-%2").arg(i, 6, 10, QLatin1Char('0')).arg(QFileInfo(sample).fileName());
        if (::link(QFile::encodeName(sample).constData(), QFile::encodeName(link).constData()) != 0)
            QFile::copy(sample, link);
    }
    std::printf("%d files made from %lld samples (photos, audio, movies; broken ones included)\n\n", count,
                qlonglong(samples.size()));

    AppDelegate delegate(std::make_unique<Preferences>(
        std::make_unique<QSettings>(root.filePath(QStringLiteral("prefs.ini")), QSettings::IniFormat)));
    delegate.awakeFromNib();
    delegate.applicationDidFinishLaunching();
    delegate.panels.chooseFolder = [&root](QWidget*, const QString&) { return root.path(); };

    QElapsedTimer clock;
    qint64 longestStall = 0;
    qint64 last = 0;
    QTimer tick;
    tick.setInterval(5);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        longestStall = std::max(longestStall, clock.elapsed() - last);
        last = clock.elapsed();
    });
    clock.start();
    tick.start();
    delegate.importActions()->importFolderAction();
    delegate.importer()->waitForDone();
    const double ours = clock.nsecsElapsed() / 1e9;
    tick.stop();
    const int imported = delegate.localPhotoItemArray()->rowCount();

    QElapsedTimer peer;
    peer.start();
    QProcess exiftool;
    exiftool.setStandardOutputFile(QProcess::nullDevice());
    exiftool.start(QStringLiteral("exiftool"), {QStringLiteral("-r"), QStringLiteral("-fast2"), QStringLiteral("-j"),
                                                QStringLiteral("-q"), QStringLiteral("-q"), root.path()});
    exiftool.waitForFinished(-1);
    const double theirs = peer.nsecsElapsed() / 1e9;

    std::printf("window import      %8.2f s  (%d records, %d in the photo browser)\n", ours, imported,
                delegate.photoBrowserModel()->rowCount());
    std::printf("exiftool -r -fast2 %8.2f s\n", theirs);
    std::printf("ratio window / exiftool: %.2f\n", ours / theirs);
    std::printf("longest event-loop stall during the import: %lld ms\n", longestStall);
    return 0;
}

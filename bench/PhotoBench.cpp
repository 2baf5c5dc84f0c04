// GPS removal and full inspection over a batch of real JPEGs, against exiftool's batch mode and
// a plain cp of the same files, in one run. Prints the ratios.
//
//   build/bench/photo_bench [COPIES] [SAMPLE_FOLDER...]
// COPIES (default 300) files are made from the JPEGs of the sample folders (default tests/data
// and, when present, ../shared/fixtures/photo).
#include "model/CommandContext.h"
#include "photo/PhotoProperties.h"
#include "photo/PhotoRemoval.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>

using namespace pelorin;

namespace {

double seconds(QElapsedTimer& t) { return t.nsecsElapsed() / 1e9; }

double timeProcess(const QString& program, const QStringList& args)
{
    QElapsedTimer t;
    t.start();
    QProcess p;
    p.setStandardOutputFile(QProcess::nullDevice());
    p.start(program, args);
    p.waitForFinished(-1);
    return seconds(t);
}

void syncDisks() { QProcess::execute(QStringLiteral("sync"), {}); }

}  // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int copies = argc > 1 ? std::atoi(argv[1]) : 300;
    QStringList folders;
    for (int i = 2; i < argc; ++i)
        folders << QString::fromLocal8Bit(argv[i]);
    if (folders.isEmpty())
        folders << QStringLiteral(PELORIN_SOURCE_DIR "/tests/data") << QStringLiteral(PELORIN_SOURCE_DIR "/../shared/fixtures/photo");

    QStringList samples;
    for (const QString& folder : folders) {
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
    QTemporaryDir root;
    QDir dir(root.path());
    for (const char* sub : {"src", "ours", "exiftool", "cp"})
        dir.mkdir(QString::fromLatin1(sub));
    QStringList files;
    qint64 bytes = 0;
    for (int i = 0; i < copies; ++i) {
        const QString path = dir.filePath(QStringLiteral("src/%1_%2").arg(i).arg(QFileInfo(samples[i % samples.size()]).fileName()));
        QFile::copy(samples[i % samples.size()], path);
        files << path;
        bytes += QFileInfo(path).size();
    }
    syncDisks();
    std::printf("%d JPEG files (%.1f MB) made from %lld samples\n\n", copies, bytes / 1e6, qlonglong(samples.size()));

    // GPS removal
    PhotoSelection selection;
    for (const QString& f : files) {
        IKImageItem item;
        item.filePath = f;
        item.fileName = QFileInfo(f).fileName();
        selection.items << item;
    }
    CommandContext context;
    context.storageFolder = dir.filePath(QStringLiteral("ours"));
    QElapsedTimer t;
    t.start();
    const CommandResult result = removePhotoMetadata(MetadataRemoval::Gps, selection, context);
    syncDisks();
    const double ours = seconds(t);
    const double exiftool = timeProcess(QStringLiteral("exiftool"),
                                        QStringList{QStringLiteral("-q"), QStringLiteral("-m"), QStringLiteral("-gps:all="),
                                                    QStringLiteral("-o"), dir.filePath(QStringLiteral("exiftool")) + QLatin1Char('/')}
                                            + files);
    t.restart();
    QProcess::execute(QStringLiteral("cp"), files + QStringList{dir.filePath(QStringLiteral("cp"))});
    const double cp = seconds(t);
    syncDisks();
    const double cpSync = seconds(t);
    std::printf("GPS removal (%lld written, %lld skipped)\n", qlonglong(result.written.size()), qlonglong(result.skipped.size()));
    std::printf("  ours (flushed once at the end)    %8.3f s\n", ours);
    std::printf("  exiftool -gps:all= -o (one batch) %8.3f s   ratio exiftool/ours %6.2f\n", exiftool, exiftool / ours);
    std::printf("  cp                                %8.3f s   ratio ours/cp       %6.2f\n", cp, ours / cp);
    std::printf("  cp + sync                         %8.3f s   ratio ours/cp+sync  %6.2f\n\n", cpSync, ours / cpSync);

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

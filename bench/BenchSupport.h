#pragma once
// What the benchmarks share: timing, flushing, the sample folders of the command line and the
// batch of copies each one works on.
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

#include <sys/resource.h>

namespace pelorin::bench {

inline double seconds(QElapsedTimer& t) { return t.nsecsElapsed() / 1e9; }

// Wall-clock seconds of one run of a program, its output dropped.
inline double timeProcess(const QString& program, const QStringList& args)
{
    QElapsedTimer t;
    t.start();
    QProcess p;
    p.setStandardOutputFile(QProcess::nullDevice());
    p.start(program, args);
    p.waitForFinished(-1);
    return seconds(t);
}

// User and system processor seconds this process has used so far.
inline double processorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto add = [](const timeval& t) { return double(t.tv_sec) + t.tv_usec / 1e6; };
    return add(usage.ru_utime) + add(usage.ru_stime);
}

inline void syncDisks() { QProcess::execute(QStringLiteral("sync"), {}); }

// The sample folders named after the copy count on the command line, or tests/data and (when
// present) ../shared/fixtures/photo.
inline QStringList sampleFolders(int argc, char** argv)
{
    QStringList folders;
    for (int i = 2; i < argc; ++i)
        folders << QString::fromLocal8Bit(argv[i]);
    if (folders.isEmpty())
        folders << QStringLiteral(PELORIN_SOURCE_DIR "/tests/data") << QStringLiteral(PELORIN_SOURCE_DIR "/../shared/fixtures/photo");
    return folders;
}

// count copies of the samples under src/ of a temporary folder that also holds the empty output
// folders ours/, exiftool/ and cp/; flushed to disk before any timing starts. (The selection of
// them is test::selectionOf(files).)
struct CopyBatch {
    std::unique_ptr<QTemporaryDir> root = std::make_unique<QTemporaryDir>();
    QDir dir{root->path()};
    QStringList files;
    qint64 bytes = 0;

    CopyBatch(const QStringList& samples, int count)
    {
        for (const char* sub : {"src", "ours", "exiftool", "cp"})
            dir.mkdir(QString::fromLatin1(sub));
        for (int i = 0; i < count; ++i) {
            const QString& sample = samples[i % samples.size()];
            const QString path = dir.filePath(QStringLiteral("src/%1_%2").arg(i).arg(QFileInfo(sample).fileName()));
            QFile::copy(sample, path);
            files << path;
            bytes += QFileInfo(path).size();
        }
        syncDisks();
    }
    QString folder(const char* name) const { return dir.filePath(QString::fromLatin1(name)); }

};

}  // namespace pelorin::bench

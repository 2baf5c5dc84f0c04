#pragma once
// What the benchmarks share: timing, flushing, the sample folders of the command line and the
// batch of copies each one works on.
#include "model/BatchAllocator.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include <sys/resource.h>

namespace pelorin::bench {

// The allocator set up as the programs set it up at start, so that the engine is measured as it
// runs there.
inline const bool kAllocatorTunedAsInThePrograms = (pelorin::tuneAllocatorForBatches(), true);

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

// One contender of a comparison: runs once and returns its seconds (flush included), leaving no
// output behind, so that the next one does not pay for its write-back.
using Contender = std::function<double()>;

inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0.0 : values[values.size() / 2];
}

// The median seconds of each contender over paired rounds: every round runs each contender once,
// in an order rotated from round to round so that none always comes first (or last) after the
// previous one's flush. Figures on this kind of machine vary by half between runs; the pairs and
// the median keep the ratios steady.
inline std::vector<double> medianSecondsOfRounds(const std::vector<Contender>& contenders, int rounds = 5)
{
    std::vector<std::vector<double>> times(contenders.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t k = 0; k < contenders.size(); ++k) {
            const std::size_t which = (k + std::size_t(round)) % contenders.size();
            times[which].push_back(contenders[which]());
            syncDisks();
        }
    }
    std::vector<double> medians;
    for (const auto& t : times)
        medians.push_back(median(t));
    return medians;
}

// Seconds of an engine batch that writes into folder, then flushing the disks; the folder is
// removed after.
inline double timedEngineBatch(const QString& folder, const std::function<void(const QString& folder)>& batch)
{
    QElapsedTimer t;
    t.start();
    batch(folder);
    syncDisks();
    const double taken = seconds(t);
    QDir(folder).removeRecursively();
    return taken;
}

// Seconds of running a program, then flushing the disks; the output folder is emptied after.
inline double timedWithFlush(const QString& program, const QStringList& args, const QString& outputFolder)
{
    QDir().mkpath(outputFolder);
    QElapsedTimer t;
    t.start();
    timeProcess(program, args);
    syncDisks();
    const double taken = seconds(t);
    QDir(outputFolder).removeRecursively();
    return taken;
}

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

#pragma once

#include <QByteArrayView>
#include <QString>

#include <cstdint>
#include <functional>

class QFile;

namespace pelorin {

// When an output's bytes are forced to disk: before its rename (a single write), or once for a
// whole batch by flushFileSystem() after the last file, which costs one flush instead of one per
// file. Either way a crash of the program never leaves a partial file under an output's name.
enum class Durability { FlushEach, Deferred };

// A look at a finished output before it takes its name: why it must not, or empty. It reads the
// output from the path it is given (the unnamed temporary file).
using OutputCheck = std::function<QString(const QString& pendingPath)>;

// Writes one output file so that the target name only ever holds a complete file: the bytes go
// into an unnamed (or hidden) temporary file in the target's folder, are flushed to disk, and
// take the target's name in one atomic rename. A writer destroyed before commit() leaves nothing
// behind, and so does a process killed before that point. The writer refuses to replace the file
// it was told to protect (the source of a command), so a storage folder that happens to hold the
// originals can never lose one.
// The block size of the file systems that clone ranges (XFS, btrfs): a range copied to the same
// place within a block can be shared instead of copied.
inline constexpr std::int64_t kCloneBlockSize = 4096;

class AtomicFileWriter {
public:
    explicit AtomicFileWriter(QString targetPath, QString protectedSourcePath = {},
                              Durability durability = Durability::FlushEach);
    ~AtomicFileWriter();
    AtomicFileWriter(const AtomicFileWriter&) = delete;
    AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;

    bool open();
    bool write(QByteArrayView bytes);
    // Appends length bytes of an open file from offset, in the kernel where it can; sharing the
    // source's blocks (reflink) where the file system can and the range lies at the same place
    // within a block (kCloneBlockSize) in both files.
    bool appendFrom(int sourceFd, std::int64_t offset, std::int64_t length);
    // Makes the output a copy of the whole source file, sharing its blocks where the file
    // system can (reflink), else copying in the kernel. Only on a freshly opened writer.
    bool cloneFrom(const QString& sourcePath);
    // The read-back commit() runs on the finished bytes: a problem it names discards the output
    // with "verification failed: <problem>" and nothing takes the target's name.
    void setCheck(OutputCheck check) { check_ = std::move(check); }
    bool commit();
    void discard();

    const QString& error() const { return error_; }
    const QString& targetPath() const { return target_; }
    // Where the bytes written so far can be opened for reading before commit(), so that a
    // caller can read its output back and discard it instead of linking a bad file into place.
    QString pendingPath() const;
    std::int64_t bytesWritten() const { return written_; }

private:
    bool fail(const QString& what, int err);
    bool copyRange(int sourceFd, std::int64_t offset, std::int64_t length);
    QString verificationProblem();
    bool linkIntoPlace();

    QString target_;
    QString protected_;
    QString folder_;
    QString namedTemp_;  // set when the temporary file has a name
    int fd_ = -1;
    Durability durability_ = Durability::FlushEach;
    std::int64_t written_ = 0;
    OutputCheck check_;
    QString error_;
};

// The verification of commit() for an output written outside an AtomicFileWriter (a copy that a
// library edits in place, under a hidden name): why it may not take its name, or empty.
QString verifyFinishedOutput(const QString& path, const OutputCheck& check);

// The words every refused output's reason starts with.
QString verificationFailed(const QString& problem);

// For tests only: runs on every finished output (its descriptor, open for reading and writing)
// just before it is verified, so a test can plant the fault of a broken writer. Empty removes it.
void setPendingOutputHookForTests(std::function<void(int fd)> hook);

// For benchmarks only: with false, the content checks of finished outputs are skipped (the size
// check stays), so that a bench can state what reading outputs back costs.
void setOutputChecksForMeasurement(bool enabled);

// Creates a folder with its intermediate folders; false with the reason when it cannot.
bool ensureFolder(const QString& folder, QString* error = nullptr);

// "<folder>/<prefix><name>", the name every command gives its output in the storage folder.
QString storageOutputPath(const QString& folder, const QString& fileName,
                          const QString& prefix = {});

// One-shot helpers over AtomicFileWriter.
bool writeFileAtomically(const QString& target, QByteArrayView bytes,
                         const QString& protectedSource, QString* error,
                         Durability durability = Durability::FlushEach, const OutputCheck& check = {});
// A copy is verified to hold the source's size and its first and last bytes, which catches a
// short or misdirected copy without reading the whole file twice.
bool copyFileAtomically(const QString& source, const QString& target, QString* error,
                        Durability durability = Durability::FlushEach);

// How many bytes at each end of a copy made in the kernel are compared with its source: enough
// to catch a short or misdirected copy without reading the whole file twice.
inline constexpr qint64 kComparedCopyEnds = 64 * 1024;
// True when the length bytes of copy at copyOffset begin and end (kComparedCopyEnds each) as the
// bytes of source at sourceOffset do; false also when either cannot be read.
bool copyEndsMatch(QFile& source, qint64 sourceOffset, QFile& copy, qint64 copyOffset, qint64 length);

// Forces everything written to the file system that holds the folder to disk (after a batch
// of Deferred writes).
bool flushFileSystem(const QString& folder);

// The reason for a failed write or create: a full disk, a quota and a file-size limit all read
// "no space left ..."; anything else is the system's own text.
QString writeErrorText(int err);

// True when both paths name the same existing file (same device and inode).
bool isSameFile(const QString& a, const QString& b);

}  // namespace pelorin

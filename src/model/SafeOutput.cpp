#include "model/SafeOutput.h"

#include "model/PositionalRead.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

namespace pelorin {
namespace {

QString errnoText(int err) { return writeErrorText(err); }

bool& outputChecksEnabled()
{
    static bool enabled = true;
    return enabled;
}

std::function<void(int)>& pendingOutputHook()
{
    static std::function<void(int)> hook;
    return hook;
}

// The copy's size and its first and last bytes are the source's.
QString copyProblem(const QString& sourcePath, const QString& pendingPath)
{
    QFile source(sourcePath), copy(pendingPath);
    if (!source.open(QIODevice::ReadOnly) || !copy.open(QIODevice::ReadOnly))
        return QStringLiteral("the copy cannot be read back");
    if (copy.size() != source.size())
        return QStringLiteral("the copy holds %1 bytes, the source %2").arg(copy.size()).arg(source.size());
    if (!copyEndsMatch(source, 0, copy, 0, source.size()))
        return QStringLiteral("the copy's bytes differ from the source's");
    return {};
}

QString hiddenTempName(const QString& folder, const QString& target)
{
    const QString random = QString::number(QRandomGenerator::global()->generate64(), 36);
    return folder + QStringLiteral("/.") + QFileInfo(target).fileName()
           + QStringLiteral(".pelorin-") + random;
}

bool writeAll(int fd, const char* data, std::int64_t size, int* err)
{
    while (size > 0) {
        const ssize_t n = ::write(fd, data, static_cast<size_t>(std::min<std::int64_t>(size, 1 << 30)));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            *err = errno;
            return false;
        }
        data += n;
        size -= n;
    }
    return true;
}

}  // namespace

QString writeErrorText(int err)
{
    // A full disk, a quota and a file-size limit are one problem to the user, worded alike so
    // that a batch's skipped items say plainly why they are missing.
    switch (err) {
    case ENOSPC:
        return QStringLiteral("no space left on the output's file system");
    case EDQUOT:
        return QStringLiteral("no space left within the disk quota");
    case EFBIG:
        return QStringLiteral("no space left for a file this large (file size limit)");
    default:
        return QString::fromLocal8Bit(std::strerror(err));
    }
}

AtomicFileWriter::AtomicFileWriter(QString targetPath, QString protectedSourcePath,
                                   Durability durability)
    : target_(QDir::cleanPath(QFileInfo(targetPath).absoluteFilePath())),
      protected_(std::move(protectedSourcePath)),
      folder_(QFileInfo(target_).absolutePath()),
      durability_(durability)
{
}

AtomicFileWriter::~AtomicFileWriter() { discard(); }

bool AtomicFileWriter::fail(const QString& what, int err)
{
    error_ = err ? QStringLiteral("%1: %2").arg(what, errnoText(err)) : what;
    return false;
}

bool AtomicFileWriter::open()
{
    discard();
    error_.clear();
    written_ = 0;
    if (!protected_.isEmpty() && isSameFile(protected_, target_))
        return fail(QStringLiteral("%1 is the original file; an output never replaces it").arg(target_), 0);
    const QByteArray folder = QFile::encodeName(folder_);
    // An unnamed file vanishes by itself if the process dies before it is linked in.
    fd_ = ::open(folder.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (fd_ >= 0)
        return true;
    // File systems without unnamed files (FUSE, FAT): a hidden name that no command uses.
    int err = 0;
    for (int attempt = 0; attempt < 16; ++attempt) {
        const QString name = hiddenTempName(folder_, target_);
        fd_ = ::open(QFile::encodeName(name).constData(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC,
                     0666);
        if (fd_ >= 0) {
            namedTemp_ = name;
            return true;
        }
        err = errno;
        if (err != EEXIST)
            break;
    }
    return fail(QStringLiteral("cannot create a file in %1").arg(folder_), err);
}

bool AtomicFileWriter::write(QByteArrayView bytes)
{
    if (fd_ < 0)
        return fail(QStringLiteral("the output is not open"), 0);
    int err = 0;
    if (!writeAll(fd_, bytes.data(), bytes.size(), &err))
        return fail(QStringLiteral("cannot write %1").arg(target_), err);
    written_ += bytes.size();
    return true;
}

bool AtomicFileWriter::appendFrom(int sourceFd, std::int64_t offset, std::int64_t length)
{
    if (fd_ < 0)
        return fail(QStringLiteral("the output is not open"), 0);
    // File systems that share blocks between files (XFS, btrfs) clone a range instead of copying
    // it, but only from a block boundary to a block boundary (or to the source's end). When the
    // range lies at the same place within a block in both files, its unaligned head and tail are
    // copied apart so that the middle can be cloned.
    constexpr std::int64_t kBlock = kCloneBlockSize;
    struct stat st {};
    if (length >= 2 * kBlock && (offset - written_) % kBlock == 0 && ::fstat(sourceFd, &st) == 0) {
        const std::int64_t head = (kBlock - offset % kBlock) % kBlock;
        const bool toSourceEnd = offset + length == std::int64_t(st.st_size);
        const std::int64_t middle = toSourceEnd ? length - head : (length - head) / kBlock * kBlock;
        return copyRange(sourceFd, offset, head) && copyRange(sourceFd, offset + head, middle)
               && copyRange(sourceFd, offset + head + middle, length - head - middle);
    }
    return copyRange(sourceFd, offset, length);
}

bool AtomicFileWriter::copyRange(int sourceFd, std::int64_t offset, std::int64_t length)
{
    loff_t in = offset;
    std::int64_t left = length;
    bool kernelCopy = true;
    while (left > 0 && kernelCopy) {
        const ssize_t n = ::copy_file_range(sourceFd, &in, fd_, nullptr,
                                            static_cast<size_t>(std::min<std::int64_t>(left, 1 << 30)), 0);
        if (n > 0) {
            left -= n;
            written_ += n;
        } else if (n == 0) {
            return fail(QStringLiteral("the source ended early while writing %1").arg(target_), 0);
        } else if (errno == EINTR) {
            continue;
        } else if (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP
                   || errno == EPERM) {
            kernelCopy = false;  // fall back to plain reads and writes below
        } else {
            return fail(QStringLiteral("cannot copy into %1").arg(target_), errno);
        }
    }
    std::vector<char> buffer(left > 0 ? std::min<std::int64_t>(left, 1 << 20) : 0);
    while (left > 0) {
        const ssize_t n = ::pread(sourceFd, buffer.data(),
                                  static_cast<size_t>(std::min<std::int64_t>(left, std::int64_t(buffer.size()))), in);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return fail(QStringLiteral("cannot read the source of %1").arg(target_), errno);
        if (n == 0)
            return fail(QStringLiteral("the source ended early while writing %1").arg(target_), 0);
        int err = 0;
        if (!writeAll(fd_, buffer.data(), n, &err))
            return fail(QStringLiteral("cannot write %1").arg(target_), err);
        in += n;
        left -= n;
        written_ += n;
    }
    return true;
}

bool AtomicFileWriter::cloneFrom(const QString& sourcePath)
{
    if (fd_ < 0)
        return fail(QStringLiteral("the output is not open"), 0);
    const int src = ::open(QFile::encodeName(sourcePath).constData(), O_RDONLY | O_CLOEXEC);
    if (src < 0)
        return fail(QStringLiteral("cannot open %1").arg(sourcePath), errno);
    struct stat st {};
    if (::fstat(src, &st) != 0) {
        const int err = errno;
        ::close(src);
        return fail(QStringLiteral("cannot read %1").arg(sourcePath), err);
    }
    if (written_ == 0 && ::ioctl(fd_, FICLONE, src) == 0) {
        written_ = st.st_size;
        ::close(src);
        return true;
    }
    const bool ok = appendFrom(src, 0, st.st_size);
    ::close(src);
    return ok;
}

QString AtomicFileWriter::pendingPath() const
{
    if (!namedTemp_.isEmpty())
        return namedTemp_;
    return fd_ >= 0 ? QStringLiteral("/proc/self/fd/%1").arg(fd_) : QString();
}

bool AtomicFileWriter::linkIntoPlace()
{
    const QByteArray target = QFile::encodeName(target_);
    if (namedTemp_.isEmpty()) {
        // Give the unnamed file a hidden name, then rename that over the target atomically.
        const QByteArray procPath = QByteArray("/proc/self/fd/") + QByteArray::number(fd_);
        for (int attempt = 0; attempt < 16; ++attempt) {
            const QString name = hiddenTempName(folder_, target_);
            if (::linkat(AT_FDCWD, procPath.constData(), AT_FDCWD,
                         QFile::encodeName(name).constData(), AT_SYMLINK_FOLLOW) == 0) {
                namedTemp_ = name;
                break;
            }
            if (errno != EEXIST)
                return fail(QStringLiteral("cannot name the output %1").arg(target_), errno);
        }
        if (namedTemp_.isEmpty())
            return fail(QStringLiteral("cannot name the output %1").arg(target_), EEXIST);
    }
    if (::rename(QFile::encodeName(namedTemp_).constData(), target.constData()) != 0)
        return fail(QStringLiteral("cannot write %1").arg(target_), errno);
    namedTemp_.clear();
    return true;
}

bool AtomicFileWriter::commit()
{
    if (fd_ < 0)
        return fail(QStringLiteral("the output is not open"), 0);
    // A protected source may have appeared under the target name since open().
    if (!protected_.isEmpty() && isSameFile(protected_, target_)) {
        discard();
        return fail(QStringLiteral("%1 is the original file; an output never replaces it").arg(target_), 0);
    }
    if (const QString problem = verificationProblem(); !problem.isEmpty()) {
        discard();
        return fail(verificationFailed(problem), 0);
    }
    if (durability_ == Durability::FlushEach && ::fsync(fd_) != 0) {
        const int err = errno;
        discard();
        return fail(QStringLiteral("cannot write %1").arg(target_), err);
    }
    const bool linked = linkIntoPlace();
    if (!linked) {
        discard();
        return false;
    }
    ::close(fd_);
    fd_ = -1;
    return true;
}

QString AtomicFileWriter::verificationProblem()
{
    if (const auto& hook = pendingOutputHook())
        hook(fd_);
    struct stat st {};
    if (::fstat(fd_, &st) != 0)
        return QStringLiteral("the output cannot be read back");
    if (st.st_size != written_)
        return QStringLiteral("the output holds %1 bytes, not the %2 written").arg(st.st_size).arg(written_);
    return check_ && outputChecksEnabled() ? check_(pendingPath()) : QString();
}

QString verifyFinishedOutput(const QString& path, const OutputCheck& check)
{
    if (const auto& hook = pendingOutputHook()) {
        const int fd = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC);
        if (fd < 0)
            return QStringLiteral("the output cannot be read back");
        hook(fd);
        ::close(fd);
    }
    return check && outputChecksEnabled() ? check(path) : QString();
}

QString verificationFailed(const QString& problem)
{
    return QStringLiteral("verification failed: %1").arg(problem);
}

void setPendingOutputHookForTests(std::function<void(int fd)> hook) { pendingOutputHook() = std::move(hook); }

void setOutputChecksForMeasurement(bool enabled) { outputChecksEnabled() = enabled; }

void AtomicFileWriter::discard()
{
    if (fd_ >= 0) {
        ::close(fd_);
        fd_ = -1;
    }
    if (!namedTemp_.isEmpty()) {
        ::unlink(QFile::encodeName(namedTemp_).constData());
        namedTemp_.clear();
    }
}

bool ensureFolder(const QString& folder, QString* error)
{
    if (folder.isEmpty()) {
        if (error)
            *error = QStringLiteral("no folder given");
        return false;
    }
    QFileInfo info(folder);
    if (info.isDir())
        return true;
    if (info.exists()) {
        if (error)
            *error = QStringLiteral("%1 exists and is not a folder").arg(folder);
        return false;
    }
    if (!QDir().mkpath(folder)) {
        if (error)
            *error = QStringLiteral("cannot create the folder %1").arg(folder);
        return false;
    }
    return true;
}

QString storageOutputPath(const QString& folder, const QString& fileName, const QString& prefix)
{
    return QStringLiteral("%1/%2%3").arg(folder, prefix, fileName);
}

bool writeFileAtomically(const QString& target, QByteArrayView bytes,
                         const QString& protectedSource, QString* error, Durability durability,
                         const OutputCheck& check)
{
    AtomicFileWriter writer(target, protectedSource, durability);
    writer.setCheck(check);
    const bool ok = writer.open() && writer.write(bytes) && writer.commit();
    if (!ok && error)
        *error = writer.error();
    return ok;
}

bool copyFileAtomically(const QString& source, const QString& target, QString* error,
                        Durability durability)
{
    AtomicFileWriter writer(target, source, durability);
    writer.setCheck([&source](const QString& pending) { return copyProblem(source, pending); });
    const bool ok = writer.open() && writer.cloneFrom(source) && writer.commit();
    if (!ok && error)
        *error = writer.error();
    return ok;
}

bool copyEndsMatch(QFile& source, qint64 sourceOffset, QFile& copy, qint64 copyOffset, qint64 length)
{
    const qint64 first = qMin(kComparedCopyEnds, length);
    const qint64 lastAt = qMax(first, length - kComparedCopyEnds);
    const auto same = [&](qint64 at, qint64 n) {
        const QByteArray expected = readExactlyAt(source.handle(), sourceOffset + at, n);
        return expected.size() == n && readExactlyAt(copy.handle(), copyOffset + at, n) == expected;
    };
    return same(0, first) && same(lastAt, length - lastAt);
}

bool flushFileSystem(const QString& folder)
{
    const int fd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool ok = ::syncfs(fd) == 0;
    ::close(fd);
    return ok;
}

bool isSameFile(const QString& a, const QString& b)
{
    struct stat sa {}, sb {};
    if (::stat(QFile::encodeName(a).constData(), &sa) != 0
        || ::stat(QFile::encodeName(b).constData(), &sb) != 0)
        return false;
    return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
}

}  // namespace pelorin

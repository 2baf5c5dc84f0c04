#include "model/FileDates.h"

#include <QFile>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace pelorin {
namespace {

QDateTime fromTimestamp(std::int64_t sec, std::uint32_t nsec)
{
    return QDateTime::fromMSecsSinceEpoch(sec * 1000 + nsec / 1000000, Qt::UTC);
}

// NTFS keeps times as 100-nanosecond ticks since 1601-01-01.
constexpr std::int64_t kNtfsEpochToUnixSeconds = 11644473600LL;

}  // namespace

FileDateReading readFileDates(const QString& path)
{
    FileDateReading reading;
    struct statx sx {};
    const QByteArray p = QFile::encodeName(path);
    if (::statx(AT_FDCWD, p.constData(), 0, STATX_MTIME | STATX_BTIME, &sx) != 0)
        return reading;
    if (sx.stx_mask & STATX_MTIME)
        reading.modified = fromTimestamp(sx.stx_mtime.tv_sec, sx.stx_mtime.tv_nsec);
    if (sx.stx_mask & STATX_BTIME)
        reading.created = fromTimestamp(sx.stx_btime.tv_sec, sx.stx_btime.tv_nsec);
    return reading;
}

bool setFileModificationDate(const QString& path, const QDateTime& when, QString* error)
{
    if (!when.isValid()) {
        if (error)
            *error = QStringLiteral("no valid date to set");
        return false;
    }
    const std::int64_t ms = when.toMSecsSinceEpoch();
    struct timespec times[2];
    times[0].tv_sec = 0;
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = static_cast<time_t>(ms / 1000 - (ms % 1000 < 0 ? 1 : 0));
    times[1].tv_nsec = static_cast<long>(((ms % 1000) + 1000) % 1000) * 1000000L;
    if (::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0) != 0) {
        if (error)
            *error = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    return true;
}

bool setFileCreationDate(const QString& path, const QDateTime& when)
{
    if (!when.isValid())
        return false;
    const std::int64_t ms = when.toMSecsSinceEpoch();
    const std::int64_t ticks = (ms / 1000 + kNtfsEpochToUnixSeconds) * 10000000LL
                               + (ms % 1000) * 10000LL;
    unsigned char le[8];
    for (int i = 0; i < 8; ++i)
        le[i] = static_cast<unsigned char>((static_cast<std::uint64_t>(ticks) >> (8 * i)) & 0xff);
    return ::setxattr(QFile::encodeName(path).constData(), "system.ntfs_crtime", le, sizeof le, 0)
           == 0;
}

QString creationDateNotSetNote()
{
    return QStringLiteral("the file system of the storage folder keeps no settable creation "
                          "date; only modification dates were set");
}

}  // namespace pelorin

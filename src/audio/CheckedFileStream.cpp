#include "audio/CheckedFileStream.h"

#include <QFile>

#include <algorithm>
#include <climits>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace pelorin {
namespace {

constexpr long kMoveChunk = 1 << 20;

}  // namespace

CheckedFileStream::CheckedFileStream(const QString& path)
    : path_(QFile::encodeName(path)), fd_(::open(path_.constData(), O_RDWR | O_CLOEXEC))
{
}

CheckedFileStream::~CheckedFileStream()
{
    if (fd_ >= 0)
        ::close(fd_);
}

TagLib::FileName CheckedFileStream::name() const { return path_.constData(); }

void CheckedFileStream::noteError(int err)
{
    if (writeError_ == 0)
        writeError_ = err ? err : EIO;
}

TagLib::ByteVector CheckedFileStream::readBlock(unsigned long length)
{
    if (fd_ < 0 || length == 0)
        return {};
    // A length taken from a damaged header never allocates more than the file holds.
    const long available = std::max(0L, this->length() - position_);
    const long wanted = std::min<long>(static_cast<long>(std::min<unsigned long>(length, LONG_MAX)), available);
    TagLib::ByteVector block(static_cast<unsigned int>(wanted), '\0');
    long done = 0;
    while (done < wanted) {
        const ssize_t n = ::pread(fd_, block.data() + done, static_cast<size_t>(wanted - done), position_ + done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        done += n;
    }
    block.resize(static_cast<unsigned int>(done));
    position_ += done;
    return block;
}

bool CheckedFileStream::writeAt(const char* data, long size, long offset)
{
    while (size > 0) {
        const ssize_t n = ::pwrite(fd_, data, static_cast<size_t>(size), offset);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            noteError(n < 0 ? errno : 0);
            return false;
        }
        data += n;
        size -= n;
        offset += n;
    }
    return true;
}

void CheckedFileStream::writeBlock(const TagLib::ByteVector& data)
{
    if (fd_ < 0) {
        noteError(EBADF);
        return;
    }
    writeAt(data.data(), data.size(), position_);
    position_ += data.size();
}

void CheckedFileStream::moveTail(long from, long to)
{
    const long end = length();
    const long size = end - from;
    if (size <= 0 || from == to)
        return;
    std::vector<char> buffer(static_cast<size_t>(std::min(size, kMoveChunk)));
    // Growing moves the last chunk first, shrinking the first, so no byte is overwritten
    // before it has been moved.
    const bool backwards = to > from;
    long moved = 0;
    while (moved < size && writeError_ == 0) {
        const long chunk = std::min<long>(kMoveChunk, size - moved);
        const long offset = backwards ? end - moved - chunk : from + moved;
        long got = 0;
        while (got < chunk) {
            const ssize_t n = ::pread(fd_, buffer.data() + got, static_cast<size_t>(chunk - got), offset + got);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0) {
                noteError(n < 0 ? errno : 0);
                return;
            }
            got += n;
        }
        if (!writeAt(buffer.data(), chunk, offset + (to - from)))
            return;
        moved += chunk;
    }
}

void CheckedFileStream::insert(const TagLib::ByteVector& data, unsigned long start, unsigned long replace)
{
    const long from = static_cast<long>(start);
    const long size = data.size();
    const long replaced = static_cast<long>(replace);
    if (size > replaced)
        moveTail(from + replaced, from + size);
    else if (size < replaced)
        removeBlock(static_cast<unsigned long>(from + size), static_cast<unsigned long>(replaced - size));
    position_ = from;
    writeBlock(data);
}

void CheckedFileStream::removeBlock(unsigned long start, unsigned long length)
{
    const long from = static_cast<long>(start);
    const long cut = static_cast<long>(length);
    const long end = this->length();
    if (cut <= 0 || from >= end)
        return;
    moveTail(std::min(end, from + cut), from);
    truncate(std::max(from, end - cut));
    position_ = from;
}

void CheckedFileStream::seek(long offset, Position p)
{
    long base = 0;
    if (p == Current)
        base = position_;
    else if (p == End)
        base = length();
    position_ = std::max(0L, base + offset);
}

long CheckedFileStream::length()
{
    struct stat st {};
    if (fd_ < 0 || ::fstat(fd_, &st) != 0)
        return 0;
    return static_cast<long>(st.st_size);
}

void CheckedFileStream::truncate(long length)
{
    if (fd_ < 0 || ::ftruncate(fd_, std::max(0L, length)) != 0)
        noteError(fd_ < 0 ? EBADF : errno);
}

}  // namespace pelorin

#include "isobmff/ByteSource.h"

#include <algorithm>

namespace pelorin {

namespace {

std::int64_t clampedLength(std::int64_t size, std::int64_t offset, std::int64_t length)
{
    if (offset < 0 || length <= 0 || offset >= size)
        return 0;
    return std::min(length, size - offset);
}

}  // namespace

QByteArray MemoryByteSource::read(std::int64_t offset, std::int64_t length)
{
    const std::int64_t n = clampedLength(size(), offset, length);
    return n > 0 ? bytes_.mid(static_cast<qsizetype>(offset), static_cast<qsizetype>(n))
                 : QByteArray();
}

bool FileByteSource::open(QString* error)
{
    // Unbuffered: the window below does the buffering, and a Qt buffer on top would copy every
    // small read's surroundings again after each seek.
    if (!file_.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        if (error)
            *error = file_.errorString();
        return false;
    }
    size_ = file_.size();
    return true;
}

QByteArray FileByteSource::readFromFile(std::int64_t offset, std::int64_t length)
{
    if (!file_.seek(offset))
        return {};
    return file_.read(length);
}

QByteArray FileByteSource::read(std::int64_t offset, std::int64_t length)
{
    const std::int64_t n = clampedLength(size_, offset, length);
    if (n <= 0)
        return {};
    if (offset >= windowStart_ && offset + n <= windowStart_ + window_.size())
        return window_.mid(static_cast<qsizetype>(offset - windowStart_), static_cast<qsizetype>(n));
    if (n >= kWindowSize)
        return readFromFile(offset, n);
    window_ = readFromFile(offset, std::min(kWindowSize, size_ - offset));
    windowStart_ = offset;
    return window_.left(static_cast<qsizetype>(n));
}

}  // namespace pelorin

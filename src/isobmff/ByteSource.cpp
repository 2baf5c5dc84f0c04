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
    if (!file_.open(QIODevice::ReadOnly)) {
        if (error)
            *error = file_.errorString();
        return false;
    }
    size_ = file_.size();
    return true;
}

QByteArray FileByteSource::read(std::int64_t offset, std::int64_t length)
{
    const std::int64_t n = clampedLength(size_, offset, length);
    if (n <= 0 || !file_.seek(offset))
        return {};
    return file_.read(n);
}

}  // namespace pelorin

#include "isobmff/ByteSource.h"

#include "model/PositionalRead.h"

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

bool FileByteSource::readInto(std::int64_t offset, char* out, std::int64_t length)
{
    if (offset < 0 || length < 0 || length > size_ - offset)
        return false;
    const auto inWindow = [&] { return offset >= windowStart_ && offset + length <= windowStart_ + window_.size(); };
    if (!inWindow()) {
        if (length >= kWindowSize)  // image data and other big reads go straight to the caller
            return file_.seek(offset) && file_.read(out, length) == length;
        window_.resize(qsizetype(std::min(kWindowSize, size_ - offset)));
        windowStart_ = offset;
        if (!file_.seek(offset) || file_.read(window_.data(), window_.size()) != window_.size()) {
            window_.clear();
            return false;
        }
    }
    std::copy_n(window_.constData() + (offset - windowStart_), length, out);
    return true;
}

bool FileByteSource::readIntoDirectly(std::int64_t offset, char* out, std::int64_t length)
{
    return offset >= 0 && length >= 0 && length <= size_ - offset && readExactlyInto(file_.handle(), offset, out, length);
}

QByteArray FileByteSource::read(std::int64_t offset, std::int64_t length)
{
    const std::int64_t n = clampedLength(size_, offset, length);
    QByteArray bytes(static_cast<qsizetype>(n), Qt::Uninitialized);
    if (n <= 0 || !readInto(offset, bytes.data(), n))
        return {};
    return bytes;
}

}  // namespace pelorin

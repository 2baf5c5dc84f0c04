#include "model/PositionalRead.h"

#include <cerrno>

#include <unistd.h>

namespace pelorin {

bool readExactlyInto(int fd, qint64 offset, char* out, qint64 length)
{
    qint64 got = 0;
    while (got < length) {
        const ssize_t n = ::pread(fd, out + got, size_t(length - got), off_t(offset + got));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        got += n;
    }
    return true;
}

QByteArray readExactlyAt(int fd, qint64 offset, qint64 length)
{
    QByteArray bytes(length, Qt::Uninitialized);
    if (!readExactlyInto(fd, offset, bytes.data(), length))
        return {};
    return bytes;
}

}  // namespace pelorin

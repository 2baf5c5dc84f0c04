#include "photo/PositionalRead.h"

#include <cerrno>

#include <unistd.h>

namespace pelorin {

QByteArray readExactlyAt(int fd, qint64 offset, qint64 length)
{
    QByteArray bytes(length, Qt::Uninitialized);
    qint64 got = 0;
    while (got < length) {
        const ssize_t n = ::pread(fd, bytes.data() + got, size_t(length - got), off_t(offset + got));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return {};
        got += n;
    }
    return bytes;
}

}  // namespace pelorin

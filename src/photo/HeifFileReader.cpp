#include "photo/HeifFileReader.h"

#include <libheif/heif.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace pelorin {

namespace {

// Big enough to hold a phone photo's 'meta' box and the small items libheif reads in one go.
constexpr qsizetype kWindowSize = 64 * 1024;

// Reads length bytes at offset, riding over interrupted and short reads; false at an error or
// the end of the file.
bool readAt(int fd, char* data, std::size_t length, std::int64_t offset)
{
    while (length > 0) {
        const ssize_t got = ::pread(fd, data, length, offset);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        data += got;
        length -= std::size_t(got);
        offset += got;
    }
    return true;
}

}  // namespace

struct HeifReaderCalls {
    static HeifFileReader* self(void* userdata) { return static_cast<HeifFileReader*>(userdata); }

    static std::int64_t position(void* userdata) { return self(userdata)->m_position; }

    static int read(void* data, std::size_t size, void* userdata) { return self(userdata)->read(data, size) ? 0 : -1; }

    static int seek(std::int64_t position, void* userdata)
    {
        if (position < 0 || position > self(userdata)->m_size)
            return -1;
        self(userdata)->m_position = position;
        return 0;
    }

    static heif_reader_grow_status waitForFileSize(std::int64_t targetSize, void* userdata)
    {
        return targetSize <= self(userdata)->m_size ? heif_reader_grow_status_size_reached
                                                    : heif_reader_grow_status_size_beyond_eof;
    }
};

HeifFileReader::HeifFileReader(const QString& path)
    : m_file(path)
{
}

bool HeifFileReader::open(QString* error)
{
    if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        if (error)
            *error = QStringLiteral("cannot open the file: %1").arg(m_file.errorString());
        return false;
    }
    m_size = m_file.size();
    return true;
}

QByteArray HeifFileReader::head(qsizetype length)
{
    QByteArray bytes(std::min<std::int64_t>(length, m_size), Qt::Uninitialized);
    const std::int64_t saved = m_position;
    m_position = 0;
    const bool ok = read(bytes.data(), std::size_t(bytes.size()));
    m_position = saved;
    return ok ? bytes : QByteArray();
}

bool HeifFileReader::refill(std::int64_t at)
{
    const qsizetype length = qsizetype(std::min<std::int64_t>(kWindowSize, m_size - at));
    if (m_window.size() < kWindowSize)
        m_window.resize(kWindowSize);
    m_windowStart = at;
    m_windowLength = 0;
    if (length <= 0 || !readAt(m_file.handle(), m_window.data(), std::size_t(length), at))
        return false;
    m_windowLength = length;
    return true;
}

bool HeifFileReader::read(void* data, std::size_t length)
{
    if (std::uint64_t(length) > std::uint64_t(m_size - m_position))
        return false;
    char* out = static_cast<char*>(data);
    while (length > 0) {
        const std::int64_t inWindow = m_windowStart + m_windowLength - m_position;
        if (m_position >= m_windowStart && inWindow > 0) {
            const std::size_t take = std::min<std::size_t>(length, std::size_t(inWindow));
            std::memcpy(out, m_window.constData() + (m_position - m_windowStart), take);
            out += take;
            length -= take;
            m_position += std::int64_t(take);
            continue;
        }
        // Image data and other big reads go straight to the caller.
        if (length >= std::size_t(kWindowSize)) {
            if (!readAt(m_file.handle(), out, length, m_position))
                return false;
            m_position += std::int64_t(length);
            return true;
        }
        if (!refill(m_position))
            return false;
    }
    return true;
}

const heif_reader* HeifFileReader::api()
{
    static const heif_reader reader{1, &HeifReaderCalls::position, &HeifReaderCalls::read, &HeifReaderCalls::seek,
                                    &HeifReaderCalls::waitForFileSize};
    return &reader;
}

}  // namespace pelorin

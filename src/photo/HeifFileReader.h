#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <cstdint>

struct heif_reader;

namespace pelorin {

// Feeds a file to libheif through a read window of its own. libheif's own file reader asks the
// stream for its position before nearly every box, and each ask is a system call; over a phone
// photo that is thousands of calls per opening. This keeps the position in memory and reads
// ahead, so a file is opened with a few dozen reads. It must outlive the context it feeds.
class HeifFileReader {
public:
    explicit HeifFileReader(const QString& path);

    bool open(QString* error);
    std::int64_t size() const { return m_size; }
    // The first bytes of the file, for telling its kind.
    QByteArray head(qsizetype length);

    static const heif_reader* api();

private:
    bool read(void* data, std::size_t length);
    bool refill(std::int64_t at);

    QFile m_file;
    std::int64_t m_size = 0;
    std::int64_t m_position = 0;
    QByteArray m_window;
    std::int64_t m_windowStart = 0;
    qsizetype m_windowLength = 0;

    friend struct HeifReaderCalls;
};

}  // namespace pelorin

#pragma once

#include "isobmff/ByteSource.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

struct heif_reader;

namespace pelorin {

// Feeds a file to libheif through the box reader's read window. libheif's own file reader asks
// the stream for its position before nearly every box, and each ask is a system call; over a
// phone photo that is thousands of calls per opening. This keeps the position in memory and
// reads ahead, so a file is opened with a few dozen reads. It must outlive the context it feeds.
class HeifFileReader {
public:
    explicit HeifFileReader(const QString& path) : source_(path) {}

    bool open(QString* error);
    std::int64_t size() const { return source_.size(); }
    // The first bytes of the file, for telling its kind.
    QByteArray head(qsizetype length) { return source_.read(0, length); }

    static const heif_reader* api();

private:
    FileByteSource source_;
    std::int64_t position_ = 0;

    friend struct HeifReaderCalls;
};

}  // namespace pelorin

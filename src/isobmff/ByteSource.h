#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <cstdint>

namespace pelorin {

// Random access to the bytes of a file or a buffer. Reads never go past the end, so a hostile
// size field can at most ask for what is really there.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    virtual std::int64_t size() const = 0;
    // Up to length bytes from offset; fewer at the end, empty when offset is out of range.
    virtual QByteArray read(std::int64_t offset, std::int64_t length) = 0;
};

class MemoryByteSource : public ByteSource {
public:
    explicit MemoryByteSource(QByteArray bytes) : bytes_(std::move(bytes)) {}
    std::int64_t size() const override { return bytes_.size(); }
    QByteArray read(std::int64_t offset, std::int64_t length) override;

private:
    QByteArray bytes_;
};

class FileByteSource : public ByteSource {
public:
    explicit FileByteSource(const QString& path) : file_(path) {}
    bool open(QString* error);
    std::int64_t size() const override { return size_; }
    QByteArray read(std::int64_t offset, std::int64_t length) override;
    // Exactly length bytes from offset into out; false when the file has fewer or cannot be read.
    bool readInto(std::int64_t offset, char* out, std::int64_t length);
    // The same for scattered small reads (the heads of media chunks megabytes apart), which
    // would each fill a whole window for a few bytes.
    bool readIntoDirectly(std::int64_t offset, char* out, std::int64_t length);
    int handle() const { return file_.handle(); }

private:
    // Box headers and small boxes are read one after another, mostly forward; a window of the
    // file serves them with one system call instead of one (or two) each.
    static constexpr std::int64_t kWindowSize = 64 * 1024;

    QFile file_;
    std::int64_t size_ = 0;
    QByteArray window_;
    std::int64_t windowStart_ = 0;
};

}  // namespace pelorin

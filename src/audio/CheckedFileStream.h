#pragma once
#include <QByteArray>
#include <QString>

#include <taglib/tiostream.h>

namespace pelorin {

// A TagLib stream over a file opened for reading and writing that remembers the first write
// that failed. TagLib's own FileStream drops write errors, so a disk that fills while it saves
// would leave a cut-off file that still reads as audio; with this stream the writer sees the
// error and discards the copy. Moving the bytes behind a grown or shrunk tag uses a bounded
// buffer, whatever the file's size.
class CheckedFileStream : public TagLib::IOStream {
public:
    explicit CheckedFileStream(const QString& path);
    ~CheckedFileStream() override;
    CheckedFileStream(const CheckedFileStream&) = delete;
    CheckedFileStream& operator=(const CheckedFileStream&) = delete;

    // 0 while every write has reached the file, else the errno of the first that did not.
    int writeError() const { return writeError_; }

    TagLib::FileName name() const override;
    TagLib::ByteVector readBlock(unsigned long length) override;
    void writeBlock(const TagLib::ByteVector& data) override;
    void insert(const TagLib::ByteVector& data, unsigned long start = 0, unsigned long replace = 0) override;
    void removeBlock(unsigned long start = 0, unsigned long length = 0) override;
    bool readOnly() const override { return false; }
    bool isOpen() const override { return fd_ >= 0; }
    void seek(long offset, Position p = Beginning) override;
    void clear() override {}
    long tell() const override { return position_; }
    long length() override;
    void truncate(long length) override;

private:
    bool writeAt(const char* data, long size, long offset);
    // Moves the bytes from `from` to the end of the file so that they start at `to`.
    void moveTail(long from, long to);
    void noteError(int err);

    QByteArray path_;
    int fd_ = -1;
    long position_ = 0;
    int writeError_ = 0;
};

}  // namespace pelorin

#include "photo/HeifFileReader.h"

#include <libheif/heif.h>

namespace pelorin {

struct HeifReaderCalls {
    static HeifFileReader* self(void* userdata) { return static_cast<HeifFileReader*>(userdata); }

    static std::int64_t position(void* userdata) { return self(userdata)->position_; }

    static int read(void* data, std::size_t size, void* userdata)
    {
        HeifFileReader* reader = self(userdata);
        if (std::uint64_t(size) > std::uint64_t(reader->size() - reader->position_)
            || !reader->source_.readInto(reader->position_, static_cast<char*>(data), std::int64_t(size)))
            return -1;
        reader->position_ += std::int64_t(size);
        return 0;
    }

    static int seek(std::int64_t position, void* userdata)
    {
        if (position < 0 || position > self(userdata)->size())
            return -1;
        self(userdata)->position_ = position;
        return 0;
    }

    static heif_reader_grow_status waitForFileSize(std::int64_t targetSize, void* userdata)
    {
        return targetSize <= self(userdata)->size() ? heif_reader_grow_status_size_reached
                                                    : heif_reader_grow_status_size_beyond_eof;
    }
};

bool HeifFileReader::open(QString* error)
{
    QString why;
    if (source_.open(&why))
        return true;
    if (error)
        *error = QStringLiteral("cannot open the file: %1").arg(why);
    return false;
}

const heif_reader* HeifFileReader::api()
{
    static const heif_reader reader{1, &HeifReaderCalls::position, &HeifReaderCalls::read, &HeifReaderCalls::seek,
                                    &HeifReaderCalls::waitForFileSize};
    return &reader;
}

}  // namespace pelorin

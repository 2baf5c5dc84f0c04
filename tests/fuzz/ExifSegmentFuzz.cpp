// The EXIF segment reader scans whole files from anywhere: any bytes must give a bounded list of
// lines, and the state may only change the ways the reader promises.
#include "photo/JpegExifSegmentReader.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data),
                                                     static_cast<qsizetype>(size));
    pelorin::ExifSegmentReaderState state;
    state.theImageData = "image";
    const pelorin::ExifSegmentReport report = pelorin::readExifSegments(bytes, state);

    if (report.lines.isEmpty() || report.lines.first().size() != 4 || !report.error.isEmpty())
        std::abort();
    const bool jpeg = size >= 2 && data[0] == 0xff && data[1] == 0xd8;
    if (!jpeg && report.lines.size() != 2)
        std::abort();
    // The flag needs an end of image before the last two bytes.
    bool earlyEnd = false;
    for (std::size_t i = 0; i + 2 < size && !earlyEnd; ++i)
        earlyEnd = data[i] == 0xff && data[i + 1] == 0xd9;
    if (state.bhasThumImage != (jpeg && earlyEnd))
        std::abort();
    if (!state.theImageData.isEmpty() && state.theImageData != "image")
        std::abort();
    return 0;
}

// CAF chunk lists and info chunks come from any file a user imports: every byte string must be
// parsed or refused within its own bounds, and a parsed info chunk must render back the same.
#include "audio/CafInfo.h"

#include <QBuffer>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace pelorin;
    QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QString problem;
    readCafInfo(buffer, &problem);
    readCafAudioFormat(buffer);
    const CafLayout layout = readCafLayout(buffer);
    for (const CafChunk& chunk : layout.chunks) {
        if (chunk.offset < 8 || chunk.offset + 12 > bytes.size()
            || (chunk.size > 0 && chunk.offset + 12 + chunk.size > bytes.size()))
            std::abort();
    }
    QString bodyProblem;
    const CafInfoEntries entries = parseCafInfoBody(bytes, &bodyProblem);
    if (bodyProblem.isEmpty() && parseCafInfoBody(renderCafInfoBody(entries)) != entries)
        std::abort();
    return 0;
}

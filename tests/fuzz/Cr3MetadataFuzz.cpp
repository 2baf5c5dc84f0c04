// CR3 metadata comes from files from anywhere: any bytes must give the metadata or a reason,
// never a crash, with every stream inside the input; the photo reader, which hands the streams
// to exiv2, must answer with properties or an error.
#include "isobmff/Cr3MetadataRewrite.h"
#include "photo/PhotoProperties.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    pelorin::MemoryByteSource source(bytes);
    QString error;
    const std::optional<pelorin::Cr3Metadata> metadata = pelorin::readCr3Metadata(source, &error);
    if (!metadata && error.isEmpty())
        std::abort();
    if (metadata) {
        for (const QByteArray& stream : metadata->tiff) {
            if (stream.size() > bytes.size())
                std::abort();
        }
    }
    pelorin::readPhotoProperties(bytes, QStringLiteral("cr3"));
    return 0;
}

// The TIFF-block parser that lays a JPEG's EXIF out again around a camera's maker note: any
// bytes must parse or be refused without reading past them, and a block laid out again must
// parse strictly and hold the pinned value where it was, byte for byte.
#include "photo/ExifTiffTree.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    using pelorin::ExifTiffTree;
    ExifTiffTree::parse(bytes, ExifTiffTree::Parse::Strict);
    const auto tree = ExifTiffTree::parse(bytes, ExifTiffTree::Parse::Lenient);
    if (!tree)
        return 0;
    const auto makerNote = tree->exifDirectoryValue(0x927C);
    if (!makerNote)
        return 0;
    const auto laidOut = tree->withExifValuePinned(0x927C, *makerNote);
    if (!laidOut)
        return 0;
    if (laidOut->mid(makerNote->offset, makerNote->bytes.size()) != makerNote->bytes)
        std::abort();
    const auto again = ExifTiffTree::parse(*laidOut, ExifTiffTree::Parse::Lenient);
    if (!again || !again->exifDirectoryValue(0x927C))
        std::abort();
    return 0;
}

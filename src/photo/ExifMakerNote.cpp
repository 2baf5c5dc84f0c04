#include "photo/ExifMakerNote.h"

#include "photo/ExifTiffTree.h"

namespace pelorin {
namespace {

constexpr quint16 kMakerNoteTag = 0x927C;

}  // namespace

QByteArray exifWithMakerNoteOf(const QByteArray& sourceExif, const QByteArray& written)
{
    if (exifKeepsMakerNoteOf(sourceExif, written))
        return written;
    const auto source = ExifTiffTree::parse(sourceExif);
    const auto makerNote = source ? source->exifDirectoryValue(kMakerNoteTag) : std::nullopt;
    const auto tree = ExifTiffTree::parse(written);
    if (!makerNote || !tree || tree->bigEndian() != source->bigEndian())
        return written;
    return tree->withExifValuePinned(kMakerNoteTag, *makerNote).value_or(written);
}

bool exifKeepsMakerNoteOf(const QByteArray& sourceExif, const QByteArray& written)
{
    const auto source = ExifTiffTree::parse(sourceExif);
    const auto makerNote = source ? source->exifDirectoryValue(kMakerNoteTag) : std::nullopt;
    if (!makerNote)
        return true;
    const auto tree = ExifTiffTree::parse(written);
    const auto kept = tree ? tree->exifDirectoryValue(kMakerNoteTag) : std::nullopt;
    return kept && kept->offset == makerNote->offset && kept->type == makerNote->type
           && kept->count == makerNote->count && kept->bytes == makerNote->bytes
           && kept->trailing.startsWith(makerNote->trailing);
}

}  // namespace pelorin

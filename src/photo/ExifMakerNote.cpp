#include "photo/ExifMakerNote.h"

#include "photo/ExifTiffTree.h"
#include "photo/MakerNoteValues.h"

#include <exiv2/exiv2.hpp>

namespace pelorin {
namespace {

constexpr quint16 kMakerNoteTag = 0x927C;

}  // namespace

QByteArray exifWithMakerNoteOf(const QByteArray& sourceExif, const QByteArray& written)
{
    if (exifKeepsMakerNoteOf(sourceExif, written))
        return written;
    const auto source = ExifTiffTree::parse(sourceExif, ExifTiffTree::Parse::Lenient);
    const auto makerNote = source ? source->exifDirectoryValue(kMakerNoteTag) : std::nullopt;
    const auto tree = ExifTiffTree::parse(written);
    if (!makerNote || !tree || tree->bigEndian() != source->bigEndian())
        return written;
    return tree->withExifValuePinned(kMakerNoteTag, *makerNote).value_or(written);
}

QStringList exifMakerNoteValues(const QByteArray& exif)
{
    Exiv2::ExifData data;
    try {
        Exiv2::ExifParser::decode(data, reinterpret_cast<const Exiv2::byte*>(exif.constData()), uint32_t(exif.size()));
    } catch (const std::exception&) {
        return {QStringLiteral("unreadable")};
    }
    return makerNoteValues(data);
}

QByteArray exifWithMakerNoteKept(const QByteArray& sourceExif, const QByteArray& written,
                                 const std::optional<QStringList>& sourceValues)
{
    const QByteArray pinned = exifWithMakerNoteOf(sourceExif, written);
    if (pinned == written)
        return written;
    const QStringList values = sourceValues ? *sourceValues : exifMakerNoteValues(sourceExif);
    if (exifMakerNoteValues(pinned) == values || exifMakerNoteValues(written) != values)
        return pinned;
    return written;
}

bool exifKeepsMakerNoteOf(const QByteArray& sourceExif, const QByteArray& written)
{
    const auto source = ExifTiffTree::parse(sourceExif, ExifTiffTree::Parse::Lenient);
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

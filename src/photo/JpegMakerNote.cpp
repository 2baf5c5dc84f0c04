#include "photo/JpegMakerNote.h"

#include "photo/ExifTiffTree.h"
#include "photo/JpegSegments.h"

#include <optional>

namespace pelorin {
namespace {

constexpr quint16 kMakerNoteTag = 0x927C;
const QByteArray kExifHeader("Exif\0\0", 6);
constexpr qsizetype kMaxSegmentPayload = 0xFFFF - 2;

std::optional<JpegSegment> exifSegmentOf(const QByteArray& jpeg)
{
    std::optional<JpegSegment> found;
    forEachJpegSegment(jpeg, [&](const JpegSegment& s) {
        if (s.marker == 0xE1 && s.length >= kExifHeader.size()
            && jpeg.mid(s.payload, kExifHeader.size()) == kExifHeader) {
            found = s;
            return false;
        }
        return true;
    });
    return found;
}

}  // namespace

QByteArray jpegExifBlock(const QByteArray& jpeg)
{
    const auto segment = exifSegmentOf(jpeg);
    if (!segment)
        return {};
    return jpeg.mid(segment->payload + kExifHeader.size(), segment->length - kExifHeader.size());
}

QByteArray jpegWithMakerNoteOf(const QByteArray& sourceExif, const QByteArray& jpeg)
{
    const auto source = ExifTiffTree::parse(sourceExif);
    const auto segment = exifSegmentOf(jpeg);
    if (!source || !segment || jpegKeepsMakerNoteOf(sourceExif, jpeg))
        return jpeg;
    const auto makerNote = source->exifDirectoryValue(kMakerNoteTag);
    const auto written = ExifTiffTree::parse(jpegExifBlock(jpeg));
    if (!makerNote || !written || written->bigEndian() != source->bigEndian())
        return jpeg;
    const auto block = written->withExifValuePinned(kMakerNoteTag, *makerNote);
    if (!block || kExifHeader.size() + block->size() > kMaxSegmentPayload)
        return jpeg;
    const qsizetype length = 2 + kExifHeader.size() + block->size();
    QByteArray out = jpeg.left(segment->start);
    out.append(char(0xFF)).append(char(0xE1)).append(char(length >> 8)).append(char(length & 0xFF));
    out.append(kExifHeader).append(*block);
    out.append(jpeg.mid(segment->end()));
    return out;
}

bool jpegKeepsMakerNoteOf(const QByteArray& sourceExif, const QByteArray& jpeg)
{
    const auto source = ExifTiffTree::parse(sourceExif);
    const auto makerNote = source ? source->exifDirectoryValue(kMakerNoteTag) : std::nullopt;
    if (!makerNote)
        return true;
    const auto written = ExifTiffTree::parse(jpegExifBlock(jpeg));
    const auto kept = written ? written->exifDirectoryValue(kMakerNoteTag) : std::nullopt;
    return kept && kept->offset == makerNote->offset && kept->type == makerNote->type
           && kept->count == makerNote->count && kept->bytes == makerNote->bytes
           && kept->trailing.startsWith(makerNote->trailing);
}

}  // namespace pelorin

#include "photo/JpegMakerNote.h"

#include "photo/ExifMakerNote.h"
#include "photo/JpegSegments.h"

#include <optional>

namespace pelorin {
namespace {

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

QByteArray jpegWithMakerNoteOf(const QByteArray& sourceExif, const QByteArray& jpeg,
                               const std::optional<QStringList>& sourceValues)
{
    const auto segment = exifSegmentOf(jpeg);
    if (!segment)
        return jpeg;
    const QByteArray written = jpegExifBlock(jpeg);
    const QByteArray block = exifWithMakerNoteKept(sourceExif, written, sourceValues);
    if (block == written || kExifHeader.size() + block.size() > kMaxSegmentPayload)
        return jpeg;
    const qsizetype length = 2 + kExifHeader.size() + block.size();
    QByteArray out = jpeg.left(segment->start);
    out.append(char(0xFF)).append(char(0xE1)).append(char(length >> 8)).append(char(length & 0xFF));
    out.append(kExifHeader).append(block);
    out.append(jpeg.mid(segment->end()));
    return out;
}

bool jpegKeepsMakerNoteOf(const QByteArray& sourceExif, const QByteArray& jpeg)
{
    return exifKeepsMakerNoteOf(sourceExif, jpegExifBlock(jpeg));
}

}  // namespace pelorin

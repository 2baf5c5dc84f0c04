#include "photo/JpegExifContinuation.h"

#include "photo/JpegSegments.h"

#include <QList>

namespace pelorin {
namespace {

const QByteArray kExifHeader("Exif\0\0", 6);
constexpr qsizetype kMaxSegmentPayload = 0xFFFF - 2;

bool isExifSegment(const QByteArray& jpeg, const JpegSegment& s)
{
    return s.marker == 0xE1 && s.length >= kExifHeader.size() && jpeg.mid(s.payload, kExifHeader.size()) == kExifHeader;
}

bool startsWithTiffHeader(const QByteArray& jpeg, const JpegSegment& s)
{
    const QByteArray head = jpeg.mid(s.payload + kExifHeader.size(), 4);
    return head == QByteArray("MM\0*", 4) || head == QByteArray("II*\0", 4);
}

}  // namespace

std::optional<QByteArray> jpegWithExifContinuationsJoined(const QByteArray& jpeg)
{
    QList<JpegSegment> run;  // the first Exif segment and the continuations right behind it
    forEachJpegSegment(jpeg, [&](const JpegSegment& s) {
        if (run.isEmpty()) {
            if (isExifSegment(jpeg, s))
                run << s;
            return true;
        }
        if (!isExifSegment(jpeg, s) || startsWithTiffHeader(jpeg, s))
            return false;
        run << s;
        return true;
    });
    if (run.size() < 2)
        return jpeg;
    QByteArray payload = jpeg.mid(run.first().payload, run.first().length);
    for (qsizetype i = 1; i < run.size(); ++i)
        payload += jpeg.mid(run[i].payload + kExifHeader.size(), run[i].length - kExifHeader.size());
    if (payload.size() > kMaxSegmentPayload)
        return std::nullopt;
    const qsizetype length = payload.size() + 2;
    QByteArray out = jpeg.left(run.first().start);
    out.append(char(0xFF)).append(char(0xE1)).append(char(length >> 8)).append(char(length & 0xFF));
    out.append(payload);
    out.append(jpeg.mid(run.last().end()));
    return out;
}

}  // namespace pelorin

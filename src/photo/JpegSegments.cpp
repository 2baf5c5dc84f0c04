#include "photo/JpegSegments.h"

namespace pelorin {
namespace {

bool startsWith(const QByteArray& jpeg, qsizetype payload, qsizetype length, const char* signature, qsizetype n)
{
    return length >= n && jpeg.mid(payload, n) == QByteArray(signature, n);
}

bool keep(const QByteArray& jpeg, quint8 marker, qsizetype payload, qsizetype length)
{
    switch (marker) {
    case 0xE0:  // JFIF / JFXX
        return startsWith(jpeg, payload, length, "JFIF\0", 5) || startsWith(jpeg, payload, length, "JFXX\0", 5);
    case 0xE1:  // Exif stays (it holds the orientation); XMP was emptied by the metadata writer
        return startsWith(jpeg, payload, length, "Exif\0", 5);
    case 0xE2:
        return startsWith(jpeg, payload, length, "ICC_PROFILE\0", 12) || startsWith(jpeg, payload, length, "MPF\0", 4);
    case 0xEE:  // Adobe: colour transform of CMYK/YCCK data
        return startsWith(jpeg, payload, length, "Adobe", 5);
    default:
        // Other application segments and comments carry metadata; tables and frames are kept.
        return !((marker >= 0xE0 && marker <= 0xEF) || marker == 0xFE);
    }
}

// A camera's own record of the shot kept beside the EXIF: Canon's CIFF heap in APP0, Qualcomm's
// camera attributes in APP7.
bool cameraRecord(const QByteArray& jpeg, quint8 marker, qsizetype payload, qsizetype length)
{
    if (marker == 0xE0)
        return length >= 14 && jpeg.mid(payload + 6, 8) == "HEAPJPGM";
    if (marker == 0xE7)  // a length byte, then the name
        return length > 27 && jpeg.mid(payload + 1, 26) == "Qualcomm Camera Attributes";
    return false;
}

QByteArray withoutSegments(const QByteArray& jpeg, bool (*drop)(const QByteArray&, quint8, qsizetype, qsizetype))
{
    QByteArray out;
    out.reserve(jpeg.size());
    const qsizetype stop = forEachJpegSegment(jpeg, [&](const JpegSegment& s) {
        if (out.isEmpty())
            out.append(jpeg.left(2));
        if (!drop(jpeg, s.marker, s.payload, s.length))
            out.append(jpeg.mid(s.start, s.end() - s.start));
        return true;
    });
    if (stop == 0)
        return jpeg;
    if (out.isEmpty())
        out.append(jpeg.left(2));
    out.append(jpeg.mid(stop));
    return out;
}

bool notKept(const QByteArray& jpeg, quint8 marker, qsizetype payload, qsizetype length)
{
    return !keep(jpeg, marker, payload, length);
}

}  // namespace

QByteArray dropCameraRecordSegments(const QByteArray& jpeg) { return withoutSegments(jpeg, cameraRecord); }

qsizetype forEachJpegSegment(const QByteArray& jpeg, const std::function<bool(const JpegSegment&)>& visit)
{
    if (jpeg.size() < 4 || quint8(jpeg[0]) != 0xFF || quint8(jpeg[1]) != 0xD8)
        return 0;
    qsizetype pos = 2;
    while (pos + 4 <= jpeg.size()) {
        if (quint8(jpeg[pos]) != 0xFF)
            break;
        const quint8 marker = quint8(jpeg[pos + 1]);
        if (marker == 0xFF) {
            ++pos;
            continue;
        }
        if (marker == 0xDA)
            break;
        const qsizetype length = (quint8(jpeg[pos + 2]) << 8) | quint8(jpeg[pos + 3]);
        if (length < 2 || pos + 2 + length > jpeg.size())
            break;
        if (!visit({marker, pos, pos + 4, length - 2}))
            break;
        pos += 2 + length;
    }
    return pos;
}

QByteArray dropMetadataSegments(const QByteArray& jpeg) { return withoutSegments(jpeg, notKept); }

}  // namespace pelorin

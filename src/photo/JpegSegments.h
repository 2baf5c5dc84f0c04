#pragma once

#include <QByteArray>

#include <functional>

namespace pelorin {

// One marker segment of a JPEG's header: its marker, where the segment starts (at the 0xFF)
// and where its payload (after the two length bytes) lies.
struct JpegSegment {
    quint8 marker = 0;
    qsizetype start = 0;
    qsizetype payload = 0;
    qsizetype length = 0;  // of the payload

    qsizetype end() const { return payload + length; }
};

// Calls visit for each marker segment up to the first scan, in file order, while visit returns
// true. Returns where the walk stopped: the start-of-scan marker, the first byte that breaks the
// structure, or the end of the data; 0 when the data is no JPEG.
qsizetype forEachJpegSegment(const QByteArray& jpeg, const std::function<bool(const JpegSegment&)>& visit);

// Drops from a JPEG every marker segment that can carry metadata a privacy clean-up must remove
// (Photoshop resources, comments, extended XMP and the makers' application segments), keeping
// the JFIF header, the Exif segment, the ICC profile, the multi-picture index and Adobe's colour
// transform, which decoders need. The image data and anything after it are copied unchanged.
QByteArray dropMetadataSegments(const QByteArray& jpeg);

// Drops the application segments in which a camera keeps its own record of the shot beside the
// EXIF (Canon's CIFF heap, Qualcomm's camera attributes): dates, owner, settings that a removal
// of the EXIF must take too.
QByteArray dropCameraRecordSegments(const QByteArray& jpeg);

}  // namespace pelorin

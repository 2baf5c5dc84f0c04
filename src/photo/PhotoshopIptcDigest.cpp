#include "photo/PhotoshopIptcDigest.h"

#include "photo/JpegSegments.h"

#include <QCryptographicHash>
#include <QList>

#include <algorithm>
#include <initializer_list>
#include <optional>

namespace pelorin {
namespace {

constexpr quint16 kIptcRecord = 0x0404;
constexpr quint16 kIptcDigest = 0x0425;
const QByteArray kPhotoshopSignature("Photoshop 3.0\0", 14);

quint16 big16(const QByteArray& b, qsizetype at) { return quint16((quint8(b[at]) << 8) | quint8(b[at + 1])); }
quint32 big32(const QByteArray& b, qsizetype at) { return (quint32(big16(b, at)) << 16) | big16(b, at + 2); }

// One image resource: where it starts and ends (padding included) and where its data lies.
struct Resource {
    quint16 id = 0;
    qsizetype start = 0;
    qsizetype end = 0;
    qsizetype data = 0;
    qsizetype size = 0;
};

// The resources of an image resource block between begin and end; nullopt when one does not
// fit, so that nothing is changed in a block that cannot be followed.
std::optional<QList<Resource>> resourcesIn(const QByteArray& b, qsizetype begin, qsizetype end)
{
    QList<Resource> found;
    qsizetype pos = begin;
    while (pos + 12 <= end) {
        if (b.mid(pos, 4) != "8BIM")
            return std::nullopt;
        Resource r;
        r.id = big16(b, pos + 4);
        r.start = pos;
        const qsizetype nameLength = quint8(b[pos + 6]);
        const qsizetype sizeAt = pos + 6 + ((nameLength + 2) & ~qsizetype(1));  // padded to even
        if (sizeAt + 4 > end)
            return std::nullopt;
        r.size = qsizetype(big32(b, sizeAt));
        r.data = sizeAt + 4;
        if (r.size > end - r.data)
            return std::nullopt;
        r.end = qMin(end, r.data + r.size + (r.size & 1));
        found.append(r);
        pos = r.end;
    }
    return found;
}

struct PhotoshopSegment {
    JpegSegment segment;
    QList<Resource> resources;
};

std::optional<QList<PhotoshopSegment>> photoshopSegments(const QByteArray& jpeg)
{
    QList<PhotoshopSegment> segments;
    bool readable = true;
    forEachJpegSegment(jpeg, [&](const JpegSegment& s) {
        if (s.marker != 0xED || jpeg.mid(s.payload, kPhotoshopSignature.size()) != kPhotoshopSignature)
            return true;
        const auto resources = resourcesIn(jpeg, s.payload + kPhotoshopSignature.size(), s.end());
        if (!resources)
            readable = false;
        else
            segments.append({s, *resources});
        return readable;
    });
    return readable ? std::optional(segments) : std::nullopt;
}

std::optional<QByteArray> resourceData(const QByteArray& jpeg, const QList<PhotoshopSegment>& segments, quint16 id)
{
    for (const PhotoshopSegment& s : segments) {
        for (const Resource& r : s.resources) {
            if (r.id == id)
                return jpeg.mid(r.data, r.size);
        }
    }
    return std::nullopt;
}

QByteArray md5(const QByteArray& bytes) { return QCryptographicHash::hash(bytes, QCryptographicHash::Md5); }

// The output without the resources of the given id; a Photoshop segment left with nothing goes
// too.
QByteArray withoutResources(const QByteArray& jpeg, const QList<PhotoshopSegment>& segments,
                            std::initializer_list<quint16> ids)
{
    QByteArray out = jpeg;
    for (auto s = segments.crbegin(); s != segments.crend(); ++s) {
        QByteArray payload = jpeg.mid(s->segment.payload, s->segment.length);
        bool changed = false;
        for (auto r = s->resources.crbegin(); r != s->resources.crend(); ++r) {
            if (std::find(ids.begin(), ids.end(), r->id) != ids.end()) {
                payload.remove(r->start - s->segment.payload, r->end - r->start);
                changed = true;
            }
        }
        if (!changed)
            continue;
        const qsizetype segmentLength = s->segment.end() - s->segment.start;
        if (payload.size() <= kPhotoshopSignature.size()) {
            out.remove(s->segment.start, segmentLength);
            continue;
        }
        QByteArray segment("\xFF\xED", 2);
        segment.append(char((payload.size() + 2) >> 8)).append(char((payload.size() + 2) & 0xFF)).append(payload);
        out.replace(s->segment.start, segmentLength, segment);
    }
    return out;
}

}  // namespace

QByteArray jpegWithIptcDigestInStep(const QByteArray& source, const QByteArray& output)
{
    const auto outSegments = photoshopSegments(output);
    const auto sourceSegments = photoshopSegments(source);
    if (!outSegments || !sourceSegments || !resourceData(output, *outSegments, kIptcDigest))
        return output;
    const auto record = resourceData(output, *outSegments, kIptcRecord);
    const auto sourceRecord = resourceData(source, *sourceSegments, kIptcRecord);
    if (!record)
        return sourceRecord ? withoutResources(output, *outSegments, {kIptcDigest}) : output;
    // Where the source held no IPTC record, the output's is all the writer's own.
    const auto sourceDigest = resourceData(source, *sourceSegments, kIptcDigest);
    if (sourceRecord && (!sourceDigest || *sourceDigest != md5(*sourceRecord)))
        return output;
    QByteArray out = output;
    for (const PhotoshopSegment& s : *outSegments) {
        for (const Resource& r : s.resources) {
            if (r.id == kIptcDigest && r.size == 16)
                out.replace(r.data, 16, md5(*record));
        }
    }
    return out;
}

QByteArray jpegWithoutIptcRecords(const QByteArray& jpeg)
{
    const auto segments = photoshopSegments(jpeg);
    return segments ? withoutResources(jpeg, *segments, {kIptcRecord}) : jpeg;
}

QByteArray jpegWithoutPhotoshopThumbnails(const QByteArray& jpeg)
{
    const auto segments = photoshopSegments(jpeg);
    return segments ? withoutResources(jpeg, *segments, {0x0409, 0x040C}) : jpeg;
}

}  // namespace pelorin

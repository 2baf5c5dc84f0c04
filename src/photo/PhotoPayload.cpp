#include "photo/PhotoPayload.h"

#include "photo/TiffPieces.h"


namespace pelorin {
namespace {

using Pieces = QList<QByteArrayView>;

quint32 big32(const QByteArray& b, qsizetype at)
{
    return (quint32(quint8(b[at])) << 24) | (quint32(quint8(b[at + 1])) << 16) | (quint32(quint8(b[at + 2])) << 8)
           | quint32(quint8(b[at + 3]));
}

quint32 little32(const QByteArray& b, qsizetype at)
{
    return quint32(quint8(b[at])) | (quint32(quint8(b[at + 1])) << 8) | (quint32(quint8(b[at + 2])) << 16)
           | (quint32(quint8(b[at + 3])) << 24);
}

QByteArrayView slice(const QByteArray& b, qsizetype at, qsizetype length) { return QByteArrayView(b).sliced(at, length); }

// Everything from the first start-of-scan on: the scans, the tables between them, the end marker
// and whatever follows it (the second images of a multi-picture file).
std::optional<Pieces> jpegPayload(const QByteArray& b)
{
    qsizetype pos = 2;
    while (pos + 4 <= b.size()) {
        if (quint8(b[pos]) != 0xFF)
            return std::nullopt;
        const quint8 marker = quint8(b[pos + 1]);
        if (marker == 0xFF || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7)) {
            pos += marker == 0xFF ? 1 : 2;
            continue;
        }
        if (marker == 0xDA)
            return Pieces{slice(b, pos, b.size() - pos)};
        const qsizetype length = (quint8(b[pos + 2]) << 8) | quint8(b[pos + 3]);
        if (length < 2 || pos + 2 + length > b.size())
            return std::nullopt;
        pos += 2 + length;
    }
    return std::nullopt;
}

// The chunks that make the picture; text, colour and time chunks are metadata.
std::optional<Pieces> pngPayload(const QByteArray& b)
{
    static const QList<QByteArray> picture{"IHDR", "PLTE", "tRNS", "IDAT", "acTL", "fcTL", "fdAT"};
    Pieces pieces;
    qsizetype pos = 8;
    while (pos + 12 <= b.size()) {
        const quint32 length = big32(b, pos);
        if (length > quint32(b.size() - pos - 12))
            return std::nullopt;
        const QByteArray type = b.mid(pos + 4, 4);
        if (type == "IEND")
            return pieces;
        if (picture.contains(type))
            pieces.append(slice(b, pos + 4, 4 + qsizetype(length)));
        pos += 12 + qsizetype(length);
    }
    return std::nullopt;
}

// Strips and tiles grouped by directory in walking order; a rewrite may move directories, so
// they are compared by their place in the walk, not by offset.
std::optional<Pieces> tiffPayload(const QByteArray& b)
{
    Pieces pieces;
    const bool ok = walkTiffPieces(b, [&](quint32, quint32 offset, quint32 length) {
        pieces.append(slice(b, qsizetype(offset), qsizetype(length)));
    });
    return ok ? std::optional<Pieces>(pieces) : std::nullopt;
}

std::optional<Pieces> webpPayload(const QByteArray& b)
{
    static const QList<QByteArray> picture{"VP8 ", "VP8L", "ALPH", "ANIM", "ANMF"};
    if (b.size() < 12)
        return std::nullopt;
    Pieces pieces;
    const qsizetype end = qMin<qint64>(b.size(), qint64(little32(b, 4)) + 8);
    qsizetype pos = 12;
    while (pos + 8 <= end) {
        const quint32 length = little32(b, pos + 4);
        if (length > quint32(end - pos - 8))
            return std::nullopt;
        const QByteArray type = b.mid(pos, 4);
        if (picture.contains(type))
            pieces.append(slice(b, pos, 8 + qsizetype(length)));
        pos += 8 + qsizetype(length) + (length & 1);
    }
    return pieces;
}

std::optional<Pieces> jp2Payload(const QByteArray& b)
{
    Pieces pieces;
    qsizetype pos = 0;
    while (pos + 8 <= b.size()) {
        quint64 size = big32(b, pos);
        qsizetype header = 8;
        if (size == 1) {
            if (pos + 16 > b.size())
                return std::nullopt;
            size = (quint64(big32(b, pos + 8)) << 32) | big32(b, pos + 12);
            header = 16;
        } else if (size == 0) {
            size = quint64(b.size() - pos);
        }
        if (size < quint64(header) || size > quint64(b.size() - pos))
            return std::nullopt;
        if (b.mid(pos + 4, 4) == "jp2c")
            pieces.append(slice(b, pos + header, qsizetype(size) - header));
        pos += qsizetype(size);
    }
    return pieces;
}

// The header, then the layers and the merged image behind the colour-mode and resource sections.
std::optional<Pieces> psdPayload(const QByteArray& b)
{
    if (b.size() < 30)
        return std::nullopt;
    qsizetype pos = 26;
    for (int section = 0; section < 2; ++section) {
        if (pos + 4 > b.size())
            return std::nullopt;
        const quint32 length = big32(b, pos);
        if (length > quint32(b.size() - pos - 4))
            return std::nullopt;
        pos += 4 + qsizetype(length);
    }
    return Pieces{slice(b, 0, 26), slice(b, pos, b.size() - pos)};
}

qint64 totalSize(const Pieces& pieces)
{
    qint64 total = 0;
    for (const QByteArrayView piece : pieces)
        total += piece.size();
    return total;
}

}  // namespace

std::optional<QList<QByteArrayView>> photoPayload(const QByteArray& bytes, PhotoContainer container)
{
    switch (container) {
    case PhotoContainer::Jpeg:
        return jpegPayload(bytes);
    case PhotoContainer::Png:
        return pngPayload(bytes);
    case PhotoContainer::Tiff:
        return tiffPayload(bytes);
    case PhotoContainer::WebP:
        return webpPayload(bytes);
    case PhotoContainer::Jp2:
        return jp2Payload(bytes);
    case PhotoContainer::Psd:
        return psdPayload(bytes);
    default:
        return Pieces{};
    }
}

QString photoPayloadDifference(const QByteArray& source, const QByteArray& output, PhotoContainer container)
{
    const auto before = photoPayload(source, container);
    if (!before)
        return {};  // nothing to compare against; the source was read as it is
    const auto after = photoPayload(output, container);
    if (!after)
        return QStringLiteral("the image data cannot be followed in the output");
    if (after->size() != before->size() || totalSize(*after) != totalSize(*before))
        return QStringLiteral("the output holds %1 bytes of image data in %2 pieces, the source %3 in %4")
            .arg(totalSize(*after)).arg(after->size()).arg(totalSize(*before)).arg(before->size());
    for (qsizetype i = 0; i < before->size(); ++i) {
        if ((*before)[i] != (*after)[i])
            return QStringLiteral("the image data differs from the source's (piece %1 of %2)").arg(i + 1).arg(before->size());
    }
    return {};
}

}  // namespace pelorin

#include "photo/ContainerProperties.h"

#include <QtEndian>

#include <cstdint>

namespace pelorin {
namespace {

// Bounds-checked big-endian reads; every read states how many bytes it needs.
struct Bytes {
    const QByteArray& data;
    bool has(qint64 pos, qint64 n) const { return pos >= 0 && n >= 0 && pos <= data.size() - n; }
    quint8 u8(qint64 pos) const { return quint8(data[pos]); }
    quint16 be16(qint64 pos) const { return quint16(u8(pos) << 8 | u8(pos + 1)); }
    quint16 le16(qint64 pos) const { return quint16(u8(pos) | u8(pos + 1) << 8); }
    quint32 be32(qint64 pos) const
    {
        return quint32(u8(pos)) << 24 | quint32(u8(pos + 1)) << 16 | quint32(u8(pos + 2)) << 8 | u8(pos + 3);
    }
};

// Calls visit(marker, payloadPos, payloadLength) for each JPEG marker segment before the image
// data; stops at start-of-scan, at a broken length or when visit answers false.
template <typename Visit>
void forEachJpegSegment(const QByteArray& jpeg, Visit visit)
{
    const Bytes b{jpeg};
    if (!b.has(0, 2) || b.be16(0) != 0xFFD8)
        return;
    qint64 pos = 2;
    while (b.has(pos, 4)) {
        if (b.u8(pos) != 0xFF)
            return;
        const quint8 marker = b.u8(pos + 1);
        if (marker == 0xFF) {  // fill byte
            ++pos;
            continue;
        }
        if (marker == 0xD8 || (marker >= 0xD0 && marker <= 0xD7) || marker == 0x01) {
            pos += 2;
            continue;
        }
        if (marker == 0xDA || marker == 0xD9)
            return;
        const quint16 length = b.be16(pos + 2);
        if (length < 2 || !b.has(pos + 2, length))
            return;
        if (!visit(marker, pos + 4, qint64(length) - 2))
            return;
        pos += 2 + length;
    }
}

QString latin1Text(const QByteArray& data, qint64 pos, qint64 n)
{
    QString text = QString::fromLatin1(data.constData() + pos, n);
    const qsizetype nul = text.indexOf(QChar(0));
    return nul >= 0 ? text.left(nul) : text;
}

// The tEXt keywords that have a key of their own in the {PNG} group.
QString pngTextKey(const QString& keyword)
{
    static const char* const known[] = {"Author", "Copyright", "Description", "Title", "Comment",
                                        "Software", "Creation Time", "Disclaimer", "Source", "Warning"};
    for (const char* k : known) {
        if (keyword == QLatin1String(k))
            return keyword;
    }
    return {};
}

}  // namespace

QVariantMap readJfifGroup(const QByteArray& jpeg)
{
    QVariantMap group;
    forEachJpegSegment(jpeg, [&](quint8 marker, qint64 pos, qint64 length) {
        const Bytes b{jpeg};
        if (marker != 0xE0 || length < 14 || jpeg.mid(pos, 5) != QByteArray("JFIF\0", 5))
            return true;
        group.insert(QStringLiteral("JFIFVersion"), QVariantList{qlonglong(b.u8(pos + 5)), qlonglong(b.u8(pos + 6))});
        group.insert(QStringLiteral("DensityUnit"), qlonglong(b.u8(pos + 7)));
        group.insert(QStringLiteral("XDensity"), qlonglong(b.be16(pos + 8)));
        group.insert(QStringLiteral("YDensity"), qlonglong(b.be16(pos + 10)));
        return false;
    });
    if (!group.isEmpty())
        group.insert(QStringLiteral("IsProgressive"), isProgressiveJpeg(jpeg));
    return group;
}

bool isProgressiveJpeg(const QByteArray& jpeg)
{
    bool progressive = false;
    forEachJpegSegment(jpeg, [&](quint8 marker, qint64, qint64) {
        if (marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC) {
            progressive = marker == 0xC2 || marker == 0xC6 || marker == 0xCA || marker == 0xCE;
            return false;
        }
        return true;
    });
    return progressive;
}

QVariantMap readPngGroup(const QByteArray& png)
{
    const Bytes b{png};
    QVariantMap group;
    if (!b.has(0, 8) || png.left(8) != QByteArray("\x89PNG\r\n\x1A\n", 8))
        return group;
    qint64 pos = 8;
    // Chunk count is bounded by the file size; stop at the image data end.
    while (b.has(pos, 8)) {
        const quint32 length = b.be32(pos);
        const QByteArray type = png.mid(pos + 4, 4);
        const qint64 data = pos + 8;
        if (!b.has(data, qint64(length) + 4))
            break;
        if (type == "IHDR" && length >= 13) {
            group.insert(QStringLiteral("InterlaceType"), qlonglong(b.u8(data + 12)));
        } else if (type == "gAMA" && length >= 4) {
            group.insert(QStringLiteral("Gamma"), b.be32(data) / 100000.0);
        } else if (type == "pHYs" && length >= 9 && b.u8(data + 8) == 1) {
            group.insert(QStringLiteral("XPixelsPerMeter"), qlonglong(b.be32(data)));
            group.insert(QStringLiteral("YPixelsPerMeter"), qlonglong(b.be32(data + 4)));
        } else if (type == "sRGB" && length >= 1) {
            group.insert(QStringLiteral("sRGBIntent"), qlonglong(b.u8(data)));
        } else if (type == "cHRM" && length >= 32) {
            QVariantList values;
            for (int i = 0; i < 8; ++i)
                values.append(b.be32(data + 4 * i) / 100000.0);
            group.insert(QStringLiteral("Chromaticities"), values);
        } else if (type == "tEXt" && length > 0) {
            const QByteArray chunk = png.mid(data, length);
            const qsizetype nul = chunk.indexOf('\0');
            if (nul > 0) {
                const QString key = pngTextKey(QString::fromLatin1(chunk.left(nul)));
                if (!key.isEmpty())
                    group.insert(key, latin1Text(chunk, nul + 1, chunk.size() - nul - 1));
            }
        } else if (type == "iTXt" && length > 0) {
            // keyword \0 compression-flag method language \0 translated \0 text (uncompressed only)
            const QByteArray chunk = png.mid(data, length);
            const qsizetype nul = chunk.indexOf('\0');
            if (nul > 0 && nul + 2 < chunk.size() && chunk[nul + 1] == 0) {
                const QString key = pngTextKey(QString::fromLatin1(chunk.left(nul)));
                const qsizetype lang = chunk.indexOf('\0', nul + 3);
                const qsizetype translated = lang < 0 ? -1 : chunk.indexOf('\0', lang + 1);
                if (!key.isEmpty() && translated >= 0)
                    group.insert(key, QString::fromUtf8(chunk.mid(translated + 1)));
            }
        } else if (type == "IEND") {
            break;
        }
        pos = data + qint64(length) + 4;
    }
    return group;
}

QByteArray gifXmpPacket(const QByteArray& gif)
{
    const Bytes b{gif};
    if (!b.has(0, 13) || !(gif.startsWith("GIF87a") || gif.startsWith("GIF89a")))
        return {};
    const quint8 flags = b.u8(10);
    qint64 pos = 13 + ((flags & 0x80) ? 3 * (qint64(1) << ((flags & 7) + 1)) : 0);
    while (b.has(pos, 3) && b.u8(pos) == 0x21) {
        qint64 block = pos + 2;
        // The packet is written raw after the application identifier, its bytes standing in
        // for sub-block lengths, and ends in a 258-byte trailer that lets decoders skip it.
        if (b.u8(pos + 1) == 0xFF && b.has(block, 12) && b.u8(block) == 11 && gif.mid(block + 1, 11) == "XMP DataXMP") {
            const qint64 start = block + 12;
            const qint64 end = gif.indexOf("<?xpacket end=", start);
            const qint64 close = end < 0 ? -1 : gif.indexOf("?>", end);
            return close < 0 ? QByteArray() : gif.mid(start, close + 2 - start);
        }
        while (b.has(block, 1) && b.u8(block) != 0)
            block += 1 + b.u8(block);
        pos = block + 1;
    }
    return {};
}

QVariantMap readGifGroup(const QByteArray& gif)
{
    const Bytes b{gif};
    QVariantMap group;
    if (!b.has(0, 13) || !(gif.startsWith("GIF87a") || gif.startsWith("GIF89a")))
        return group;
    const quint8 flags = b.u8(10);
    const bool globalColorMap = flags & 0x80;
    group.insert(QStringLiteral("HasGlobalColorMap"), globalColorMap);
    group.insert(QStringLiteral("CanvasPixelWidth"), qlonglong(b.le16(6)));
    group.insert(QStringLiteral("CanvasPixelHeight"), qlonglong(b.le16(8)));
    qint64 pos = 13 + (globalColorMap ? 3 * (qint64(1) << ((flags & 7) + 1)) : 0);
    // Walk the extension blocks up to the first image: loop count and first delay.
    while (b.has(pos, 1)) {
        const quint8 introducer = b.u8(pos);
        if (introducer != 0x21 || !b.has(pos, 3))
            break;
        const quint8 label = b.u8(pos + 1);
        qint64 block = pos + 2;
        if (label == 0xF9 && b.has(block, 6) && b.u8(block) >= 4)
            group.insert(QStringLiteral("DelayTime"), b.le16(block + 3) / 100.0);
        if (label == 0xFF && b.has(block, 12) && b.u8(block) == 11
            && gif.mid(block + 1, 11) == "NETSCAPE2.0" && b.has(block + 12, 4) && b.u8(block + 13) == 1)
            group.insert(QStringLiteral("LoopCount"), qlonglong(b.le16(block + 14)));
        // Skip the sub-blocks.
        while (b.has(block, 1) && b.u8(block) != 0)
            block += 1 + b.u8(block);
        pos = block + 1;
    }
    return group;
}

QString iccProfileDescription(const QByteArray& icc)
{
    const Bytes b{icc};
    if (!b.has(0, 132) || icc.mid(36, 4) != "acsp")
        return {};
    const quint32 count = b.be32(128);
    for (quint32 i = 0; i < count && b.has(132 + 12 * qint64(i), 12); ++i) {
        const qint64 entry = 132 + 12 * qint64(i);
        if (icc.mid(entry, 4) != "desc")
            continue;
        const qint64 offset = b.be32(entry + 4);
        const qint64 size = b.be32(entry + 8);
        if (!b.has(offset, size) || size < 12)
            return {};
        const QByteArray type = icc.mid(offset, 4);
        if (type == "desc") {  // version 2: ASCII count and text
            const qint64 n = b.be32(offset + 8);
            if (n <= 0 || n > size - 12)
                return {};
            return latin1Text(icc, offset + 12, n).trimmed();
        }
        if (type == "mluc" && size >= 28) {  // version 4: the first record, UTF-16BE
            const qint64 recordLength = b.be32(offset + 20);
            const qint64 recordOffset = b.be32(offset + 24);
            if (recordLength <= 0 || recordLength > size || !b.has(offset + recordOffset, recordLength))
                return {};
            QString text;
            for (qint64 k = 0; k + 1 < recordLength; k += 2)
                text.append(QChar(b.be16(offset + recordOffset + k)));
            return text.trimmed();
        }
        return {};
    }
    return {};
}

}  // namespace pelorin

#include "photo/PictureHeaderFacts.h"

#include "photo/JpegSegments.h"

#include <QSet>
#include <QtEndian>

#include <cstdlib>

namespace pelorin {
namespace {

// Bounds-checked reads: a value past the end of the bytes reads as absent.
struct Bytes {
    const QByteArray& data;
    bool bigEndian = true;

    bool has(qint64 at, qint64 length) const { return at >= 0 && length >= 0 && at <= data.size() - length; }
    const uchar* at(qint64 offset) const { return reinterpret_cast<const uchar*>(data.constData()) + offset; }
    quint8 u8(qint64 offset) const { return has(offset, 1) ? *at(offset) : 0; }
    quint16 u16(qint64 offset) const
    {
        if (!has(offset, 2))
            return 0;
        return bigEndian ? qFromBigEndian<quint16>(at(offset)) : qFromLittleEndian<quint16>(at(offset));
    }
    quint32 u32(qint64 offset) const
    {
        if (!has(offset, 4))
            return 0;
        return bigEndian ? qFromBigEndian<quint32>(at(offset)) : qFromLittleEndian<quint32>(at(offset));
    }
    quint64 u64(qint64 offset) const
    {
        if (!has(offset, 8))
            return 0;
        return bigEndian ? qFromBigEndian<quint64>(at(offset)) : qFromLittleEndian<quint64>(at(offset));
    }
};

void setLayout(PictureHeaderFacts* facts, const char* model, int depth, bool alpha)
{
    facts->colorModel = QString::fromLatin1(model);
    facts->depth = depth;
    facts->hasAlpha = alpha;
}

bool isStartOfFrame(quint8 marker)
{
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

// The first start-of-frame segment: precision, size and the number of components (one is gray,
// four CMYK or YCCK).
PictureHeaderFacts jpegFacts(const QByteArray& data)
{
    PictureHeaderFacts facts;
    const Bytes bytes{data};
    forEachJpegSegment(data, [&](const JpegSegment& segment) {
        if (!isStartOfFrame(segment.marker))
            return true;
        if (segment.length < 6 || !bytes.has(segment.payload, 6))
            return false;
        const int precision = bytes.u8(segment.payload);
        const int height = bytes.u16(segment.payload + 1);
        const int width = bytes.u16(segment.payload + 3);
        const int components = bytes.u8(segment.payload + 5);
        if (width > 0 && height > 0)
            facts.size = QSize(width, height);
        if (precision > 0 && precision <= 16) {
            if (components == 1)
                setLayout(&facts, "Gray", precision, false);
            else if (components == 3)
                setLayout(&facts, "RGB", precision, false);
            else if (components == 4)
                setLayout(&facts, "CMYK", precision, false);
        }
        facts.imageCount = 1;
        return false;
    });
    return facts;
}

// IHDR, and a tRNS chunk before the image data (a transparent palette entry or colour).
PictureHeaderFacts pngFacts(const QByteArray& data)
{
    PictureHeaderFacts facts;
    const Bytes bytes{data};
    if (!data.startsWith("\x89PNG\r\n\x1a\n") || bytes.u32(8) != 13 || data.mid(12, 4) != "IHDR" || !bytes.has(16, 13))
        return facts;
    const quint32 width = bytes.u32(16);
    const quint32 height = bytes.u32(20);
    if (width > 0 && height > 0 && width <= 0x7fffffff && height <= 0x7fffffff)
        facts.size = QSize(int(width), int(height));
    facts.imageCount = 1;
    const int bitDepth = bytes.u8(24);
    const int colorType = bytes.u8(25);
    bool transparency = false;
    for (qint64 at = 8; bytes.has(at, 12);) {
        const qint64 length = bytes.u32(at);
        const QByteArray type = data.mid(at + 4, 4);
        if (type == "tRNS")
            transparency = true;
        if (type == "IDAT" || type == "IEND" || type == "tRNS")
            break;
        at += 12 + length;
    }
    switch (colorType) {
    case 0: setLayout(&facts, "Gray", bitDepth, transparency); break;
    case 2: setLayout(&facts, "RGB", bitDepth, transparency); break;
    case 3: setLayout(&facts, "RGB", 8, transparency); break;
    case 4: setLayout(&facts, "Gray", bitDepth, true); break;
    case 6: setLayout(&facts, "RGB", bitDepth, true); break;
    default: break;
    }
    if (bitDepth < 1 || bitDepth > 16)
        facts.colorModel.clear();
    return facts;
}

// The logical screen, and the frames: every image descriptor up to the trailer or the end of the
// bytes. The pixel layout is left to the GIF's palette, which the header does not describe.
PictureHeaderFacts gifFacts(const QByteArray& data)
{
    PictureHeaderFacts facts;
    const Bytes bytes{data, false};
    if (!(data.startsWith("GIF87a") || data.startsWith("GIF89a")) || !bytes.has(6, 7))
        return facts;
    if (bytes.u16(6) > 0 && bytes.u16(8) > 0)
        facts.size = QSize(bytes.u16(6), bytes.u16(8));
    const auto colorTableSize = [](quint8 packed) { return packed & 0x80 ? 3 * (2 << (packed & 7)) : 0; };
    qint64 at = 13 + colorTableSize(bytes.u8(10));
    // Sub-blocks: a length byte, that many bytes, ... up to a zero length.
    const auto skipSubBlocks = [&](qint64 from) {
        while (bytes.has(from, 1) && bytes.u8(from) != 0)
            from += 1 + bytes.u8(from);
        return from + 1;
    };
    int frames = 0;
    while (bytes.has(at, 1)) {
        const quint8 introducer = bytes.u8(at);
        if (introducer == 0x2C) {  // image descriptor, local colour table, LZW code size, data
            if (!bytes.has(at, 11))
                break;
            ++frames;
            at = skipSubBlocks(at + 10 + colorTableSize(bytes.u8(at + 9)) + 1);
        } else if (introducer == 0x21) {  // extension: label, sub-blocks
            at = skipSubBlocks(at + 2);
        } else {
            break;  // the trailer, or bytes that are no block
        }
    }
    facts.imageCount = frames;
    return facts;
}

// The frames of an animated WebP (its ANMF chunks); a still one is one picture.
PictureHeaderFacts webpFacts(const QByteArray& data)
{
    PictureHeaderFacts facts;
    const Bytes bytes{data, false};
    if (!data.startsWith("RIFF") || data.mid(8, 4) != "WEBP")
        return facts;
    int frames = 0;
    bool animated = false;
    for (qint64 at = 12; bytes.has(at, 8);) {
        const QByteArray type = data.mid(at, 4);
        const qint64 length = bytes.u32(at + 4);
        if (type == "VP8X" && bytes.has(at + 8, 10)) {
            animated = bytes.u8(at + 8) & 0x02;
            const int width = 1 + int(bytes.u32(at + 12) & 0xffffff);
            const int height = 1 + int((bytes.u32(at + 14) >> 8) & 0xffffff);
            facts.size = QSize(width, height);
        } else if (type == "ANMF") {
            ++frames;
        }
        at += 8 + length + (length & 1);
    }
    facts.imageCount = animated ? frames : 1;
    return facts;
}

// The bitmap header: size, bits per pixel and, for 32-bit pixels, whether an alpha mask is set.
PictureHeaderFacts bmpFacts(const QByteArray& data)
{
    PictureHeaderFacts facts;
    const Bytes bytes{data, false};
    if (!data.startsWith("BM") || !bytes.has(14, 16))
        return facts;
    const quint32 headerSize = bytes.u32(14);
    int width = 0, height = 0, bitCount = 0;
    quint32 compression = 0;
    if (headerSize == 12) {  // OS/2 core header
        width = bytes.u16(18);
        height = bytes.u16(20);
        bitCount = bytes.u16(24);
    } else if (headerSize >= 40 && bytes.has(14, 40)) {
        width = qint32(bytes.u32(18));
        height = std::abs(qint32(bytes.u32(22)));  // negative: rows stored top-down
        bitCount = bytes.u16(28);
        compression = bytes.u32(30);
    } else {
        return facts;
    }
    if (width > 0 && height > 0)
        facts.size = QSize(width, height);
    facts.imageCount = 1;
    // Masks follow a 40-byte header with BI_ALPHABITFIELDS, and are part of the longer headers.
    const bool alphaMaskGiven = headerSize >= 56 || (headerSize == 40 && compression == 6);
    const bool alpha = (bitCount == 32 || bitCount == 16) && alphaMaskGiven && (compression == 3 || compression == 6)
                       && bytes.u32(66) != 0;
    if (bitCount == 1 || bitCount == 4 || bitCount == 8 || bitCount == 16 || bitCount == 24 || bitCount == 32)
        setLayout(&facts, "RGB", 8, alpha);
    return facts;
}

// The first directory of a BigTIFF (8-byte offsets, which exiv2 does not read), and the number
// of directories in its chain.
PictureHeaderFacts bigTiffFacts(const QByteArray& data)
{
    PictureHeaderFacts facts;
    Bytes bytes{data, data.startsWith("MM")};
    if (!(data.startsWith("II") || data.startsWith("MM")) || bytes.u16(2) != 43 || bytes.u16(4) != 8)
        return facts;
    // A value of one of the integer types, stored in the entry when it fits in 8 bytes.
    const auto value = [&](qint64 entry, int index) -> quint64 {
        const int type = bytes.u16(entry + 2);
        const int size = type == 3 ? 2 : (type == 4 ? 4 : (type == 16 ? 8 : (type == 1 ? 1 : 0)));
        if (size == 0 || quint64(index) >= bytes.u64(entry + 4))
            return 0;
        const quint64 total = bytes.u64(entry + 4) * quint64(size);
        const qint64 at = total <= 8 ? entry + 12 : qint64(qMin<quint64>(bytes.u64(entry + 12), quint64(data.size())));
        const qint64 item = at + qint64(index) * size;
        return size == 1 ? bytes.u8(item) : size == 2 ? bytes.u16(item) : size == 4 ? bytes.u32(item) : bytes.u64(item);
    };
    quint64 width = 0, height = 0, bits = 0, samples = 0;
    int photometric = -1;
    bool extraSamples = false;
    // Every directory once, however the offsets loop, and not more than a reader would page through.
    constexpr qsizetype kMaxDirectories = 65536;
    QSet<quint64> seen;
    for (quint64 ifd = bytes.u64(8); ifd != 0 && seen.size() < kMaxDirectories && bytes.has(qint64(qMin<quint64>(ifd, quint64(data.size()))), 8)
                                      && !seen.contains(ifd);) {
        seen.insert(ifd);
        const quint64 count = bytes.u64(qint64(ifd));
        if (count == 0 || !bytes.has(qint64(ifd) + 8, qint64(qMin<quint64>(count, quint64(data.size()))) * 20 + 8))
            break;
        if (seen.size() == 1) {
            for (quint64 i = 0; i < count; ++i) {
                const qint64 entry = qint64(ifd) + 8 + qint64(i) * 20;
                switch (bytes.u16(entry)) {
                case 256: width = value(entry, 0); break;
                case 257: height = value(entry, 0); break;
                case 258: bits = value(entry, 0); break;
                case 262: photometric = int(value(entry, 0)); break;
                case 277: samples = value(entry, 0); break;
                case 338: extraSamples = true; break;
                default: break;
                }
            }
        }
        ifd = bytes.u64(qint64(ifd) + 8 + qint64(count) * 20);
    }
    facts.imageCount = int(seen.size());
    if (width > 0 && height > 0 && width <= 0x7fffffff && height <= 0x7fffffff)
        facts.size = QSize(int(width), int(height));
    if (samples == 0)
        samples = photometric == 2 ? 3 : 1;
    if (bits == 0 || bits > 64 || photometric < 0)
        return facts;
    const bool gray = photometric == 0 || photometric == 1;
    setLayout(&facts, gray ? "Gray" : photometric == 5 ? "CMYK" : "RGB", int(bits),
              extraSamples && samples > (gray ? 1u : 3u));
    return facts;
}

}  // namespace

std::optional<PictureHeaderFacts> readPictureHeaderFacts(PhotoContainer container, const QByteArray& bytes)
{
    switch (container) {
    case PhotoContainer::Jpeg: return jpegFacts(bytes);
    case PhotoContainer::Png: return pngFacts(bytes);
    case PhotoContainer::Gif: return gifFacts(bytes);
    case PhotoContainer::WebP: return webpFacts(bytes);
    case PhotoContainer::Bmp: return bmpFacts(bytes);
    case PhotoContainer::BigTiff: return bigTiffFacts(bytes);
    default: return std::nullopt;
    }
}

}  // namespace pelorin

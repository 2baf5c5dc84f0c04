#include "photo/PhotoFormats.h"

namespace pelorin {
namespace {

PhotoFormat make(PhotoContainer c, const char* kind, const char* type, bool writable, bool iptc,
                 bool comment)
{
    PhotoFormat f;
    f.container = c;
    f.kind = QString::fromLatin1(kind);
    f.typeName = QString::fromLatin1(type);
    f.readable = true;
    f.metadataWritable = writable;
    f.iptcWritable = iptc;
    f.commentWritable = comment;
    return f;
}

bool at(const QByteArray& head, int offset, const char* magic, int length)
{
    return head.size() >= offset + length && head.mid(offset, length) == QByteArray(magic, length);
}

// ISO base media files name their family in the 'ftyp' box: major brand and compatible brands.
bool hasBrand(const QByteArray& head, std::initializer_list<const char*> brands)
{
    if (!at(head, 4, "ftyp", 4) || head.size() < 16)
        return false;
    const quint32 boxSize = (quint32(uchar(head[0])) << 24) | (quint32(uchar(head[1])) << 16)
                            | (quint32(uchar(head[2])) << 8) | quint32(uchar(head[3]));
    const int end = int(qMin<quint32>(boxSize, quint32(head.size())));
    for (int pos = 8; pos + 4 <= end; pos += 4) {
        if (pos == 12)
            continue;  // minor version
        const QByteArray brand = head.mid(pos, 4);
        for (const char* b : brands) {
            if (brand == QByteArray(b, 4))
                return true;
        }
    }
    return false;
}

PhotoFormat tiffFormat(const QString& extension)
{
    const QString ext = extension.toUpper();
    // exiv2 rewrites these TIFF-based kinds in place, keeping their image data.
    for (const char* raw : {"DNG", "CR2", "NEF", "ARW", "PEF", "SR2", "SRW", "ORF"}) {
        if (ext == QLatin1String(raw))
            return make(PhotoContainer::Tiff, raw, "com.adobe.raw-image", true, true, false);
    }
    // Other TIFF-based RAW kinds are read only: their makers' layouts are not safe to rewrite.
    for (const char* raw : {"3FR", "ERF", "K25", "KDC", "DCR", "MOS", "NRW", "SRF", "IIQ", "MEF"}) {
        if (ext == QLatin1String(raw))
            return make(PhotoContainer::Tiff, raw, "com.adobe.raw-image", false, false, false);
    }
    return make(PhotoContainer::Tiff, "TIFF", "public.tiff", true, true, false);
}

}  // namespace

PhotoFormat detectPhotoFormat(const QByteArray& head, const QString& extension)
{
    if (at(head, 0, "\xFF\xD8\xFF", 3))
        return make(PhotoContainer::Jpeg, "JPEG", "public.jpeg", true, true, true);
    if (at(head, 0, "\x89PNG\r\n\x1A\n", 8))
        return make(PhotoContainer::Png, "PNG", "public.png", true, true, true);
    if (at(head, 0, "GIF87a", 6) || at(head, 0, "GIF89a", 6))
        return make(PhotoContainer::Gif, "GIF", "com.compuserve.gif", false, false, false);
    if (at(head, 0, "IIRO", 4) || at(head, 0, "IIRS", 4) || at(head, 0, "MMOR", 4))
        return make(PhotoContainer::Tiff, "ORF", "com.adobe.raw-image", true, true, false);
    if (at(head, 0, "IIU\0", 4))
        return make(PhotoContainer::Rw2, "RW2", "com.adobe.raw-image", false, false, false);
    if (at(head, 0, "II*\0", 4) || at(head, 0, "MM\0*", 4))
        return tiffFormat(extension);
    if (at(head, 0, "II+\0", 4) || at(head, 0, "MM\0+", 4)) {
        PhotoFormat f = make(PhotoContainer::BigTiff, "BigTIFF", "public.tiff", false, false, false);
        f.exiv2Readable = false;
        return f;
    }
    if (at(head, 0, "RIFF", 4) && at(head, 8, "WEBP", 4))
        return make(PhotoContainer::WebP, "WebP", "org.webmproject.webp", true, false, false);
    if (hasBrand(head, {"crx "}))
        return make(PhotoContainer::Cr3, "CR3", "com.adobe.raw-image", true, false, false);
    if (hasBrand(head, {"avif", "avis"}))
        return make(PhotoContainer::Heif, "AVIF", "public.avif", true, false, false);
    if (hasBrand(head, {"heic", "heix", "hevc", "heim", "heis", "hevm", "hevs", "mif1", "msf1"}))
        return make(PhotoContainer::Heif, "HEIC", "public.heic", true, false, false);
    if (at(head, 0, "8BPS", 4))
        return make(PhotoContainer::Psd, "PSD", "com.adobe.photoshop-image", true, true, false);
    if (at(head, 0, "\0\0\0\x0CjP  \r\n\x87\n", 12))
        return make(PhotoContainer::Jp2, "JPEG 2000", "public.jpeg-2000", true, true, false);
    if (at(head, 0, "BM", 2) && head.size() >= 26)
        return make(PhotoContainer::Bmp, "BMP", "com.microsoft.bmp", false, false, false);
    if (at(head, 0, "II\x1A\0\0\0HEAPCCDR", 14))
        return make(PhotoContainer::Crw, "CRW", "com.adobe.raw-image", false, false, false);
    if (at(head, 0, "\0MRM", 4))
        return make(PhotoContainer::Mrw, "MRW", "com.adobe.raw-image", false, false, false);
    if (at(head, 0, "FUJIFILMCCD-RAW", 15))
        return make(PhotoContainer::Raf, "RAF", "com.adobe.raw-image", false, false, false);
    if (at(head, 0, "FOVb", 4)) {
        PhotoFormat f = make(PhotoContainer::X3f, "X3F", "com.adobe.raw-image", false, false, false);
        f.exiv2Readable = false;
        return f;
    }
    return {};
}

}  // namespace pelorin

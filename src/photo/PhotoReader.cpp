// Reads a photo's properties: metadata through exiv2 (libheif for HEIF, whose Exif exiv2 0.27
// does not find), image facts from the picture's header or its TIFF tags, container facts
// through our own small readers. Nothing here decodes pixels.
#include "photo/ContainerProperties.h"
#include "photo/Cr3Exif.h"
#include "photo/Exiv2Model.h"
#include "photo/HeifFile.h"
#include "photo/JpegExifContinuation.h"
#include "photo/PhotoMetadataSide.h"
#include "photo/PhotoCompleteness.h"
#include "photo/PhotoLibraries.h"
#include "photo/PhotoProperties.h"
#include "photo/PictureHeaderFacts.h"

#include <QFile>
#include <QFileInfo>

namespace pelorin {
namespace {

// Depth, colour model and alpha of a TIFF from its own tags.
void addTiffFacts(PhotoProperties* info)
{
    QVariantMap& p = info->properties;
    const QVariantMap tiff = p.value(QStringLiteral("{TIFF}")).toMap();
    const QVariantList bits = tiff.value(QStringLiteral("BitsPerSample")).toList();
    const int samples = tiff.value(QStringLiteral("SamplesPerPixel"), bits.isEmpty() ? 1 : int(bits.size())).toInt();
    const int photometric = tiff.value(QStringLiteral("PhotometricInterpretation"), -1).toInt();
    if (!bits.isEmpty())
        p.insert(QStringLiteral("Depth"), qlonglong(bits.first().toInt()));
    if (photometric == 0 || photometric == 1)
        p.insert(QStringLiteral("ColorModel"), QStringLiteral("Gray"));
    else if (photometric == 5)
        p.insert(QStringLiteral("ColorModel"), QStringLiteral("CMYK"));
    else if (photometric >= 0)
        p.insert(QStringLiteral("ColorModel"), QStringLiteral("RGB"));
    if (photometric >= 0)
        p.insert(QStringLiteral("HasAlpha"), tiff.contains(QStringLiteral("ExtraSamples")) && samples > (photometric <= 1 ? 1 : 3));
    if (!p.contains(QStringLiteral("PixelWidth")) && tiff.contains(QStringLiteral("ImageWidth"))) {
        p.insert(QStringLiteral("PixelWidth"), tiff.value(QStringLiteral("ImageWidth")));
        p.insert(QStringLiteral("PixelHeight"), tiff.value(QStringLiteral("ImageLength")));
    }
    if (info->imageCount == 0)
        info->imageCount = 1;
}

void addImageFacts(const QByteArray& bytes, PhotoProperties* info)
{
    const std::optional<PictureHeaderFacts> facts = readPictureHeaderFacts(info->format.container, bytes);
    if (!facts) {
        addTiffFacts(info);
        return;
    }
    QVariantMap& p = info->properties;
    if (!p.contains(QStringLiteral("PixelWidth")) && facts->size.isValid()) {
        p.insert(QStringLiteral("PixelWidth"), qlonglong(facts->size.width()));
        p.insert(QStringLiteral("PixelHeight"), qlonglong(facts->size.height()));
    }
    if (facts->layoutKnown()) {
        p.insert(QStringLiteral("HasAlpha"), facts->hasAlpha);
        p.insert(QStringLiteral("ColorModel"), facts->colorModel);
        p.insert(QStringLiteral("Depth"), qlonglong(facts->depth));
    }
    if (info->imageCount == 0)
        info->imageCount = qMax(1, facts->imageCount);
}

// DPI from the TIFF resolution (inch or centimetre) or, failing that, the JFIF density.
void addResolution(PhotoProperties* info)
{
    QVariantMap& p = info->properties;
    const QVariantMap tiff = p.value(QStringLiteral("{TIFF}")).toMap();
    const QVariantMap jfif = p.value(QStringLiteral("{JFIF}")).toMap();
    double x = 0, y = 0;
    if (tiff.contains(QStringLiteral("XResolution")) && tiff.contains(QStringLiteral("YResolution"))) {
        const double scale = tiff.value(QStringLiteral("ResolutionUnit"), 2).toInt() == 3 ? 2.54 : 1.0;
        x = tiff.value(QStringLiteral("XResolution")).toDouble() * scale;
        y = tiff.value(QStringLiteral("YResolution")).toDouble() * scale;
    } else if (jfif.value(QStringLiteral("DensityUnit")).toInt() == 1 || jfif.value(QStringLiteral("DensityUnit")).toInt() == 2) {
        const double scale = jfif.value(QStringLiteral("DensityUnit")).toInt() == 2 ? 2.54 : 1.0;
        x = jfif.value(QStringLiteral("XDensity")).toDouble() * scale;
        y = jfif.value(QStringLiteral("YDensity")).toDouble() * scale;
    }
    if (x > 0 && y > 0) {
        p.insert(QStringLiteral("DPIWidth"), x);
        p.insert(QStringLiteral("DPIHeight"), y);
    }
}

void addContainerGroups(const QByteArray& bytes, PhotoProperties* info)
{
    QVariantMap& p = info->properties;
    QVariantMap group;
    switch (info->format.container) {
    case PhotoContainer::Jpeg: group = readJfifGroup(bytes); break;
    case PhotoContainer::Png: group = readPngGroup(bytes); break;
    case PhotoContainer::Gif: group = readGifGroup(bytes); break;
    default: return;
    }
    if (group.isEmpty())
        return;
    const char* name = info->format.container == PhotoContainer::Jpeg ? "{JFIF}"
                       : info->format.container == PhotoContainer::Png ? "{PNG}" : "{GIF}";
    p.insert(QString::fromLatin1(name), group);
}

void readWithExiv2(const QByteArray& bytes, PhotoProperties* info)
{
    // A JPEG's EXIF split over several segments is read whole, as the rewrite writes it.
    const QByteArray whole = info->format.container == PhotoContainer::Jpeg
                                 ? jpegWithExifContinuationsJoined(bytes).value_or(bytes) : bytes;
    auto image = Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(whole.constData()),
                                           long(whole.size()));
    image->readMetadata();
    exiv2_model::readExif(image->exifData(), &info->properties);
    exiv2_model::readIptc(image->iptcData(), &info->properties);
    exiv2_model::readXmp(image->xmpData(), &info->properties);
    if (image->pixelWidth() > 0 && image->pixelHeight() > 0
        && info->format.container != PhotoContainer::Tiff) {
        info->properties.insert(QStringLiteral("PixelWidth"), qlonglong(image->pixelWidth()));
        info->properties.insert(QStringLiteral("PixelHeight"), qlonglong(image->pixelHeight()));
    }
    if (image->iccProfileDefined()) {
        const Exiv2::DataBuf* icc = image->iccProfile();
        const QString name = iccProfileDescription(QByteArray(reinterpret_cast<const char*>(icc->pData_), icc->size_));
        if (!name.isEmpty())
            info->properties.insert(QStringLiteral("ProfileName"), name);
    }
}

void readHeif(const QString& path, PhotoProperties* info)
{
    QString error;
    const auto heif = readHeifMetadata(path, &error);
    if (!heif) {
        if (!photoFileComplete(path))
            info->error = damagedPhotoReason();
        else
            info->error = error.isEmpty() ? QStringLiteral("not a readable HEIF file") : error;
        return;
    }
    QVariantMap& p = info->properties;
    p.insert(QStringLiteral("PixelWidth"), qlonglong(heif->width));
    p.insert(QStringLiteral("PixelHeight"), qlonglong(heif->height));
    p.insert(QStringLiteral("HasAlpha"), heif->hasAlpha);
    p.insert(QStringLiteral("ColorModel"), QStringLiteral("RGB"));
    if (heif->lumaBitDepth > 0)
        p.insert(QStringLiteral("Depth"), qlonglong(heif->lumaBitDepth));
    info->imageCount = qMax(1, heif->imageCount);
    if (!heif->exif.isEmpty()) {
        Exiv2::ExifData exif;
        Exiv2::ExifParser::decode(exif, reinterpret_cast<const Exiv2::byte*>(heif->exif.constData()),
                                  uint32_t(heif->exif.size()));
        exiv2_model::readExif(exif, &p);
    }
    if (!heif->xmp.isEmpty()) {
        Exiv2::XmpData xmp;
        if (Exiv2::XmpParser::decode(xmp, heif->xmp.toStdString()) == 0) {
            exiv2_model::readXmp(xmp, &p);
            // With no IPTC record of their own these files keep title, keywords and the like
            // in XMP; the IPTC group shows them there.
            Exiv2::IptcData iptc;
            Exiv2::copyXmpToIptc(xmp, iptc);
            exiv2_model::readIptc(iptc, &p);
        }
    }
    if (!heif->iccProfile.isEmpty()) {
        const QString name = iccProfileDescription(heif->iccProfile);
        if (!name.isEmpty())
            p.insert(QStringLiteral("ProfileName"), name);
    }
}

}  // namespace

PhotoProperties readPhotoProperties(const QByteArray& bytes, const QString& extension)
{
    initializePhotoLibraries();
    PhotoProperties info;
    info.format = detectPhotoFormat(bytes.left(64), extension);
    if (!info.format.isKnown()) {
        info.error = bytes.isEmpty() ? QStringLiteral("the file is empty")
                                     : QStringLiteral("not a photo of a known kind");
        return info;
    }
    try {
        // exiv2 0.27 takes a CR3 for a QuickTime movie; its CMT boxes are decoded one by one.
        if (info.format.container == PhotoContainer::Cr3) {
            QString error;
            if (!readCr3Properties(bytes, &info.properties, &error)) {
                info.error = photoDataComplete(bytes, info.format)
                                 ? QStringLiteral("cannot read the CR3 metadata: %1").arg(error)
                                 : damagedPhotoReason();
                return info;
            }
        } else if (info.format.container == PhotoContainer::Heif) {
            // exiv2 0.27 takes these for QuickTime movies and trusts their box sizes (a
            // 114-byte file asked it for 2 GB); they are read through libheif, from the file.
            info.error = QStringLiteral("the %1 metadata is read from the file only").arg(info.format.kind);
            return info;
        } else if (info.format.exiv2Readable) {
            readWithExiv2(bytes, &info);
        }
    } catch (const std::exception& e) {
        // A cut-off file is named as such rather than by the parser's complaint about it.
        info.error = photoDataComplete(bytes, info.format)
                         ? QStringLiteral("cannot read the %1 metadata: %2").arg(info.format.kind, QString::fromLocal8Bit(e.what()))
                         : damagedPhotoReason();
        return info;
    }
    addContainerGroups(bytes, &info);
    addImageFacts(bytes, &info);
    addResolution(&info);
    return info;
}

PhotoProperties readPhotoProperties(const QString& path)
{
    initializePhotoLibraries();
    PhotoProperties info;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        info.error = QStringLiteral("cannot open the file: %1").arg(file.errorString());
        return info;
    }
    if (file.size() > kMaxPhotoFileSize) {
        info.error = QStringLiteral("the file is too large to be read as a photo");
        return info;
    }
    const QString extension = QFileInfo(path).suffix();
    const QByteArray head = file.peek(64);
    if (looksLikeHeif(head) && detectPhotoFormat(head, extension).container == PhotoContainer::Heif) {
        info.format = detectPhotoFormat(head, extension);
        try {
            readHeif(path, &info);
        } catch (const Exiv2::AnyError& e) {
            info.error = QStringLiteral("cannot read the HEIF metadata: %1").arg(QString::fromLocal8Bit(e.what()));
        }
        return info;
    }
    // A JPEG's metadata all lie before its image data, a PNG's, a WebP's and a TIFF's around
    // it; the image data is not read (but a WebP's bitstream headers, which tell its canvas).
    if (const auto side = readPhotoMetadataSide(detectPhotoFormat(head, extension).container, file,
                                                TiffSide::SkeletonWithCounts))
        return readPhotoProperties(side->bytes, extension);
    file.seek(0);
    return readPhotoProperties(file.readAll(), extension);
}

}  // namespace pelorin

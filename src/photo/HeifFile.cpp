#include "photo/HeifFile.h"

#include "photo/HeifFileReader.h"
#include "photo/HeifLibrary.h"
#include "photo/PhotoLibraries.h"
#include "photo/PhotoThumbnails.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace pelorin {
namespace {

// libheif refuses to parse images wider or taller than this; we refuse to decode more pixels
// than kMaxDecodePixels, so a forged size cannot make us allocate gigabytes.
constexpr int kMaxSide = 32768;
constexpr qint64 kMaxDecodePixels = qint64(20000) * 20000;

// Everything below runs on a file openHeif opened, after it has loaded the library.
const HeifLibrary& heif() { return *heifLibrary(); }

struct ContextFree {
    void operator()(heif_context* context) const { heif().context_free(context); }
};
struct HandleRelease {
    void operator()(heif_image_handle* handle) const { heif().image_handle_release(handle); }
};
struct ImageRelease {
    void operator()(heif_image* image) const { heif().image_release(image); }
};
struct OptionsFree {
    void operator()(heif_decoding_options* options) const { heif().decoding_options_free(options); }
};
using ContextPtr = std::unique_ptr<heif_context, ContextFree>;
using HandlePtr = std::unique_ptr<heif_image_handle, HandleRelease>;
using ImagePtr = std::unique_ptr<heif_image, ImageRelease>;

bool fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

QString heifReason(const heif_error& err)
{
    return err.message && *err.message ? QString::fromUtf8(err.message)
                                       : QStringLiteral("libheif error %1").arg(int(err.code));
}

// An open file with its primary image; both null when the file could not be read.
struct OpenedHeif {
    std::unique_ptr<HeifFileReader> reader;  // declared first: the context reads through it until freed
    ContextPtr context;
    HandlePtr primary;
    qint64 fileSize = 0;
};

OpenedHeif openHeif(const QString& path, QString* error)
{
    initializePhotoLibraries();
    OpenedHeif opened;
    if (!heifLibrary(error))
        return opened;
    auto reader = std::make_unique<HeifFileReader>(path);
    if (!reader->open(error))
        return opened;
    if (!looksLikeHeif(reader->head(64))) {
        fail(error, QStringLiteral("not a HEIF or AVIF file"));
        return opened;
    }
    opened.fileSize = reader->size();

    ContextPtr context(heif().context_alloc());
    if (!context) {
        fail(error, QStringLiteral("out of memory"));
        return opened;
    }
    heif().context_set_maximum_image_size_limit(context.get(), kMaxSide);
    heif_error err = heif().context_read_from_reader(context.get(), HeifFileReader::api(), reader.get(), nullptr);
    if (err.code != heif_error_Ok) {
        fail(error, QStringLiteral("cannot read the HEIF file: %1").arg(heifReason(err)));
        return opened;
    }
    heif_image_handle* primary = nullptr;
    err = heif().context_get_primary_image_handle(context.get(), &primary);
    if (err.code != heif_error_Ok || !primary) {
        fail(error, QStringLiteral("the HEIF file has no readable primary image: %1")
                        .arg(heifReason(err)));
        return opened;
    }
    HandlePtr handle(primary);
    if (heif().image_handle_get_width(primary) <= 0 || heif().image_handle_get_height(primary) <= 0) {
        fail(error, QStringLiteral("the HEIF image has no size"));
        return opened;
    }
    opened.reader = std::move(reader);
    opened.context = std::move(context);
    opened.primary = std::move(handle);
    return opened;
}

// One metadata block, or nothing when its claimed size cannot be right for this file.
QByteArray metadataBlock(const heif_image_handle* handle, heif_item_id id, qint64 fileSize)
{
    const size_t size = heif().image_handle_get_metadata_size(handle, id);
    if (size == 0 || size > size_t(fileSize))
        return {};
    QByteArray bytes(qsizetype(size), Qt::Uninitialized);
    if (heif().image_handle_get_metadata(handle, id, bytes.data()).code != heif_error_Ok)
        return {};
    return bytes;
}

std::vector<heif_item_id> metadataIds(const heif_image_handle* handle, const char* type)
{
    const int count = heif().image_handle_get_number_of_metadata_blocks(handle, type);
    std::vector<heif_item_id> ids(size_t(std::max(count, 0)));
    if (!ids.empty()) {
        const int listed = heif().image_handle_get_list_of_metadata_block_IDs(handle, type,
                                                                            ids.data(), count);
        ids.resize(size_t(std::clamp(listed, 0, count)));
    }
    return ids;
}

bool isTiffHeader(const QByteArray& bytes)
{
    return bytes.startsWith(QByteArrayLiteral("II\x2a\x00"))
        || bytes.startsWith(QByteArrayLiteral("MM\x00\x2a"));
}

// The Exif item starts with the distance from its fifth byte to the TIFF header; some writers
// point at an "Exif\0\0" marker instead of the header itself.
QByteArray tiffStreamOfExifItem(const QByteArray& item)
{
    if (item.size() < 4)
        return {};
    const quint32 offset = qFromBigEndian<quint32>(item.constData());
    if (offset > quint32(item.size() - 4))
        return {};
    QByteArray tiff = item.mid(4 + qsizetype(offset));
    if (tiff.startsWith(QByteArrayLiteral("Exif\x00\x00")))
        tiff.remove(0, 6);
    return isTiffHeader(tiff) ? tiff : QByteArray();
}

QByteArray readExif(const heif_image_handle* handle, qint64 fileSize)
{
    for (heif_item_id id : metadataIds(handle, "Exif")) {
        QByteArray tiff = tiffStreamOfExifItem(metadataBlock(handle, id, fileSize));
        if (!tiff.isEmpty())
            return tiff;
    }
    return {};
}

QByteArray readXmp(const heif_image_handle* handle, qint64 fileSize)
{
    for (heif_item_id id : metadataIds(handle, nullptr)) {
        // The returned strings live only until the next libheif call.
        const QByteArray type = heif().image_handle_get_metadata_type(handle, id);
        const QByteArray contentType = heif().image_handle_get_metadata_content_type(handle, id);
        if (type == "mime" && contentType == "application/rdf+xml")
            return metadataBlock(handle, id, fileSize);
    }
    return {};
}

QByteArray readIccProfile(const heif_image_handle* handle, qint64 fileSize)
{
    const heif_color_profile_type type = heif().image_handle_get_color_profile_type(handle);
    if (type != heif_color_profile_type_prof && type != heif_color_profile_type_rICC)
        return {};
    const size_t size = heif().image_handle_get_raw_color_profile_size(handle);
    if (size == 0 || size > size_t(fileSize))
        return {};
    QByteArray bytes(qsizetype(size), Qt::Uninitialized);
    if (heif().image_handle_get_raw_color_profile(handle, bytes.data()).code != heif_error_Ok)
        return {};
    return bytes;
}

// A thumbnail of the primary image at least maxSide on its longer side and shaped like it
// (a thumbnail stored without the primary's rotation would come out sideways).
HandlePtr suitableThumbnail(const heif_image_handle* primary, int maxSide)
{
    const int count = heif().image_handle_get_number_of_thumbnails(primary);
    if (maxSide <= 0 || count <= 0)
        return {};
    std::vector<heif_item_id> ids(static_cast<size_t>(count));
    const int listed = heif().image_handle_get_list_of_thumbnail_IDs(primary, ids.data(), count);
    ids.resize(size_t(std::clamp(listed, 0, count)));
    const double primaryAspect = double(heif().image_handle_get_width(primary))
                               / std::max(1, heif().image_handle_get_height(primary));
    HandlePtr best;
    int bestSide = 0;
    for (heif_item_id id : ids) {
        heif_image_handle* raw = nullptr;
        if (heif().image_handle_get_thumbnail(primary, id, &raw).code != heif_error_Ok || !raw)
            continue;
        HandlePtr thumbnail(raw);
        const int w = heif().image_handle_get_width(raw);
        const int h = heif().image_handle_get_height(raw);
        const int side = std::max(w, h);
        if (w <= 0 || h <= 0 || side < maxSide || (best && side >= bestSide))
            continue;
        const double aspect = double(w) / h;
        if (std::abs(aspect - primaryAspect) > 0.05 * primaryAspect)
            continue;
        best = std::move(thumbnail);
        bestSide = side;
    }
    return best;
}

void releaseHeifImage(void* image)
{
    heif().image_release(static_cast<heif_image*>(image));
}

// Decodes one image to 8-bit interleaved RGB(A) and hands the pixels to a QImage without a copy.
QImage decodeHandle(const heif_image_handle* handle, QString* error)
{
    const int width = heif().image_handle_get_width(handle);
    const int height = heif().image_handle_get_height(handle);
    if (width <= 0 || height <= 0) {
        fail(error, QStringLiteral("the HEIF image has no size"));
        return {};
    }
    if (qint64(width) * height > kMaxDecodePixels) {
        fail(error, QStringLiteral("the HEIF image is too large to decode (%1 x %2 pixels)")
                        .arg(width)
                        .arg(height));
        return {};
    }
    const bool alpha = heif().image_handle_has_alpha_channel(handle);
    std::unique_ptr<heif_decoding_options, OptionsFree> options(heif().decoding_options_alloc());
    if (options && options->version >= 2)
        options->convert_hdr_to_8bit = 1;
    heif_image* raw = nullptr;
    const heif_error err = heif().decode_image(
        handle, &raw, heif_colorspace_RGB,
        alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB, options.get());
    ImagePtr image(raw);
    if (err.code != heif_error_Ok || !image) {
        fail(error, QStringLiteral("cannot decode the HEIF image: %1").arg(heifReason(err)));
        return {};
    }
    int stride = 0;
    const uint8_t* pixels = heif().image_get_plane_readonly(image.get(), heif_channel_interleaved,
                                                          &stride);
    const int outWidth = heif().image_get_width(image.get(), heif_channel_interleaved);
    const int outHeight = heif().image_get_height(image.get(), heif_channel_interleaved);
    const int bytesPerPixel = alpha ? 4 : 3;
    if (!pixels || outWidth <= 0 || outHeight <= 0 || stride < outWidth * bytesPerPixel
        || heif().image_get_bits_per_pixel_range(image.get(), heif_channel_interleaved) != 8) {
        fail(error, QStringLiteral("libheif gave no 8-bit RGB pixels for the HEIF image"));
        return {};
    }
    const QImage::Format format =
        !alpha ? QImage::Format_RGB888
               : heif().image_handle_is_premultiplied_alpha(handle)
                   ? QImage::Format_RGBA8888_Premultiplied
                   : QImage::Format_RGBA8888;
    heif_image* owned = image.release();
    QImage result(pixels, outWidth, outHeight, stride, format, releaseHeifImage, owned);
    if (result.isNull()) {
        releaseHeifImage(owned);
        fail(error, QStringLiteral("out of memory"));
    }
    return result;
}

}  // namespace

bool looksLikeHeif(const QByteArray& head)
{
    static const char* const kBrands[] = {"heic", "heix", "hevc", "heim", "heis",
                                          "hevm", "hevs", "mif1", "msf1", "avif", "avis"};
    if (head.size() < 16 || head.mid(4, 4) != "ftyp")
        return false;
    qint64 boxSize = qFromBigEndian<quint32>(head.constData());
    qsizetype brandsAt = 8;
    if (boxSize == 1) {  // a 64-bit size follows the type
        if (head.size() < 24)
            return false;
        boxSize = qint64(qFromBigEndian<quint64>(head.constData() + 8));
        brandsAt = 16;
    } else if (boxSize == 0) {  // the box runs to the end of the file
        boxSize = head.size();
    }
    if (boxSize < brandsAt + 8)
        return false;
    // The major brand, then (after the minor version) the compatible brands.
    const qsizetype end = qsizetype(std::min<qint64>(boxSize, head.size()));
    for (qsizetype at = brandsAt; at + 4 <= end; at += (at == brandsAt ? 8 : 4)) {
        const QByteArray brand = head.mid(at, 4);
        for (const char* known : kBrands) {
            if (brand == known)
                return true;
        }
    }
    return false;
}

std::optional<HeifMetadata> readHeifMetadata(const QString& path, QString* error)
{
    const OpenedHeif opened = openHeif(path, error);
    if (!opened.primary)
        return std::nullopt;
    const heif_image_handle* primary = opened.primary.get();
    HeifMetadata metadata;
    metadata.width = heif().image_handle_get_width(primary);
    metadata.height = heif().image_handle_get_height(primary);
    metadata.imageCount = heif().context_get_number_of_top_level_images(opened.context.get());
    metadata.hasAlpha = heif().image_handle_has_alpha_channel(primary) != 0;
    metadata.lumaBitDepth = std::max(0, heif().image_handle_get_luma_bits_per_pixel(primary));
    metadata.exif = readExif(primary, opened.fileSize);
    metadata.xmp = readXmp(primary, opened.fileSize);
    metadata.iccProfile = readIccProfile(primary, opened.fileSize);
    return metadata;
}

QImage decodeHeifImage(const QString& path, int maxSide, QString* error)
{
    const OpenedHeif opened = openHeif(path, error);
    if (!opened.primary)
        return {};
    QImage image;
    if (const HandlePtr thumbnail = suitableThumbnail(opened.primary.get(), maxSide))
        image = decodeHandle(thumbnail.get(), nullptr);
    if (image.isNull())
        image = decodeHandle(opened.primary.get(), error);
    if (image.isNull())
        return {};
    const QSize fitted = fitWithin(image.size(), maxSide);
    if (fitted != image.size())
        return image.scaled(fitted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return image;
}

}  // namespace pelorin

#include "photo/HeifImage.h"

#include "photo/HeifHandles.h"
#include "photo/PhotoThumbnails.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace pelorin {
namespace {

using namespace heif_handles;

// We refuse to decode more pixels than this, so a forged size cannot make us allocate gigabytes.
constexpr qint64 kMaxDecodePixels = qint64(20000) * 20000;

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

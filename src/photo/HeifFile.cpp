#include "photo/HeifFile.h"

#include "photo/HeifHandles.h"

#include <QtEndian>

#include <algorithm>
#include <vector>

namespace pelorin {
namespace {

using namespace heif_handles;

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

}  // namespace pelorin

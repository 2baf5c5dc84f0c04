#include "photo/HeifHandles.h"

#include "photo/HeifFile.h"
#include "photo/PhotoLibraries.h"

namespace pelorin::heif_handles {
namespace {

// libheif refuses to parse images wider or taller than this.
constexpr int kMaxSide = 32768;

}  // namespace

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

}  // namespace pelorin::heif_handles

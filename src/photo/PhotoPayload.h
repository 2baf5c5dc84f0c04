#pragma once

#include "photo/PhotoFormats.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <optional>

namespace pelorin {

// The bytes of a photo that hold its picture, in file order: the scans of a JPEG (from the first
// start-of-scan to the end of the file), the IDAT/fdAT data of a PNG, the strips and tiles of
// every TIFF directory, the image chunks of a WebP, the code stream of a JPEG 2000 file, the
// layers and image data of a PSD. A metadata rewrite must leave them byte for byte as they were.
// nullopt when the structure cannot be followed; an empty list for containers not covered.
std::optional<QList<QByteArrayView>> photoPayload(const QByteArray& bytes, PhotoContainer container);

// Why the output's picture is not the source's, or empty when it is.
QString photoPayloadDifference(const QByteArray& source, const QByteArray& output, PhotoContainer container);

}  // namespace pelorin

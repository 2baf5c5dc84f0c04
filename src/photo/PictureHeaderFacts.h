#pragma once
// The facts a picture's own header states about its pixels (size, samples, alpha, frames), read
// from the bytes without decoding anything, so that inspecting a photo needs no image codec.
#include "photo/PhotoFormats.h"

#include <QByteArray>
#include <QSize>
#include <QString>

#include <optional>

namespace pelorin {

struct PictureHeaderFacts {
    QSize size;              // invalid when the header does not say
    QString colorModel;      // "RGB", "Gray" or "CMYK"; empty when the layout is not known
    int depth = 0;           // bits per sample (a palette's entries have 8)
    bool hasAlpha = false;   // an alpha channel, or a transparent palette or colour entry
    int imageCount = 0;      // frames or pages; 0 when the header does not say

    bool layoutKnown() const { return !colorModel.isEmpty(); }
};

// The header facts of a JPEG, PNG, GIF, WebP, BMP or BigTIFF file (bytes may stop after the
// header: the image data is not needed). Damaged or cut-off headers give what could be read.
// nullopt for the other kinds, whose facts come from their TIFF tags.
std::optional<PictureHeaderFacts> readPictureHeaderFacts(PhotoContainer container, const QByteArray& bytes);

}  // namespace pelorin

#pragma once

#include "isobmff/BoxRewrite.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <functional>
#include <optional>

namespace pelorin {

// The metadata of a Canon CR3 raw file: the TIFF streams of the CMT boxes in the Canon 'uuid'
// box of 'moov' and the packet of the top-level XMP 'uuid' box.
struct Cr3Metadata {
    enum Stream { Ifd0 = 0, ExifIfd = 1, MakerNotes = 2, GpsIfd = 3 };  // CMT1 .. CMT4
    // Each a whole TIFF structure (header and one directory); empty when the box is missing.
    std::array<QByteArray, 4> tiff;
    QByteArray xmp;  // the packet, trailing padding included; empty when there is no XMP box
    bool hasXmpBox = false;
};

// Reads the metadata boxes of a CR3 file; null with the reason when it has none or they are
// damaged.
std::optional<Cr3Metadata> readCr3Metadata(ByteSource& source, QString* error);
std::optional<Cr3Metadata> readCr3Metadata(const QString& path, QString* error);

// Changes the streams of CMT1, CMT2, CMT4 and the XMP packet; CMT3 (the maker notes, which raw
// developers need) stays as it was. False with the reason stops the rewrite.
using Cr3MetadataEditor = std::function<bool(Cr3Metadata& metadata, QString* error)>;

// Writes target as the CR3 source with its metadata changed by the editor. A stream that comes
// out shorter is padded with zeros to its old size, so that usually nothing else moves; when
// the movie box grows, the tracks' chunk offsets and the Canon table of top-level box offsets
// ('CTBO') follow the moved boxes. Every other byte is copied as it is. Files whose layout
// cannot be kept consistent are refused with the reason and nothing is written.
RewriteReport rewriteCr3Metadata(const QString& sourcePath, const QString& targetPath, const Cr3MetadataEditor& edit,
                                 const RewriteOutput& output = {});

}  // namespace pelorin

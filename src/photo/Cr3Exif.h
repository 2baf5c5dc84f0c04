#pragma once

// Canon CR3 metadata under exiv2's usual keys. Each CMT box of a CR3 file is a TIFF structure
// of its own whose single directory exiv2 decodes as IFD0; the box says which directory it
// really is: CMT1 IFD0 (Exif.Image), CMT2 the Exif IFD (Exif.Photo), CMT3 the Canon maker
// notes (Exif.Canon), CMT4 the GPS IFD (Exif.GPSInfo).

#include "isobmff/Cr3MetadataRewrite.h"

#include <exiv2/exiv2.hpp>

#include <QVariantMap>

namespace pelorin {

struct Cr3Exiv2Data {
    Exiv2::ExifData exif;
    Exiv2::XmpData xmp;
    Exiv2::ByteOrder byteOrder = Exiv2::littleEndian;  // of CMT1, used for streams made anew
};

// False with the reason when the XMP packet cannot be read. exiv2 may throw on a damaged stream.
bool decodeCr3Metadata(const Cr3Metadata& metadata, Cr3Exiv2Data* data, QString* error);

// Writes the IFD0, Exif and GPS groups of data into CMT1, CMT2 and CMT4 and the XMP into the
// packet. A stream or packet whose values did not change keeps its bytes; a changed packet is
// padded to its old size where it fits. The maker notes are never written. False with the
// reason when a changed stream holds more than exiv2 can write back into it.
bool encodeCr3Metadata(const Cr3Exiv2Data& data, Cr3Metadata* metadata, QString* error);

// The metadata of a CR3 file's bytes as photo properties; false with the reason.
bool readCr3Properties(const QByteArray& bytes, QVariantMap* properties, QString* error);

}  // namespace pelorin

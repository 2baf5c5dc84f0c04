#pragma once

#include <QByteArray>

namespace pelorin {

// The TIFF block of a JPEG's first Exif segment (what follows "Exif\0\0"); empty when it has none.
QByteArray jpegExifBlock(const QByteArray& jpeg);

// The JPEG with the maker note of sourceExif (a TIFF block) put into its Exif segment, byte for
// byte and at the offset it had there, in place of whatever the writer made of it (for callers
// whose changes keep the maker notes). Most maker notes point into themselves with offsets
// counted from the TIFF header, and some hold directories exiv2 does not know, so a maker note
// laid out anew reads back wrong; kept where it was, every such offset stays true. The JPEG is
// returned as it is when the source has no maker note, the JPEG no Exif directory, or the block
// cannot be laid out that way (another byte order, too large for the segment).
QByteArray jpegWithMakerNoteOf(const QByteArray& sourceExif, const QByteArray& jpeg);

// True when the JPEG's Exif block holds the maker note of sourceExif at the offset it has there,
// byte for byte, or sourceExif has none.
bool jpegKeepsMakerNoteOf(const QByteArray& sourceExif, const QByteArray& jpeg);

}  // namespace pelorin

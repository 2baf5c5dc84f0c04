#pragma once

#include <QByteArray>

namespace pelorin {

// The EXIF block written (a TIFF block) laid out again with the maker note of sourceExif, byte
// for byte and at the offset it had there, in place of whatever the writer made of it (for
// callers whose changes keep the maker notes). Most maker notes point into themselves with
// offsets counted from the TIFF header, and some hold directories exiv2 does not know, so a
// maker note laid out anew reads back wrong; kept where it was, every such offset stays true.
// written as it is when the source has no maker note, written has no Exif directory or the
// block cannot be laid out that way (another byte order).
QByteArray exifWithMakerNoteOf(const QByteArray& sourceExif, const QByteArray& written);

// True when the EXIF block written holds the maker note of sourceExif at the offset it has
// there, byte for byte, or sourceExif has none.
bool exifKeepsMakerNoteOf(const QByteArray& sourceExif, const QByteArray& written);

}  // namespace pelorin

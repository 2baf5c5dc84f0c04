#pragma once

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace pelorin {

// The EXIF block written (a TIFF block) laid out again with the maker note of sourceExif, byte
// for byte and at the offset it had there, in place of whatever the writer made of it (for
// callers whose changes keep the maker notes). Most maker notes point into themselves with
// offsets counted from the TIFF header, and some hold directories exiv2 does not know, so a
// maker note laid out anew reads back wrong; kept where it was, every such offset stays true.
// written as it is when the source has no maker note, written has no Exif directory or the
// block cannot be laid out that way (another byte order).
QByteArray exifWithMakerNoteOf(const QByteArray& sourceExif, const QByteArray& written);

// exifWithMakerNoteOf where the maker-note values exiv2 reads come out as in sourceExif, else
// written as it is when its values do: a note whose values lie outside it (a preview behind
// the thumbnail) loses them when kept in place, and exiv2, which knows them, moves them along.
// Where neither keeps the values, the note kept in place (for the read-back to refuse).
// sourceValues, when given, are exifMakerNoteValues(sourceExif), which the caller may have read
// already.
QByteArray exifWithMakerNoteKept(const QByteArray& sourceExif, const QByteArray& written,
                                 const std::optional<QStringList>& sourceValues = std::nullopt);

// The maker-note values (makerNoteValues) exiv2 reads in an EXIF block; one line, "unreadable",
// where exiv2 cannot read the block.
QStringList exifMakerNoteValues(const QByteArray& exif);

// True when the EXIF block written holds the maker note of sourceExif at the offset it has
// there, byte for byte, or sourceExif has none.
bool exifKeepsMakerNoteOf(const QByteArray& sourceExif, const QByteArray& written);

}  // namespace pelorin

#pragma once

#include <exiv2/exiv2.hpp>

#include <QStringList>

namespace pelorin {

// The maker-note values exiv2 reads from EXIF, one line each ("key type count value"), sorted,
// for telling whether a rewrite kept them: the entries of every maker-note directory exiv2
// decodes, or the maker note's raw bytes where it decodes none. Values are compared in one
// byte order; data an entry points to (a preview) by its bytes, not its offset. A single long
// value counts by its presence only: maker-note directories are found through such offsets,
// which move when exiv2 lays a maker note out anew.
QStringList makerNoteValues(const Exiv2::ExifData& exif);

// True when both name the same camera (Make and Model): exiv2 picks the reader of a maker
// note by them, so after a change of camera the same note reads otherwise and its values
// cannot be compared.
bool sameCamera(const Exiv2::ExifData& a, const Exiv2::ExifData& b);

// The first line found in only one of the two lists, or empty when they are the same.
QString firstDifference(const QStringList& before, const QStringList& after);

}  // namespace pelorin

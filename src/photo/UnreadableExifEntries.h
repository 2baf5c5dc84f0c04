#pragma once

#include <exiv2/exiv2.hpp>

namespace pelorin {

// Removes the EXIF entries whose TIFF field type is none the standard defines (a damaged
// entry, type 0 in a Sony IFD0 for one). Their value cannot be interpreted by anyone, and
// written back they would sort first in their directory, where readers that meet an entry of
// unknown type give up on the whole directory and with it every date, camera and position.
void dropEntriesOfUnknownType(Exiv2::ExifData& exif);

// True for the field types the TIFF standard (and BigTIFF) defines.
bool isTiffFieldType(Exiv2::TypeId type);

}  // namespace pelorin

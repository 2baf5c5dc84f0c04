#pragma once

#include <exiv2/exiv2.hpp>

namespace pelorin {

// In a TIFF-based photo (TIFF, DNG and the TIFF-based raws) the directories of the IFD chain and
// the SubIFDs hold the image itself. True for an entry of such a directory that the image needs:
// where its data lies and how it is coded, its resolution and colour facts, and for a raw what a
// developer needs to render it (CFA layout, black and white levels, colour matrices, opcodes).
// False for what only tells about the picture (camera, dates, people, software, serial numbers,
// location) and for the embedded metadata blocks (EXIF, GPS, IPTC, XMP, Photoshop, maker notes).
bool describesTiffImage(const Exiv2::Exifdatum& datum);

}  // namespace pelorin

#pragma once

#include <exiv2/exiv2.hpp>

namespace pelorin {

// The EXIF of a photo that a JPEG newly encoded from it may carry: the descriptive tags of IFD0
// (camera, dates, people, resolution), the Exif, GPS and interoperability directories and the
// maker notes. Nothing that describes the source's own image data comes along: its sizes,
// strips and coding, its SubIFDs, a DNG's tags (by which readers would take the JPEG for a
// DNG), the thumbnail, the colour profile (a JPEG keeps that in its own segments) and the
// IPTC, XMP and Photoshop blocks of a TIFF's IFD0 (written to their own segments). EXIF tags a
// TIFF-based raw keeps in IFD0 move to the Exif directory, where a JPEG reader looks for them.
Exiv2::ExifData exifForNewJpeg(const Exiv2::ExifData& source);

// A JPEG reader checks the EXIF more strictly than readers of the source's kind: an ExifVersion
// older than the tags held (2.3 lens and owner tags under 0221, as phones write in HEIC) becomes
// 0232, the version of the writer. Other values stay as they are.
void bringExifUpToItsNewJpeg(Exiv2::ExifData& exif);

}  // namespace pelorin

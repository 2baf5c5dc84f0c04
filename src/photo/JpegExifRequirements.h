#pragma once

#include <exiv2/exiv2.hpp>

#include <QByteArray>

namespace pelorin {

// Adds to the EXIF of a JPEG the tags the EXIF standard requires of a JPEG and that it lacks, in
// the directories it has: IFD0's resolution and YCbCrPositioning; the Exif directory's
// ExifVersion, FlashpixVersion, ComponentsConfiguration, ColorSpace and pixel dimensions; the
// GPS directory's version. Values come from the JPEG itself (its frame, its JFIF density) and
// whether it is written with a colour profile, else from earlier, the EXIF the picture had
// before (for a rewrite of the same image data), else the standard's defaults. Tags present are
// left as they are.
void addRequiredJpegExif(Exiv2::ExifData& exif, const QByteArray& jpeg, bool withIccProfile,
                         const Exiv2::ExifData& earlier = {});

// The same for the Exif and GPS directories a change added to an EXIF block that lacked them
// (a date set in a photo whose EXIF had IFD0 alone); the directories the block had are left as
// the camera wrote them.
void addRequiredJpegExifToNewDirectories(Exiv2::ExifData& exif, const Exiv2::ExifData& before, const QByteArray& jpeg,
                                         bool withIccProfile);

}  // namespace pelorin

#include "photo/CarriedExif.h"

#include "photo/Exiv2Names.h"

#include <algorithm>
#include <string>

namespace pelorin {
namespace {

using exiv2_model::detail::writableTiffTags;

bool carriedGroup(const std::string& group)
{
    return group == "Photo" || group == "GPSInfo" || group == "Iop" || group == "MakerNote"
           || Exiv2::ExifTags::isMakerGroup(group);
}

// An EXIF tag that exiv2 knows in the Exif directory, found in IFD0 (NEF and TIFF/EP files put
// DateTimeOriginal there).
bool isExifDirectoryTag(uint16_t tag)
{
    const Exiv2::ExifKey key(tag, "Photo");
    return key.tagName().rfind("0x", 0) != 0;
}

// Tags the EXIF standard added in version 2.3 or later: a reader that trusts an older
// ExifVersion may not know them. Sensitivity type and friends, the offsets of the times, the
// environment readings, the owner, serial and lens tags, the composite-image tags, Gamma.
bool fromExif23On(uint16_t tag)
{
    return (tag >= 0x8830 && tag <= 0x8835) || (tag >= 0x9010 && tag <= 0x9012) || (tag >= 0x9400 && tag <= 0x9407)
           || (tag >= 0xA430 && tag <= 0xA435) || (tag >= 0xA460 && tag <= 0xA462) || tag == 0xA500;
}

// The version of the EXIF standard that defines the tag, for the tags added in 2.3 and 2.32.
std::string versionDefining(uint16_t tag)
{
    if (tag >= 0xA460 && tag <= 0xA462)  // composite image
        return "0232";
    return fromExif23On(tag) ? "0230" : "0000";
}

// The new JPEG's EXIF is written by a 2.32 writer: where it holds tags newer than its
// ExifVersion says (a phone's HEIC, a PNG's eXIf), the version says 0232.
void declareVersionOfTagsHeld(Exiv2::ExifData& exif)
{
    const auto version = exif.findKey(Exiv2::ExifKey("Exif.Photo.ExifVersion"));
    if (version == exif.end() || version->size() != 4)
        return;
    Exiv2::byte digits[4] = {};
    version->copy(digits, Exiv2::invalidByteOrder);
    const std::string declared(reinterpret_cast<const char*>(digits), 4);
    const bool newer = std::any_of(exif.begin(), exif.end(), [&declared](const Exiv2::Exifdatum& d) {
        return d.groupName() == "Photo" && versionDefining(d.tag()) > declared;
    });
    if (newer) {
        const Exiv2::DataValue value(reinterpret_cast<const Exiv2::byte*>("0232"), 4);
        version->setValue(&value);
    }
}

}  // namespace

Exiv2::ExifData exifForNewJpeg(const Exiv2::ExifData& source)
{
    Exiv2::ExifData carried;
    for (const Exiv2::Exifdatum& d : source) {
        const std::string group = d.groupName();
        if (carriedGroup(group)) {
            carried.add(d);
            continue;
        }
        if (group != "Image")
            continue;
        const QString name = QString::fromStdString(d.tagName());
        // The positioning of the chroma samples belongs to the new coding, not the source's.
        if (writableTiffTags().contains(name) && name != QLatin1String("YCbCrPositioning")) {
            carried.add(d);
            continue;
        }
        if (isExifDirectoryTag(d.tag())) {
            const Exiv2::ExifKey inExif(d.tag(), "Photo");
            if (source.findKey(inExif) == source.end() && carried.findKey(inExif) == carried.end())
                carried.add(inExif, &d.value());
        }
    }
    return carried;
}

void bringExifUpToItsNewJpeg(Exiv2::ExifData& exif)
{
    declareVersionOfTagsHeld(exif);
}

}  // namespace pelorin

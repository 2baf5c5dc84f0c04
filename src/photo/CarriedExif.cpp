#include "photo/CarriedExif.h"

#include "photo/Exiv2Names.h"

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

}  // namespace pelorin

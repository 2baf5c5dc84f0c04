#include "photo/TiffImageStructure.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace pelorin {
namespace {

// exiv2's groups of the IFD chain and of the SubIFDs.
bool isImageDirectory(std::string_view group)
{
    if (group == "Image" || group == "Thumbnail" || group == "Image2" || group == "Image3"
        || group == "SubThumb1")
        return true;
    return group.size() == 9 && group.substr(0, 8) == "SubImage" && group[8] >= '1' && group[8] <= '9';
}

// Entries of image directories that tell about the picture, not about its data. Anything not
// named here stays: a tag a decoder needs but this list does not know must never be lost.
constexpr uint16_t kDescriptive[] = {
    0x010d, 0x010e, 0x010f, 0x0110,  // DocumentName, ImageDescription, Make, Model
    0x011d, 0x0131, 0x0132, 0x013b,  // PageName, Software, DateTime, Artist
    0x013c, 0x02bc, 0x4746, 0x4749,  // HostComputer, XMLPacket, Rating, RatingPercent
    0x800d,                          // ImageID
    0x9c9b, 0x9c9c, 0x9c9d, 0x9c9e, 0x9c9f,  // Windows XPTitle ... XPSubject
    0xc4a5,                          // PrintImageMatching
    0xc615,                          // DNG LocalizedCameraModel
    0xc62f, 0xc630,                  // DNG CameraSerialNumber, LensInfo
    0xc634, 0xc635,                  // DNGPrivateData (the maker notes), MakerNoteSafety
    0xc65d,                          // RawDataUniqueID
    0xc68b, 0xc68c, 0xc71d,          // OriginalRawFileName, OriginalRawFileData, its digest
    0xc716, 0xc717, 0xc718, 0xc719, 0xc71b,  // the preview's application, settings and date
    0xc763, 0xc789, 0xc7a1,          // TimeCodes, ReelName, CameraLabel
    0xea1c, 0xea1d,                  // Windows Padding, OffsetSchema
};

// EXIF, TIFF-EP and GeoTIFF tags: capture facts, location and the pointers to the EXIF, GPS,
// IPTC and Photoshop blocks. Two of them belong to the image.
constexpr uint16_t kCaptureFirst = 0x8298;  // Copyright
constexpr uint16_t kCaptureLast = 0xa4ff;
constexpr uint16_t kInterColorProfile = 0x8773;
constexpr uint16_t kTiffEpStandardId = 0x9216;

}  // namespace

bool describesTiffImage(const Exiv2::Exifdatum& datum)
{
    if (!isImageDirectory(datum.groupName()))
        return false;
    const uint16_t tag = datum.tag();
    if (tag == kInterColorProfile || tag == kTiffEpStandardId)
        return true;
    if (tag >= kCaptureFirst && tag <= kCaptureLast)
        return false;
    return std::find(std::begin(kDescriptive), std::end(kDescriptive), tag) == std::end(kDescriptive);
}

}  // namespace pelorin

#include "photo/UnreadableExifEntries.h"

namespace pelorin {

bool isTiffFieldType(Exiv2::TypeId type)
{
    switch (type) {
    case Exiv2::unsignedByte: case Exiv2::asciiString: case Exiv2::unsignedShort:
    case Exiv2::unsignedLong: case Exiv2::unsignedRational: case Exiv2::signedByte:
    case Exiv2::undefined: case Exiv2::signedShort: case Exiv2::signedLong:
    case Exiv2::signedRational: case Exiv2::tiffFloat: case Exiv2::tiffDouble:
    case Exiv2::tiffIfd: case Exiv2::unsignedLongLong: case Exiv2::signedLongLong:
    case Exiv2::tiffIfd8:
        return true;
    default:
        return false;
    }
}

void dropEntriesOfUnknownType(Exiv2::ExifData& exif)
{
    for (auto it = exif.begin(); it != exif.end();) {
        if (isTiffFieldType(it->typeId()))
            ++it;
        else
            it = exif.erase(it);
    }
}

}  // namespace pelorin

#include "photo/JpegExifRequirements.h"

#include "photo/JpegSegments.h"

namespace pelorin {
namespace {

struct JpegFacts {
    int components = 3;
    long width = 0;
    long height = 0;
    int densityUnit = 0;  // JFIF: 0 aspect ratio only, 1 per inch, 2 per centimetre
    long xDensity = 0;
    long yDensity = 0;
};

quint16 big16(const QByteArray& b, qsizetype at) { return quint16((quint8(b[at]) << 8) | quint8(b[at + 1])); }

JpegFacts factsOf(const QByteArray& jpeg)
{
    JpegFacts facts;
    forEachJpegSegment(jpeg, [&](const JpegSegment& s) {
        const bool frame = s.marker >= 0xC0 && s.marker <= 0xCF && s.marker != 0xC4 && s.marker != 0xC8
                           && s.marker != 0xCC;
        if (frame && s.length >= 6) {
            facts.height = big16(jpeg, s.payload + 1);
            facts.width = big16(jpeg, s.payload + 3);
            facts.components = quint8(jpeg[s.payload + 5]);
        } else if (s.marker == 0xE0 && s.length >= 12 && jpeg.mid(s.payload, 5) == QByteArray("JFIF\0", 5)) {
            facts.densityUnit = quint8(jpeg[s.payload + 7]);
            facts.xDensity = big16(jpeg, s.payload + 8);
            facts.yDensity = big16(jpeg, s.payload + 10);
        }
        return true;
    });
    return facts;
}

bool hasGroup(const Exiv2::ExifData& exif, const char* group)
{
    for (const Exiv2::Exifdatum& d : exif) {
        if (d.groupName() == group)
            return true;
    }
    return false;
}

bool has(const Exiv2::ExifData& exif, const char* key)
{
    return exif.findKey(Exiv2::ExifKey(key)) != exif.end();
}

void setIfMissing(Exiv2::ExifData& exif, const char* key, const Exiv2::Value& value)
{
    if (!has(exif, key))
        exif.add(Exiv2::ExifKey(key), &value);
}

// Copies key from earlier when exif lacks it; false when neither has it.
bool takeEarlier(Exiv2::ExifData& exif, const Exiv2::ExifData& earlier, const char* key)
{
    if (has(exif, key))
        return true;
    const auto found = earlier.findKey(Exiv2::ExifKey(key));
    if (found == earlier.end())
        return false;
    exif.add(*found);
    return true;
}

void completeIfd0(Exiv2::ExifData& exif, const JpegFacts& facts, const Exiv2::ExifData& earlier)
{
    const bool resolution = takeEarlier(exif, earlier, "Exif.Image.XResolution")
                            & takeEarlier(exif, earlier, "Exif.Image.YResolution")
                            & takeEarlier(exif, earlier, "Exif.Image.ResolutionUnit");
    if (!resolution) {
        // The density the JFIF header states for these pixels; without one the standard's
        // default, 72 per inch.
        const bool jfif = (facts.densityUnit == 1 || facts.densityUnit == 2) && facts.xDensity > 0 && facts.yDensity > 0;
        Exiv2::URationalValue x, y;
        x.value_.push_back({uint32_t(jfif ? facts.xDensity : 72), 1});
        y.value_.push_back({uint32_t(jfif ? facts.yDensity : 72), 1});
        Exiv2::UShortValue unit;
        unit.value_.push_back(uint16_t(jfif ? facts.densityUnit + 1 : 2));
        setIfMissing(exif, "Exif.Image.XResolution", x);
        setIfMissing(exif, "Exif.Image.YResolution", y);
        setIfMissing(exif, "Exif.Image.ResolutionUnit", unit);
    }
    // JFIF places the chroma samples centred, which is what JPEG encoders do unless told.
    if (!takeEarlier(exif, earlier, "Exif.Image.YCbCrPositioning")) {
        Exiv2::UShortValue centred;
        centred.value_.push_back(1);
        exif.add(Exiv2::ExifKey("Exif.Image.YCbCrPositioning"), &centred);
    }
}

void completeExifDirectory(Exiv2::ExifData& exif, const JpegFacts& facts, bool withIccProfile)
{
    setIfMissing(exif, "Exif.Photo.ExifVersion", Exiv2::DataValue(reinterpret_cast<const Exiv2::byte*>("0232"), 4));
    setIfMissing(exif, "Exif.Photo.FlashpixVersion", Exiv2::DataValue(reinterpret_cast<const Exiv2::byte*>("0100"), 4));
    // Y, Cb, Cr in that order; a grey picture has Y alone.
    const Exiv2::byte ycbcr[4] = {1, 2, 3, 0};
    const Exiv2::byte grey[4] = {1, 0, 0, 0};
    setIfMissing(exif, "Exif.Photo.ComponentsConfiguration", Exiv2::DataValue(facts.components == 1 ? grey : ycbcr, 4));
    // Without a profile readers take the pixels for sRGB; with one, the profile says what they are.
    Exiv2::UShortValue colourSpace;
    colourSpace.value_.push_back(withIccProfile ? 0xFFFF : 1);
    setIfMissing(exif, "Exif.Photo.ColorSpace", colourSpace);
    if (facts.width > 0 && facts.height > 0) {
        Exiv2::ULongValue width, height;
        width.value_.push_back(uint32_t(facts.width));
        height.value_.push_back(uint32_t(facts.height));
        setIfMissing(exif, "Exif.Photo.PixelXDimension", width);
        setIfMissing(exif, "Exif.Photo.PixelYDimension", height);
    }
}

}  // namespace

void addRequiredJpegExif(Exiv2::ExifData& exif, const QByteArray& jpeg, bool withIccProfile,
                         const Exiv2::ExifData& earlier)
{
    if (exif.empty())
        return;  // no EXIF block at all is no incomplete one
    const JpegFacts facts = factsOf(jpeg);
    completeIfd0(exif, facts, earlier);
    if (hasGroup(exif, "Photo"))
        completeExifDirectory(exif, facts, withIccProfile);
    if (hasGroup(exif, "GPSInfo")) {
        const Exiv2::byte version[4] = {2, 3, 0, 0};
        setIfMissing(exif, "Exif.GPSInfo.GPSVersionID", Exiv2::DataValue(version, 4, Exiv2::invalidByteOrder, Exiv2::unsignedByte));
    }
}

void addRequiredJpegExifToNewDirectories(Exiv2::ExifData& exif, const Exiv2::ExifData& before, const QByteArray& jpeg,
                                         bool withIccProfile)
{
    if (hasGroup(exif, "Photo") && !hasGroup(before, "Photo"))
        completeExifDirectory(exif, factsOf(jpeg), withIccProfile);
    if (hasGroup(exif, "GPSInfo") && !hasGroup(before, "GPSInfo")) {
        const Exiv2::byte version[4] = {2, 3, 0, 0};
        setIfMissing(exif, "Exif.GPSInfo.GPSVersionID", Exiv2::DataValue(version, 4, Exiv2::invalidByteOrder, Exiv2::unsignedByte));
    }
}

}  // namespace pelorin

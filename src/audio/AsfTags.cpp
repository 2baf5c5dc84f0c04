#include "audio/AsfTags.h"

#include "audio/TagLibFiles.h"

#include <taglib/asfattribute.h>
#include <taglib/asfpicture.h>

#include <array>

namespace pelorin::taglib {
namespace {

const char* const kPictureAttribute = "WM/Picture";

// Written by the encoder about the stream; players read the bit-rate mode and levels.
constexpr std::array<const char*, 7> kEncodingAttributes = {
    "IsVBR", "WMFSDKVersion", "WMFSDKNeeded", "DeviceConformanceTemplate",
    "MediaFoundationVersion", "PeakValue", "AverageLevel"};

bool isEncodingAttribute(const TagLib::String& name)
{
    for (const char* kept : kEncodingAttributes)
        if (name == kept)
            return true;
    return false;
}

}  // namespace

void setAsfFrontCover(TagLib::ASF::Tag* tag, const QByteArray& image, const QString& mimeType)
{
    TagLib::ASF::Picture cover;
    cover.setType(TagLib::ASF::Picture::FrontCover);
    cover.setMimeType(toTString(mimeType));
    cover.setPicture(toVector(image));
    TagLib::ASF::AttributeList pictures;
    pictures.append(TagLib::ASF::Attribute(cover));
    for (const TagLib::ASF::Attribute& old : tag->attribute(kPictureAttribute)) {
        const TagLib::ASF::Picture picture = old.toPicture();
        if (!picture.isValid() || picture.type() != TagLib::ASF::Picture::FrontCover)
            pictures.append(old);
    }
    tag->setAttribute(kPictureAttribute, pictures);
}

void removeAsfTags(TagLib::ASF::Tag* tag)
{
    tag->setTitle(TagLib::String());
    tag->setArtist(TagLib::String());
    tag->setCopyright(TagLib::String());
    tag->setComment(TagLib::String());
    tag->setRating(TagLib::String());
    const TagLib::ASF::AttributeListMap attributes = tag->attributeListMap();  // a copy: items go below
    for (const auto& [name, values] : attributes)
        if (!isEncodingAttribute(name))
            tag->removeItem(name);
}

}  // namespace pelorin::taglib

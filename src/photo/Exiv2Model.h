#pragma once

// The one translation between exiv2's metadata and the image-property model (groups "{TIFF}",
// "{Exif}", "{GPS}", "{IPTC}", "{XMP}", "{ExifAux}", maker groups, top-level "Orientation").
// Only this file and Exiv2Model.cpp know exiv2 key strings.

#include <exiv2/exiv2.hpp>

#include <QStringList>
#include <QVariantMap>

namespace pelorin::exiv2_model {

// Adds the groups found in the metadata to properties.
void readExif(const Exiv2::ExifData& exif, QVariantMap* properties);
void readIptc(const Exiv2::IptcData& iptc, QVariantMap* properties);
void readXmp(const Exiv2::XmpData& xmp, QVariantMap* properties);
// The groups of all three that an opened image holds.
QVariantMap modelOf(Exiv2::Image& image);

struct Metadata {
    Exiv2::ExifData& exif;
    Exiv2::IptcData& iptc;
    Exiv2::XmpData& xmp;
};

// Model keys this layer can change: the groups above and the top-level "Orientation".
bool isWritableKey(const QString& key);
bool isModelGroup(const QString& key);
// True for the values of a group that describe the image data (sizes, strips, compression):
// a writer keeps them as the file has them, whatever the change asks.
bool describesImageData(const QString& group, const QString& modelKey);

// Makes one group of the metadata equal to content (a dictionary), writing only the values
// that differ and leaving data the model does not show (maker notes, image structure) alone;
// a null content removes the group, together with its mirror in XMP. Values that cannot be
// written are named in warnings.
void applyChange(Metadata metadata, const QString& key, const QVariant& content,
                 QStringList* warnings);

// After EXIF dates or GPS changed, sets the XMP properties that mirror them, where the photo
// has them: the dates to the same clock reading (each keeping its time-zone suffix), the
// exif:GPS* properties to the new GPS group.
void syncXmpMirrors(Metadata metadata, const QVariantMap& propertiesBefore);

// Removes every piece of metadata but the orientation.
void removeAll(Metadata metadata);

// Structural equality of model values, numbers compared by value (72 equals 72.0).
bool sameValue(const QVariant& a, const QVariant& b);

}  // namespace pelorin::exiv2_model

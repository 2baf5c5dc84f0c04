#pragma once

// Conversions of single values between exiv2 and the image-property model: texts, numbers,
// rationals, version digits, comments, GPS degrees and times, IPTC dates, XMP arrays.

#include <exiv2/exiv2.hpp>

#include <QString>
#include <QVariant>

#include <memory>
#include <string>

namespace pelorin::exiv2_model::detail {

QString decodeText(const std::string& bytes);
QVariant genericValue(const Exiv2::Value& v, const QString& modelKey);
QVariant gpsValue(const Exiv2::Value& v, const QString& modelKey);
QVariant iptcValue(const Exiv2::Value& v);
QVariant xmpValue(const Exiv2::Xmpdatum& d);

// The exiv2 value for a model value written to an EXIF key; nothing when it cannot hold it.
std::unique_ptr<Exiv2::Value> exifValueFor(const Exiv2::ExifKey& key, const QString& modelKey,
                                           const QVariant& value);

}  // namespace pelorin::exiv2_model::detail

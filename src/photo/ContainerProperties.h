#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

namespace pelorin {

// Small, bounded readers of the facts a container states about itself, for the groups that
// exiv2 does not report: "{JFIF}" (JPEG APP0), "{PNG}" (header and text chunks), "{GIF}"
// (screen descriptor, loop count, first frame delay), and the ICC profile's description.
QVariantMap readJfifGroup(const QByteArray& jpeg);
QVariantMap readPngGroup(const QByteArray& png);
QVariantMap readGifGroup(const QByteArray& gif);

// The XMP packet of a GIF (its "XMP DataXMP" application extension), empty when it has none.
QByteArray gifXmpPacket(const QByteArray& gif);
QString iccProfileDescription(const QByteArray& icc);

// True when a JPEG's first frame header is progressive (SOF2).
bool isProgressiveJpeg(const QByteArray& jpeg);

}  // namespace pelorin

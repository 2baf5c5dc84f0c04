#pragma once

#include <exiv2/exiv2.hpp>

#include <QByteArray>

#include <optional>
#include <string>

namespace pelorin {

// exiv2 serialises the IPTC record and the XMP packet anew on every write, and the new forms
// are not always the old: a time without zone gains "+00:00", a namespace URI gains a '/',
// rdf:about becomes xmpMM:InstanceID, a second Photoshop segment is merged away. A block the
// command did not change is therefore written as the source's own bytes.

// exiv2 ends every namespace URI with a '/', so a packet it writes puts the properties of a
// namespace declared without one (Windows' MicrosoftPhoto: "http://ns.microsoft.com/photo/1.0")
// into another namespace. Returns packet with each such declaration back as the source had it.
std::string withSourceNamespaceUris(const std::string& packet, const std::string& sourcePacket);

// The XMP packet of a JPEG as the file holds it; nullopt when it holds none, or spreads it over
// extended XMP segments (whose values only the packet exiv2 merged from them holds).
std::optional<std::string> rawJpegXmpPacket(const QByteArray& jpeg);

// The packet exiv2 writes for the values (compact, as in a JPEG); nothing when it cannot.
std::optional<std::string> writtenXmp(const Exiv2::XmpData& xmp);

// Whether two IPTC records would be written the same.
bool sameIptc(const Exiv2::IptcData& a, const Exiv2::IptcData& b);

// The output JPEG with its Photoshop (APP13) segments replaced by the source JPEG's, in the
// place of the first of them (else before the first segment that is no application segment).
// The output unchanged when either cannot be followed or the source has none.
QByteArray jpegWithPhotoshopSegmentsOf(const QByteArray& source, const QByteArray& output);

}  // namespace pelorin

#pragma once

#include <QByteArray>

namespace pelorin {

// Photoshop keeps the MD5 of a file's IPTC record (image resource 0x0404) in its IPTCDigest
// resource (0x0425). While they agree it takes the XMP for up to date; when they differ it takes
// the IPTC for edited by a program that did not know XMP, and prefers it.
//
// Brings the IPTCDigest of a rewritten JPEG in step with its new IPTC record, as Photoshop does
// when it saves: when the source's digest was current (or the source held no IPTC record) it
// becomes the MD5 of the new record, and when the IPTC record was removed it is dropped. A digest that was already out of
// date in the source is left as it is, so that it still says the IPTC is the newer. Returns
// the output unchanged when there is nothing to do or its segments cannot be followed.
QByteArray jpegWithIptcDigestInStep(const QByteArray& source, const QByteArray& output);

// The JPEG without an IPTC record in any of its Photoshop segments. A file may hold more than
// one such segment, each with a record, and exiv2 rewrites only the first: a removal of the
// IPTC must reach them all.
QByteArray jpegWithoutIptcRecords(const QByteArray& jpeg);

// The JPEG without Photoshop's thumbnails of its picture, for a JPEG encoded anew.
QByteArray jpegWithoutPhotoshopThumbnails(const QByteArray& jpeg);

}  // namespace pelorin

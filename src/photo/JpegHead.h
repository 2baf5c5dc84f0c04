#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

class QFile;

namespace pelorin {

// A JPEG's metadata side without its image data: every marker segment before the first scan,
// that scan's header, and an end marker standing in for the rest. To exiv2 and to our segment
// code it is a JPEG like any other, so a command reads and rewrites the metadata of a file of
// megabytes in a buffer of kilobytes; the image data stays in the file and is copied from there.
struct JpegHead {
    QByteArray bytes;
    qsizetype scanHeaderStart = 0;  // in bytes: the first scan's header, then the end marker
    qint64 imageDataStart = 0;  // where the file's bytes after the first scan header begin
    qint64 fileSize = 0;

    qint64 imageDataLength() const { return fileSize - imageDataStart; }
};

// Reads the head of the JPEG in the open file. Empty when the file does not have the plain
// structure of one (a break in the segments, a scan that never starts, no end marker after the
// scan data); such a file is left to the readers of whole files, which know the damage.
std::optional<JpegHead> readJpegHead(QFile& file);
std::optional<JpegHead> readJpegHead(const QString& path);

// The bytes of a rewritten head that precede the image data: a rewritten head must end as its
// source's head does (first scan header, then the stand-in end marker), for the image data to
// follow it. Empty when it does not.
std::optional<QByteArray> rewrittenHeadBeforeImageData(const QByteArray& rewrittenHead, const JpegHead& source);

}  // namespace pelorin

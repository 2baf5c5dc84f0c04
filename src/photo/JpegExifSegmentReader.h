#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace pelorin {

// Diagnostic reader of the EXIF APP1 segments of a JPEG file, written without an image library.
// It lists the tags it knows, one line each ("makeString====Apple"), in the order met.

// Kept by the caller across files: the reader only ever sets the flag, and only ever empties the
// data.
struct ExifSegmentReaderState {
    bool bhasThumImage = false;  // an end-of-image marker was met before the end of a file
    QByteArray theImageData;     // emptied at a start-of-scan header once the flag is set
};

struct ExifSegmentReport {
    QStringList lines;
    QString error;           // the file could not be read (then there are no lines)
    bool truncated = false;  // an output limit was reached, the remaining lines are missing
};

// Files above this size are refused rather than read into memory.
inline constexpr qint64 kExifSegmentReaderMaxFileSize = qint64(512) * 1024 * 1024;

// Reads the file once into memory and scans it.
ExifSegmentReport ReadExifDataFromPiture(const QString& path, ExifSegmentReaderState& state);

// Scans bytes already in memory.
ExifSegmentReport readExifSegments(const QByteArray& bytes, ExifSegmentReaderState& state);

}  // namespace pelorin

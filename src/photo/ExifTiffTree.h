#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

namespace pelorin {

// The TIFF structure of an EXIF block (as it follows "Exif\0\0" in a JPEG): its directories,
// their entries and every piece of data the entries point to, so that the block can be laid
// out anew with one value held at a fixed offset. Only the pointers of the EXIF standard are
// followed (the Exif, GPS and interoperability directories, SubIFDs, strips, tiles and the
// JPEG thumbnail); any other value is carried as opaque bytes.
class ExifTiffTree {
public:
    // Nothing when the bytes are not a well-formed TIFF block; every offset is bounds-checked.
    // A lenient parse (of a camera's block, to find its maker note) passes over entries of no
    // defined type or outside the block and directories it cannot read, where a strict one
    // (of a block to lay out again, which must lose nothing) fails.
    enum class Parse { Strict, Lenient };
    static std::optional<ExifTiffTree> parse(const QByteArray& tiff, Parse mode = Parse::Strict);

    // The value of the entry with this tag in the Exif directory, where it lies in the block
    // and how it is typed; nothing when there is no such entry or its value sits in the entry.
    // trailing holds the bytes between the value's end and the next structure of the block:
    // cameras write maker notes whose last values run past the length they declare.
    struct OutOfLineValue {
        quint32 offset = 0;
        quint16 type = 0;
        quint32 count = 0;
        QByteArray bytes;
        QByteArray trailing;
    };
    std::optional<OutOfLineValue> exifDirectoryValue(quint16 tag) const;

    // The block laid out again with the Exif directory's entry of this tag holding value (and
    // its trailing bytes) at value.offset, byte for byte; every other value and directory is
    // placed around it. The entry is added when the directory lacks it. Nothing when there is
    // no Exif directory or the value would overlap the header.
    std::optional<QByteArray> withExifValuePinned(quint16 tag, const OutOfLineValue& value) const;

    bool bigEndian() const { return bigEndian_; }

private:
    struct Entry {
        quint16 tag = 0;
        quint16 type = 0;
        quint32 count = 0;
        QByteArray inlineValue;       // the four value bytes when the value fits in the entry
        int valuePiece = -1;          // otherwise the piece holding the value
        QList<int> directories;       // directories this entry points to
        QList<int> dataPieces;        // data this entry points to (strips, tiles, a thumbnail)
    };
    struct Directory {
        QList<Entry> entries;
        int next = -1;
    };

    int exifDirectory() const;
    int parseDirectory(const QByteArray& tiff, quint32 offset, int depth);
    QByteArray pointerValues(const Entry& entry, const QList<quint32>& placed) const;

    bool bigEndian_ = false;
    int root_ = -1;
    QList<Directory> directories_;
    QList<QByteArray> pieces_;
    QList<quint32> pieceOffsets_;  // where each piece lay in the parsed block
    QList<quint32> seenDirectoryOffsets_;
    QByteArray source_;  // the parsed block
    bool lenient_ = false;
    quint64 dataBytes_ = 0;  // of the strips, tiles and thumbnails read so far
};

}  // namespace pelorin

#include "photo/JpegExifSegmentReader.h"

#include <QFile>

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>

namespace pelorin {
namespace {

// Limits that keep any input, however hostile, to a small amount of time and memory. Real files
// give a few dozen short lines.
constexpr qsizetype kMaxLines = 100000;
constexpr qsizetype kMaxOutputChars = 1024 * 1024;
constexpr qsizetype kMaxEntriesPerFile = 1 << 20;
constexpr qsizetype kMaxDirectoriesPerSegment = 16;
constexpr quint32 kMaxValueElements = 256;
constexpr qsizetype kReadChunk = 1024 * 1024;

struct TagFormat {
    quint16 tag;
    const char* format;
};

constexpr quint16 kExifPointerTag = 0x8769;

// The log formats are fixed texts that other tools match, the odd ones included.
constexpr TagFormat kMainTags[] = {
    {0x010f, "makeString====%@"},
    {0x0110, "ModelString====%@"},
    {0x0112, "Orientation====%@"},
    {0x011a, "XResolution====%@"},
    {0x011b, "YResolution====%@"},
    {0x0128, "ResolutionUnitString====%@"},
    {0x0131, "SoftwareString====%@"},
    {0x0132, "DateTimeString====%@"},
    {0x0213, "YCbCrPostioningString====%@"},
    {0x8825, "GPSIFDString====%@"},  // logs the offset only: the GPS directory is not entered
};

constexpr TagFormat kExifTags[] = {
    {0x829a, "ExposoureTime====%@"},
    {0x829d, "FNumber====%@"},
    {0x8822, "ExposureProgram====%@"},
    {0x8827, "ISOSpeedRatings====%@"},
    {0x9000, "ExifVersion====%@"},
    {0x9003, "DateTimeOriginal====%@"},
    {0x9004, "DateTimeDigitized====%@"},
    {0x9101, "ComponentsConfiguration====%@"},
    {0x9201, "GPSIFDString====%@"},
    {0x9202, "ApertureValue====%@"},
    {0x9203, "BrightnessValue====%@"},
    {0x9207, "ApertureValue====%@"},
    {0x9209, "Flashfired====%@"},
    {0x920a, "FocalLength====%@"},
    {0xa000, "FlashpixVersion====%@"},
    {0xa001, "ColorSpace====%@"},
    {0xa002, "PixelXDimension====%@"},
    {0xa003, "PixelYDimension====%@"},
    {0xa217, "SensingMethod Colarea sens====%@"},
    {0xa401, "CustomRendered====%@"},
    {0xa402, "ExposureMode====%@"},
    {0xa403, "GPSIFDString====%@"},
    {0xa405, "GPSIFDString====%@"},
    {0xa406, "GPSIFDString====%@"},
};

const char* formatOf(std::span<const TagFormat> table, quint16 tag)
{
    for (const TagFormat& entry : table) {
        if (entry.tag == tag)
            return entry.format;
    }
    return nullptr;
}

// Collects the lines within the limits; once one is reached, nothing more is added.
class LineSink {
public:
    explicit LineSink(ExifSegmentReport& report) : report_(report) {}

    bool full() const { return report_.truncated; }

    void add(const QString& line)
    {
        if (full())
            return;
        if (report_.lines.size() >= kMaxLines || chars_ + line.size() > kMaxOutputChars) {
            report_.truncated = true;
            return;
        }
        chars_ += line.size();
        report_.lines.append(line);
    }

    bool spendEntry()
    {
        if (entries_ >= kMaxEntriesPerFile)
            report_.truncated = true;
        ++entries_;
        return !full();
    }

private:
    ExifSegmentReport& report_;
    qsizetype chars_ = 0;
    qsizetype entries_ = 0;
};

// The TIFF structure inside one APP1 segment: offsets count from its first byte, and nothing
// outside it is ever read.
class TiffBlock {
public:
    TiffBlock(const uchar* data, quint64 size, bool littleEndian)
        : data_(data), size_(size), littleEndian_(littleEndian)
    {
    }

    bool holds(quint64 offset, quint64 length) const
    {
        return offset <= size_ && length <= size_ - offset;
    }

    // Callers check holds() first.
    quint64 unsignedAt(quint64 offset, int width) const
    {
        quint64 value = 0;
        for (int i = 0; i < width; ++i) {
            const quint64 byte = data_[offset + static_cast<quint64>(i)];
            value |= littleEndian_ ? byte << (8 * i) : byte << (8 * (width - 1 - i));
        }
        return value;
    }
    quint16 u16(quint64 offset) const { return static_cast<quint16>(unsignedAt(offset, 2)); }
    quint32 u32(quint64 offset) const { return static_cast<quint32>(unsignedAt(offset, 4)); }
    const uchar* bytes(quint64 offset) const { return data_ + offset; }

private:
    const uchar* data_;
    quint64 size_;
    bool littleEndian_;
};

enum TiffType : quint16 {
    Byte = 1, Ascii, Short, Long, Rational, SByte, Undefined, SShort, SLong, SRational, Float,
    Double, Ifd
};

int typeSize(quint16 type)
{
    switch (type) {
    case Byte: case Ascii: case SByte: case Undefined: return 1;
    case Short: case SShort: return 2;
    case Long: case SLong: case Float: case Ifd: return 4;
    case Rational: case SRational: case Double: return 8;
    default: return 0;
    }
}

QString hexByte(uchar byte)
{
    return QStringLiteral("%1").arg(uint(byte), 2, 16, QLatin1Char('0'));
}

QString elementText(const TiffBlock& tiff, quint64 at, quint16 type)
{
    switch (type) {
    case SByte: return QString::number(static_cast<qint8>(tiff.unsignedAt(at, 1)));
    case Short: return QString::number(tiff.u16(at));
    case SShort: return QString::number(static_cast<qint16>(tiff.u16(at)));
    case Long: case Ifd: return QString::number(tiff.u32(at));
    case SLong: return QString::number(static_cast<qint32>(tiff.u32(at)));
    case Rational:
        return QStringLiteral("%1/%2").arg(tiff.u32(at)).arg(tiff.u32(at + 4));
    case SRational:
        return QStringLiteral("%1/%2").arg(static_cast<qint32>(tiff.u32(at)))
            .arg(static_cast<qint32>(tiff.u32(at + 4)));
    case Float: {
        const quint32 bits = tiff.u32(at);
        float value;
        std::memcpy(&value, &bits, sizeof value);
        return QString::number(value);
    }
    case Double: {
        const quint64 bits = tiff.unsignedAt(at, 8);
        double value;
        std::memcpy(&value, &bits, sizeof value);
        return QString::number(value, 'g', 15);
    }
    default: return {};
    }
}

// BYTE and UNDEFINED values: version tags hold ASCII digits ("0230"), so an all-printable value
// reads as text; anything else (ComponentsConfiguration, GPSVersionID) as hex digits.
QString bytesText(const TiffBlock& tiff, quint64 at, quint32 count)
{
    const quint32 shown = std::min(count, kMaxValueElements);
    const uchar* bytes = tiff.bytes(at);
    const bool printable = std::all_of(bytes, bytes + shown, [](uchar c) {
        return c >= 0x20 && c < 0x7f;
    });
    QString text;
    if (printable) {
        text = QString::fromLatin1(reinterpret_cast<const char*>(bytes), shown);
    } else {
        for (quint32 i = 0; i < shown; ++i)
            text += hexByte(bytes[i]);
    }
    if (shown < count)
        text += QStringLiteral("...");
    return text;
}

// The value of the 12-byte entry at entryAt as text; nothing for an unknown type or a value that
// lies outside the segment. Long values are cut to kMaxValueElements, marked with "...".
std::optional<QString> valueText(const TiffBlock& tiff, quint64 entryAt)
{
    const quint16 type = tiff.u16(entryAt + 2);
    const quint32 count = tiff.u32(entryAt + 4);
    const int size = typeSize(type);
    if (size == 0)
        return std::nullopt;
    const quint64 total = quint64(count) * static_cast<quint64>(size);
    const quint64 at = total <= 4 ? entryAt + 8 : tiff.u32(entryAt + 8);
    if (!tiff.holds(at, total))
        return std::nullopt;
    if (type == Ascii) {
        const auto* text = reinterpret_cast<const char*>(tiff.bytes(at));
        const auto* nul = static_cast<const char*>(std::memchr(text, 0, count));
        const quint32 length = nul ? static_cast<quint32>(nul - text) : count;
        const quint32 shown = std::min(length, kMaxValueElements * 4);
        QString value = QString::fromUtf8(text, shown);
        if (shown < length)
            value += QStringLiteral("...");
        return value;
    }
    if (type == Byte || type == Undefined)
        return bytesText(tiff, at, count);
    const quint32 shown = std::min(count, kMaxValueElements);
    QStringList elements;
    elements.reserve(shown);
    for (quint32 i = 0; i < shown; ++i)
        elements << elementText(tiff, at + quint64(i) * static_cast<quint64>(size), type);
    QString value = elements.join(QStringLiteral(", "));
    if (shown < count)
        value += QStringLiteral(", ...");
    return value;
}

// Walks IFD0, the directories chained after it (the thumbnail's) and the Exif directory, each
// directory once.
class SegmentWalk {
public:
    SegmentWalk(const TiffBlock& tiff, LineSink& sink) : tiff_(tiff), sink_(sink) {}

    void run()
    {
        quint32 offset = tiff_.u32(4);
        while (firstVisit(offset))
            offset = walkDirectory(offset, kMainTags, true);
    }

private:
    bool firstVisit(quint32 offset)
    {
        // Offsets below 8 would point into the header; 0 also ends a chain.
        if (offset < 8 || visited_.contains(offset) || visited_.size() >= kMaxDirectoriesPerSegment)
            return false;
        visited_.append(offset);
        return true;
    }

    // Logs the listed tags of the directory at offset; answers the next directory's offset.
    quint32 walkDirectory(quint32 offset, std::span<const TagFormat> table, bool entersExif)
    {
        if (!tiff_.holds(offset, 2))
            return 0;
        const quint16 count = tiff_.u16(offset);
        for (quint32 i = 0; i < count; ++i) {
            const quint64 at = quint64(offset) + 2 + quint64(i) * 12;
            if (!tiff_.holds(at, 12) || !sink_.spendEntry())
                return 0;
            const quint16 tag = tiff_.u16(at);
            if (entersExif && tag == kExifPointerTag) {
                const quint16 type = tiff_.u16(at + 2);
                if ((type == Long || type == Ifd) && tiff_.u32(at + 4) >= 1) {
                    const quint32 exifOffset = tiff_.u32(at + 8);
                    if (firstVisit(exifOffset))
                        walkDirectory(exifOffset, kExifTags, false);
                }
                continue;
            }
            const char* format = formatOf(table, tag);
            if (!format)
                continue;
            if (const auto value = valueText(tiff_, at))
                sink_.add(QString::fromLatin1(format).replace(QLatin1String("%@"), *value));
        }
        const quint64 nextAt = quint64(offset) + 2 + quint64(count) * 12;
        return tiff_.holds(nextAt, 4) ? tiff_.u32(nextAt) : 0;
    }

    const TiffBlock& tiff_;
    LineSink& sink_;
    QList<quint32> visited_;
};

// The "Exif\0\0" marker at pos is preceded by the APP1 length field and followed by the TIFF
// header; the segment ends where that length says, or at the end of the file.
void walkSegment(const uchar* data, qsizetype size, qsizetype pos, LineSink& sink)
{
    if (pos < 2 || sink.full())
        return;
    const qsizetype length = (qsizetype(data[pos - 2]) << 8) | data[pos - 1];
    const qsizetype end = std::min(size, pos - 2 + length);
    const qsizetype tiffStart = pos + 6;
    if (end - tiffStart < 8)
        return;
    const uchar* tiff = data + tiffStart;
    const bool little = tiff[0] == 'I' && tiff[1] == 'I';
    const bool big = tiff[0] == 'M' && tiff[1] == 'M';
    if (!little && !big)
        return;
    const TiffBlock block(tiff, quint64(end - tiffStart), little);
    SegmentWalk(block, sink).run();
}

bool matchesAt(const uchar* data, qsizetype size, qsizetype pos, const char (&pattern)[7])
{
    return size - pos >= 6 && std::memcmp(data + pos, pattern, 6) == 0;
}

}  // namespace

ExifSegmentReport readExifSegments(const QByteArray& bytes, ExifSegmentReaderState& state)
{
    ExifSegmentReport report;
    LineSink sink(report);
    const auto* data = reinterpret_cast<const uchar*>(bytes.constData());
    const qsizetype size = bytes.size();

    // Missing bytes of a short file read as zeros, so an empty file logs "0000".
    const QString head = hexByte(size > 0 ? data[0] : 0) + hexByte(size > 1 ? data[1] : 0);
    sink.add(head);
    if (head != QLatin1String("ffd8")) {
        sink.add(head);
        return report;
    }

    static constexpr char kExifMarker[7] = "Exif\0\0";
    static constexpr char kScanHeader[7] = "\x00\x0c\x03\x01\x00\x02";  // SOS body, 3 components
    for (qsizetype pos = 0; pos < size; ++pos) {
        switch (data[pos]) {
        case 'E':
            if (matchesAt(data, size, pos, kExifMarker)) {
                sink.add(QStringLiteral("457869660000"));
                walkSegment(data, size, pos, sink);
            }
            break;
        case 0x00:
            if (matchesAt(data, size, pos, kScanHeader)) {
                sink.add(QStringLiteral("000c03010002"));
                if (state.bhasThumImage)
                    state.theImageData.clear();
            }
            break;
        case 0xff:
            // An end of image before the file's last two bytes closes an embedded thumbnail.
            if (pos + 1 < size && data[pos + 1] == 0xd9 && pos + 2 != size)
                state.bhasThumImage = true;
            break;
        default:
            break;
        }
    }
    return report;
}

ExifSegmentReport ReadExifDataFromPiture(const QString& path, ExifSegmentReaderState& state)
{
    ExifSegmentReport report;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        report.error = QStringLiteral("cannot open %1: %2").arg(path, file.errorString());
        return report;
    }
    const QString tooLarge = QStringLiteral("%1 is larger than %2 MiB, the most this reader takes")
                                 .arg(path).arg(kExifSegmentReaderMaxFileSize / (1024 * 1024));
    if (file.size() > kExifSegmentReaderMaxFileSize) {
        report.error = tooLarge;
        return report;
    }
    // Read in chunks: devices and pipes report no size, and may never end.
    QByteArray bytes;
    bytes.reserve(file.size());
    QByteArray chunk(kReadChunk, Qt::Uninitialized);
    for (;;) {
        const qint64 got = file.read(chunk.data(), chunk.size());
        if (got < 0) {
            report.error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
            return report;
        }
        if (got == 0)
            break;
        if (bytes.size() + got > kExifSegmentReaderMaxFileSize) {
            report.error = tooLarge;
            return report;
        }
        bytes.append(chunk.constData(), got);
    }
    return readExifSegments(bytes, state);
}

}  // namespace pelorin

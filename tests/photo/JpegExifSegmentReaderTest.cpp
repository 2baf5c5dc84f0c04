#include "photo/JpegExifSegmentReader.h"

#include "TestPaths.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pelorin {
namespace {

ExifSegmentReport readSample(const QString& name, ExifSegmentReaderState& state)
{
    return ReadExifDataFromPiture(test::dataPath(name), state);
}

// Compared as standard strings, so that a failure prints readable text.
std::vector<std::string> texts(const QStringList& lines)
{
    std::vector<std::string> result;
    for (const QString& line : lines)
        result.push_back(line.toStdString());
    return result;
}

std::string lineStartingWith(const QStringList& lines, const QString& prefix)
{
    for (const QString& line : lines) {
        if (line.startsWith(prefix))
            return line.mid(prefix.size()).toStdString();
    }
    return "<missing>";
}

// Writes a TIFF block in either byte order, for segments no camera makes.
class TiffBuilder {
public:
    struct Field {
        quint16 tag;
        quint16 type;
        quint32 count;
        QByteArray value;  // the 4-byte value field, left-justified
    };

    explicit TiffBuilder(bool little) : little_(little)
    {
        put(0, QByteArray(little ? "II" : "MM") + number(2, 42) + number(4, 8));
    }

    QByteArray number(int width, quint64 value) const
    {
        QByteArray bytes;
        for (int i = 0; i < width; ++i) {
            const int shift = little_ ? 8 * i : 8 * (width - 1 - i);
            bytes += static_cast<char>((value >> shift) & 0xff);
        }
        return bytes;
    }

    void put(qsizetype at, const QByteArray& data)
    {
        if (bytes_.size() < at + data.size())
            bytes_.append(QByteArray(at + data.size() - bytes_.size(), '\0'));
        bytes_.replace(at, data.size(), data);
    }

    void directory(qsizetype at, const QList<Field>& fields, quint32 next)
    {
        QByteArray dir = number(2, static_cast<quint64>(fields.size()));
        for (const Field& f : fields) {
            dir += number(2, f.tag) + number(2, f.type) + number(4, f.count);
            dir += f.value.leftJustified(4, '\0', true);
        }
        put(at, dir + number(4, next));
    }

    QByteArray jpeg() const
    {
        const qsizetype length = bytes_.size() + 8;
        QByteArray jpeg("\xff\xd8\xff\xe1", 4);
        jpeg += static_cast<char>(length >> 8);
        jpeg += static_cast<char>(length & 0xff);
        return jpeg + QByteArray("Exif\0\0", 6) + bytes_ + QByteArray("\xff\xd9", 2);
    }

private:
    bool little_;
    QByteArray bytes_;
};

TEST(JpegExifSegmentReader, CameraFilesOfBothByteOrdersAgreeWithExiftool)
{
    // Apple: big-endian, APP1 right after the start of image. GPS: little-endian. S2Pro:
    // big-endian behind a JFIF segment, so offsets only work relative to the TIFF header.
    const QStringList names = {QStringLiteral("et-Apple.jpg"), QStringLiteral("et-GPS.jpg"),
                               QStringLiteral("exiv2-fujifilm-finepix-s2pro.jpg")};
    QStringList args = {QStringLiteral("-j"), QStringLiteral("-n"), QStringLiteral("-Make"),
                        QStringLiteral("-Model"), QStringLiteral("-DateTimeOriginal"),
                        QStringLiteral("-IFD0:XResolution"), QStringLiteral("-ResolutionUnit"),
                        QStringLiteral("-ExifVersion")};
    for (const QString& name : names)
        args << test::dataPath(name);
    QProcess exiftool;
    exiftool.start(QStringLiteral("exiftool"), args);
    if (!exiftool.waitForFinished(30000) || exiftool.exitCode() != 0)
        GTEST_SKIP() << "exiftool is not available";
    const QJsonArray expected = QJsonDocument::fromJson(exiftool.readAllStandardOutput()).array();
    ASSERT_EQ(expected.size(), names.size());

    for (qsizetype i = 0; i < names.size(); ++i) {
        SCOPED_TRACE(names[i].toStdString());
        const QJsonObject tags = expected[i].toObject();
        ExifSegmentReaderState state;
        const ExifSegmentReport report = readSample(names[i], state);
        const QStringList& lines = report.lines;
        ASSERT_TRUE(report.error.isEmpty());
        ASSERT_GE(lines.size(), 3);
        EXPECT_EQ(lines[0].toStdString(), "ffd8");
        EXPECT_EQ(lines[1].toStdString(), "457869660000");
        EXPECT_EQ(lines[2].toStdString(),
                  "makeString====" + tags[QStringLiteral("Make")].toString().toStdString());
        EXPECT_EQ(lineStartingWith(lines, QStringLiteral("ModelString====")),
                  tags[QStringLiteral("Model")].toString().toStdString());
        EXPECT_EQ(lineStartingWith(lines, QStringLiteral("DateTimeOriginal====")),
                  tags[QStringLiteral("DateTimeOriginal")].toString().toStdString());
        EXPECT_EQ(lineStartingWith(lines, QStringLiteral("ExifVersion====")),
                  tags[QStringLiteral("ExifVersion")].toVariant().toString().toStdString());
        EXPECT_EQ(lineStartingWith(lines, QStringLiteral("ResolutionUnitString====")),
                  std::to_string(tags[QStringLiteral("ResolutionUnit")].toInt()));
        const QStringList ratio = QString::fromStdString(
            lineStartingWith(lines, QStringLiteral("XResolution====")))
            .split(QLatin1Char('/'));
        ASSERT_EQ(ratio.size(), 2);
        EXPECT_DOUBLE_EQ(ratio[0].toDouble() / ratio[1].toDouble(),
                         tags[QStringLiteral("XResolution")].toDouble());
        EXPECT_FALSE(report.truncated);
    }
}

TEST(JpegExifSegmentReader, GpsPointerLogsItsOffsetAndTheWalkStaysOutOfTheGpsDirectory)
{
    ExifSegmentReaderState state;
    const QStringList lines = readSample(QStringLiteral("et-Apple.jpg"), state).lines;
    // 0x67e, as exiftool -v3 shows the GPSInfo entry; it follows the Exif pointer in IFD0, so
    // it comes after the Exif directory's lines.
    const qsizetype gps = lines.indexOf(QStringLiteral("GPSIFDString====1662"));
    ASSERT_GE(gps, 0);
    EXPECT_GT(gps, lines.indexOf(QStringLiteral("DateTimeOriginal====2016:09:28 18:18:05")));
    // The mismatched formats are kept: MeteringMode 5 and Flash 16.
    EXPECT_TRUE(lines.contains(QStringLiteral("ApertureValue====5")));
    EXPECT_TRUE(lines.contains(QStringLiteral("Flashfired====16")));
    EXPECT_TRUE(lines.contains(QStringLiteral("ComponentsConfiguration====01020300")));
    // After the GPS pointer: the thumbnail directory's resolution, then the scan header.
    EXPECT_EQ(texts(lines.mid(gps + 1)),
              texts({QStringLiteral("XResolution====72/1"), QStringLiteral("YResolution====72/1"),
                     QStringLiteral("ResolutionUnitString====2"), QStringLiteral("000c03010002")}));
}

TEST(JpegExifSegmentReader, EmbeddedThumbnailSetsTheFlagAndTheMainScanEmptiesTheData)
{
    ExifSegmentReaderState state;
    state.theImageData = "pixels";
    readSample(QStringLiteral("et-Apple.jpg"), state);  // its only end of image is the file's end
    EXPECT_FALSE(state.bhasThumImage);
    EXPECT_EQ(state.theImageData, QByteArray("pixels"));

    const QStringList lines =
        readSample(QStringLiteral("exiv2-fujifilm-finepix-s2pro.jpg"), state).lines;
    EXPECT_TRUE(state.bhasThumImage);
    EXPECT_TRUE(state.theImageData.isEmpty());
    EXPECT_EQ(lines.count(QStringLiteral("000c03010002")), 2);  // thumbnail's and main image's

    // The flag is never cleared, so the next file's scan header empties the data again.
    state.theImageData = "pixels";
    readSample(QStringLiteral("et-Apple.jpg"), state);
    EXPECT_TRUE(state.bhasThumImage);
    EXPECT_TRUE(state.theImageData.isEmpty());
}

TEST(JpegExifSegmentReader, NonJpegEmptyMissingAndOversizedFiles)
{
    ExifSegmentReaderState state;
    ExifSegmentReport png = readSample(QStringLiteral("et-PNG.png"), state);
    EXPECT_EQ(texts(png.lines), texts({QStringLiteral("8950"), QStringLiteral("8950")}));
    EXPECT_TRUE(png.error.isEmpty());

    QTemporaryDir dir;
    QFile empty(dir.filePath(QStringLiteral("empty.jpg")));
    ASSERT_TRUE(empty.open(QIODevice::WriteOnly));
    empty.close();
    EXPECT_EQ(texts(ReadExifDataFromPiture(empty.fileName(), state).lines),
              texts({QStringLiteral("0000"), QStringLiteral("0000")}));

    const ExifSegmentReport missing =
        ReadExifDataFromPiture(dir.filePath(QStringLiteral("none.jpg")), state);
    EXPECT_TRUE(missing.lines.isEmpty());
    EXPECT_FALSE(missing.error.isEmpty());
    EXPECT_FALSE(ReadExifDataFromPiture(dir.path(), state).error.isEmpty());

    QFile huge(dir.filePath(QStringLiteral("huge.jpg")));  // sparse: takes no disk space
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly));
    ASSERT_TRUE(huge.resize(kExifSegmentReaderMaxFileSize + 1));
    huge.close();
    const ExifSegmentReport refused = ReadExifDataFromPiture(huge.fileName(), state);
    EXPECT_TRUE(refused.error.contains(QStringLiteral("512 MiB")));
    EXPECT_TRUE(refused.lines.isEmpty());
    EXPECT_FALSE(state.bhasThumImage);
}

TEST(JpegExifSegmentReader, HostileSegmentsEndQuicklyWithTheirReadableTags)
{
    QElapsedTimer timer;
    timer.start();
    ExifSegmentReaderState state;
    // IFD0 at offset 10 rather than 8; exiftool reads XResolution 200 from it.
    const QStringList offset = readSample(QStringLiteral("pil-exif-ifd-offset.jpg"), state).lines;
    EXPECT_TRUE(offset.contains(QStringLiteral("XResolution====2000000/10000")));
    EXPECT_TRUE(offset.contains(QStringLiteral("DateTimeString====2017:03:13 23:03:09")));
    // 48 entries claimed in a 60-byte segment; Flash given as a signed rational.
    EXPECT_EQ(texts(readSample(QStringLiteral("exiv2-1-string-format.jpg"), state).lines),
              texts({QStringLiteral("ffd8"), QStringLiteral("457869660000"),
                     QStringLiteral("Flashfired====-2147483648/-1")}));
    EXPECT_LT(timer.elapsed(), 1000);
}

class BuiltSegment : public ::testing::TestWithParam<bool> {};

TEST_P(BuiltSegment, ValuesDecodeInBothOrdersAndEachDirectoryIsWalkedOnce)
{
    TiffBuilder tiff(GetParam());
    const auto offset = [&](quint32 value) { return tiff.number(4, value); };
    enum : quint16 { Ascii = 2, Short, Long, Rational, Undefined = 7, SRational = 10 };
    tiff.directory(8, {{0x010f, Ascii, 4, QByteArray("abc")},
                       {0x0110, Ascii, 10, offset(0x100)},
                       {0x0112, Short, 1, tiff.number(2, 6)},
                       {0x011a, Rational, 1, offset(0x110)},
                       {0x0128, Short, 2, tiff.number(2, 2) + tiff.number(2, 3)},
                       {0x0131, 99, 1, QByteArray("x")},                // unknown type
                       {0x0132, Ascii, 0x7fffffff, offset(0x100)},      // beyond the segment
                       {0x0133, Ascii, 2, QByteArray("z")},             // not a listed tag
                       {0x8769, Long, 1, offset(0x90)},
                       {0x8825, Long, 1, offset(8)}},
                   8);  // the next directory is IFD0 again
    tiff.directory(0x90, {{0x9000, Undefined, 4, QByteArray("0230")},
                          {0x9101, Undefined, 4, QByteArray("\x01\x02\x03\x00", 4)},
                          {0x9203, SRational, 1, offset(0x118)},
                          {0x8769, Long, 1, offset(8)},  // back to IFD0: not listed here
                          {0x8827, Short, 300, offset(0x120)}},
                   0x90);
    tiff.put(0x100, QByteArray("Model X\0\0\0", 10));
    tiff.put(0x110, tiff.number(4, 300) + tiff.number(4, 1));
    tiff.put(0x118, tiff.number(4, static_cast<quint32>(-183)) + tiff.number(4, 100));
    QStringList iso;
    for (int i = 0; i < 300; ++i) {
        tiff.put(0x120 + 2 * i, tiff.number(2, static_cast<quint64>(i)));
        if (i < 256)
            iso << QString::number(i);
    }

    ExifSegmentReaderState state;
    const ExifSegmentReport report = readExifSegments(tiff.jpeg(), state);
    EXPECT_EQ(texts(report.lines),
              texts({QStringLiteral("ffd8"), QStringLiteral("457869660000"),
                     QStringLiteral("makeString====abc"), QStringLiteral("ModelString====Model X"),
                     QStringLiteral("Orientation====6"), QStringLiteral("XResolution====300/1"),
                     QStringLiteral("ResolutionUnitString====2, 3"),
                     QStringLiteral("ExifVersion====0230"),
                     QStringLiteral("ComponentsConfiguration====01020300"),
                     QStringLiteral("BrightnessValue====-183/100"),
                     QStringLiteral("ISOSpeedRatings====") + iso.join(QStringLiteral(", ")) +
                         QStringLiteral(", ..."),
                     QStringLiteral("GPSIFDString====8")}));
    EXPECT_FALSE(state.bhasThumImage);
}

INSTANTIATE_TEST_SUITE_P(ByteOrder, BuiltSegment, ::testing::Values(false, true),
                         [](const auto& info) {
                             return info.param ? "LittleEndian" : "BigEndian";
                         });

}  // namespace
}  // namespace pelorin

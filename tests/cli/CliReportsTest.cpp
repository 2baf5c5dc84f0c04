// The commands that report rather than rewrite, run through pelorin-cli as a person runs them:
// what they print or export must be what independent readers find in the same files.
#include "CliRunner.h"
#include "ExifTool.h"
#include "QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using pelorin::test::CliRun;

QString dataFile(const char* name) { return QStringLiteral(PELORIN_TEST_DATA_DIR "/") + QString::fromLatin1(name); }

class CliReportsTest : public pelorin::test::CliTestBase {
protected:
    QTemporaryDir out;
};

// A property list as Python's plistlib reads it, as JSON.
QJsonObject plistAsJson(const QString& path)
{
    QProcess python;
    python.start(QStringLiteral("python3"),
                 {QStringLiteral("-c"), QStringLiteral("import json, plistlib, sys; print(json.dumps(plistlib.load(open(sys.argv[1], 'rb'))))"),
                  path});
    if (!python.waitForFinished(30000) || python.exitCode() != 0)
        return {};
    return QJsonDocument::fromJson(python.readAllStandardOutput()).object();
}

// The thumbnail exiftool finds in a JPEG's EXIF, when it is a JPEG of its own (ends in its
// end-of-image marker).
bool hasJpegThumbnail(const QString& path)
{
    QProcess exiftool;
    exiftool.start(QStringLiteral("exiftool"), {QStringLiteral("-b"), QStringLiteral("-ThumbnailImage"), path});
    return exiftool.waitForFinished(30000) && exiftool.readAllStandardOutput().endsWith("\xff\xd9");
}

// exif-segments logs the EXIF of a JPEG (the camera's make and model as exiftool reads them),
// tells an embedded JPEG thumbnail as exiftool finds one, and for a file that is no JPEG logs
// its first two bytes only.
TEST_F(CliReportsTest, ExifSegmentsLogsWhatExiftoolReads)
{
    for (const char* name : {"et-GPS.jpg", "exiv2-nikon-d70.jpg"}) {
        SCOPED_TRACE(name);
        const CliRun run = cli({QStringLiteral("exif-segments"), QStringLiteral("--json"), dataFile(name)});
        ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        const QJsonObject log = QJsonDocument::fromJson(run.out.toUtf8()).object();
        QStringList lines;
        for (const QJsonValue& line : log.value(QStringLiteral("lines")).toArray())
            lines << line.toString();
        EXPECT_EQ(lines.value(0), QStringLiteral("ffd8"));
        EXPECT_TRUE(lines.contains(QStringLiteral("457869660000")));
        EXPECT_EQ(log.value(QStringLiteral("hasThumbnail")).toBool(), hasJpegThumbnail(dataFile(name)));
    }
    const QJsonObject tags = pelorin::test::exiftool(dataFile("et-GPS.jpg"));
    const QString log = cli({QStringLiteral("exif-segments"), dataFile("et-GPS.jpg")}).out;
    EXPECT_TRUE(log.contains(QStringLiteral("\nmakeString====") + tags.value(QStringLiteral("IFD0:Make")).toString() + u'\n')) << log.toStdString();
    EXPECT_TRUE(log.contains(QStringLiteral("\nModelString====") + tags.value(QStringLiteral("IFD0:Model")).toString() + u'\n'));
    const CliRun png = cli({QStringLiteral("exif-segments"), dataFile("exifr-png_exif_gps.png")});
    ASSERT_EQ(png.exitCode, 0) << png.err.toStdString();
    EXPECT_EQ(png.out, QStringLiteral("8950\n8950\n"));
}

// media-metadata export writes one property list that plistlib reads, each song under its name
// with the values exiftool reads in it, and nothing the song does not have.
TEST_F(CliReportsTest, MediaMetadataExportHoldsWhatTheSongsHold)
{
    const QString mp3 = dataFile("et-MP3.mp3");
    const CliRun run = cli({QStringLiteral("media-metadata"), QStringLiteral("export"), QStringLiteral("-o"), out.path(), mp3,
                            dataFile("beets-image.flac")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QJsonObject plist = plistAsJson(out.filePath(QStringLiteral("metadata.plist")));
    ASSERT_EQ(plist.size(), 2) << QJsonDocument(plist).toJson().toStdString();
    const QJsonObject song = plist.value(QStringLiteral("et-MP3.mp3")).toObject();
    const QJsonObject tags = pelorin::test::exiftool(mp3);
    for (const char* name : {"Title", "Artist", "Album"}) {
        const QString field = QString::fromLatin1(name);
        EXPECT_FALSE(tags.value(QStringLiteral("ID3v2_2:") + field).toString().isEmpty()) << name;
        EXPECT_EQ(song.value(field).toString(), tags.value(QStringLiteral("ID3v2_2:") + field).toString()) << name;
    }
    EXPECT_FALSE(plist.value(QStringLiteral("beets-image.flac")).toObject().contains(QStringLiteral("Lyrics")));
}

// The picture exiftool extracts from a file's tags.
QByteArray embeddedPicture(const QString& path)
{
    QProcess exiftool;
    exiftool.start(QStringLiteral("exiftool"), {QStringLiteral("-b"), QStringLiteral("-Picture"), path});
    return exiftool.waitForFinished(30000) ? exiftool.readAllStandardOutput() : QByteArray();
}

// artwork export writes each song's front picture: a JPEG as its bytes stand in the tag, a PNG
// converted to a JPEG of its size.
TEST_F(CliReportsTest, ArtworkExportKeepsAJpegAndConvertsAPng)
{
    const QString flac = dataFile("beets-image.flac");  // a JPEG picture
    const QString mp3 = dataFile("atl-id3v23_utf16_apic.mp3");  // a PNG picture
    const CliRun run = cli({QStringLiteral("artwork"), QStringLiteral("export"), QStringLiteral("-o"), out.path(), flac, mp3});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    QFile jpeg(out.filePath(QStringLiteral("beets-image.flac.jpg")));
    ASSERT_TRUE(jpeg.open(QIODevice::ReadOnly));
    const QByteArray fromTag = embeddedPicture(flac);
    ASSERT_TRUE(fromTag.startsWith("\xff\xd8"));
    EXPECT_EQ(jpeg.readAll(), fromTag);

    const QString png = out.filePath(QStringLiteral("picture.png"));
    QFile extracted(png);
    ASSERT_TRUE(extracted.open(QIODevice::WriteOnly));
    extracted.write(embeddedPicture(mp3));
    extracted.close();
    const QJsonObject source = pelorin::test::exiftool(png);
    const QJsonObject converted = pelorin::test::exiftool(out.filePath(QStringLiteral("atl-id3v23_utf16_apic.mp3.jpg")));
    ASSERT_EQ(source.value(QStringLiteral("File:FileType")).toString(), QStringLiteral("PNG"));
    ASSERT_GT(source.value(QStringLiteral("PNG:ImageWidth")).toInt(), 0);
    EXPECT_EQ(converted.value(QStringLiteral("File:FileType")).toString(), QStringLiteral("JPEG"));
    EXPECT_EQ(converted.value(QStringLiteral("File:ImageWidth")).toInt(), source.value(QStringLiteral("PNG:ImageWidth")).toInt());
    EXPECT_EQ(converted.value(QStringLiteral("File:ImageHeight")).toInt(), source.value(QStringLiteral("PNG:ImageHeight")).toInt());
}

}  // namespace

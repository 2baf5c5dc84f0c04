// pelorin-cli's photo commands on files made by other programs (exiftool, ImageMagick), checked
// with exiftool.
#include "CliRunner.h"
#include "Cr3Samples.h"
#include "ExifTool.h"
#include "ImageMagick.h"
#include "TestPaths.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using pelorin::test::CliRun;
using pelorin::test::exiftoolExtract;
using pelorin::test::exiftool;
using pelorin::test::exiftoolWrite;
using pelorin::test::imageMagick;

class CliPhotoFilesTest : public pelorin::test::CliTestBase {
protected:
    QString path(const QString& name) const { return home.filePath(name); }
    QString made(const QString& name, const QStringList& extra = {}, const QString& size = QStringLiteral("64x48"))
    {
        const QString file = path(name);
        EXPECT_TRUE(imageMagick(QStringList{QStringLiteral("-size"), size, QStringLiteral("gradient:red-blue")}
                                + extra + QStringList{file}));
        return file;
    }
    // The first bytes of a file, as a download or copy that stopped part way leaves it.
    QString cut(const QString& source, qint64 length, const QString& name)
    {
        QFile in(source);
        EXPECT_TRUE(in.open(QIODevice::ReadOnly));
        const QByteArray bytes = in.read(length);
        EXPECT_EQ(bytes.size(), length);
        QFile out(path(name));
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(bytes);
        return out.fileName();
    }
};

TEST_F(CliPhotoFilesTest, GpsValuesNeverGivenAreNotMadeUp)
{
    const QString high = made(QStringLiteral("high.jpg"));
    ASSERT_TRUE(exiftoolWrite(high, {QStringLiteral("-GPSAltitude=520.5"), QStringLiteral("-GPSAltitudeRef=0"),
                                     QStringLiteral("-GPSLatitude=10"), QStringLiteral("-GPSLatitudeRef=N"),
                                     QStringLiteral("-GPSLongitude=20"), QStringLiteral("-GPSLongitudeRef=E")}));
    const QString bare = made(QStringLiteral("bare.jpg"));
    const QString templates = path(QStringLiteral("templates"));
    ASSERT_EQ(cli({QStringLiteral("export-plist"), QStringLiteral("template"), QStringLiteral("--lat"), QStringLiteral("45.5"),
                   QStringLiteral("--lon"), QStringLiteral("-122.6"), QStringLiteral("-o"), templates}).exitCode, 0);
    const QString out = path(QStringLiteral("out"));
    CliRun run = cli({QStringLiteral("import-plist"), QStringLiteral("template"), templates + QStringLiteral("/templatefile.plist"),
                      high, bare, QStringLiteral("-o"), out});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QJsonObject kept = exiftool(out + QStringLiteral("/high.jpg"));
    EXPECT_DOUBLE_EQ(kept.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 45.5);
    EXPECT_EQ(kept.value(QStringLiteral("GPS:GPSLongitudeRef")).toString(), QStringLiteral("W"));
    EXPECT_DOUBLE_EQ(kept.value(QStringLiteral("GPS:GPSAltitude")).toDouble(), 520.5);
    const QJsonObject none = exiftool(out + QStringLiteral("/bare.jpg"));
    EXPECT_DOUBLE_EQ(none.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 45.5);
    EXPECT_FALSE(none.contains(QStringLiteral("GPS:GPSAltitude")));
    for (const QJsonObject& tags : {kept, none}) {
        EXPECT_FALSE(tags.contains(QStringLiteral("GPS:GPSSpeed")));
        EXPECT_FALSE(tags.contains(QStringLiteral("GPS:GPSTrack")));
    }

    // The same for gps set and apply: only what was given is written.
    const QString setOut = path(QStringLiteral("set"));
    run = cli({QStringLiteral("gps"), QStringLiteral("set"), QStringLiteral("--lat"), QStringLiteral("1"), QStringLiteral("--lon"),
               QStringLiteral("2"), QStringLiteral("--alt"), QStringLiteral("3"), bare, QStringLiteral("-o"), setOut});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QJsonObject set = exiftool(setOut + QStringLiteral("/bare.jpg"));
    EXPECT_DOUBLE_EQ(set.value(QStringLiteral("GPS:GPSAltitude")).toDouble(), 3.0);
    EXPECT_FALSE(set.contains(QStringLiteral("GPS:GPSSpeed")));
    EXPECT_FALSE(set.contains(QStringLiteral("GPS:GPSTrack")));
    const QString applyOut = path(QStringLiteral("apply"));
    run = cli({QStringLiteral("apply"), QStringLiteral("--lat"), QStringLiteral("-1"), QStringLiteral("--lon"), QStringLiteral("2"),
               high, bare, QStringLiteral("-o"), applyOut});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QJsonObject applied = exiftool(applyOut + QStringLiteral("/high.jpg"));
    EXPECT_EQ(applied.value(QStringLiteral("GPS:GPSLatitudeRef")).toString(), QStringLiteral("S"));
    EXPECT_DOUBLE_EQ(applied.value(QStringLiteral("GPS:GPSAltitude")).toDouble(), 520.5);
    EXPECT_FALSE(exiftool(applyOut + QStringLiteral("/bare.jpg")).contains(QStringLiteral("GPS:GPSAltitude")));
    for (const QString& name : {QStringLiteral("high.jpg"), QStringLiteral("bare.jpg")}) {
        const QJsonObject tags = exiftool(applyOut + QLatin1Char('/') + name);
        EXPECT_FALSE(tags.contains(QStringLiteral("GPS:GPSSpeed"))) << name.toStdString();
        EXPECT_FALSE(tags.contains(QStringLiteral("GPS:GPSTrack"))) << name.toStdString();
    }
}

TEST_F(CliPhotoFilesTest, TruncatedPhotosAreSkippedByEveryWritingCommand)
{
    // ImageMagick writes the TIFF directory after the pixels, exiftool moves it before them:
    // a cut loses the directory in one and only strips in the other.
    const QString imageMagickTiff = made(QStringLiteral("magick.tif"), {}, QStringLiteral("160x120"));
    const QString exifToolTiff = made(QStringLiteral("exiftool.tif"), {}, QStringLiteral("160x120"));
    ASSERT_TRUE(exiftoolWrite(exifToolTiff, {QStringLiteral("-DateTimeOriginal=2011:02:03 04:05:06")}));
    const QString png = made(QStringLiteral("noise.png"), {QStringLiteral("+noise"), QStringLiteral("Random")},
                             QStringLiteral("160x120"));
    QStringList damaged;
    for (const qint64 length : {100, 1000, 8000, 20000, 40000}) {
        damaged << cut(imageMagickTiff, length, QStringLiteral("magick-%1.tif").arg(length))
                << cut(exifToolTiff, length, QStringLiteral("exiftool-%1.tif").arg(length));
    }
    damaged << cut(QStringLiteral(PELORIN_TEST_DATA_DIR "/exiv2-Reagan_all.jpg"), 30000, QStringLiteral("camera.jpg"))
            << cut(png, QFileInfo(png).size() / 2, QStringLiteral("half.png"))
            << cut(QStringLiteral(PELORIN_TEST_DATA_DIR "/exiv2-iPhoneXR_orient6.heic"), 40000, QStringLiteral("phone.heic"))
            << cut(QStringLiteral(PELORIN_TEST_DATA_DIR "/et-Canon_M50.cr3"), 30000, QStringLiteral("raw.cr3"))
            << QStringLiteral(PELORIN_TEST_DATA_DIR "/ft-Leica_M10_truncated.dng");

    const QString templates = path(QStringLiteral("templates"));
    ASSERT_EQ(cli({QStringLiteral("export-plist"), QStringLiteral("template"), QStringLiteral("--artist"), QStringLiteral("A"),
                   QStringLiteral("-o"), templates}).exitCode, 0);
    const QList<QStringList> commands{
        {QStringLiteral("strip"), QStringLiteral("all")},
        {QStringLiteral("strip"), QStringLiteral("gps")},
        {QStringLiteral("gps"), QStringLiteral("set"), QStringLiteral("--lat"), QStringLiteral("1"), QStringLiteral("--lon"),
         QStringLiteral("2"), QStringLiteral("--alt"), QStringLiteral("3")},
        {QStringLiteral("apply"), QStringLiteral("--artist"), QStringLiteral("B")},
        {QStringLiteral("shift-dates"), QStringLiteral("--by"), QStringLiteral("1d")},
        {QStringLiteral("set-date"), QStringLiteral("--original"), QStringLiteral("2012:01:01 10:00:00")},
        {QStringLiteral("copy-date"), QStringLiteral("name-to-comment")},
        {QStringLiteral("copy-date"), QStringLiteral("created-to-modified")},
        {QStringLiteral("import-plist"), QStringLiteral("template"), templates + QStringLiteral("/templatefile.plist")},
        {QStringLiteral("recompress")},
        {QStringLiteral("stamp")},
    };
    for (const QStringList& command : commands) {
        const QString out = path(QStringLiteral("out-") + command.join(QLatin1Char('-')).left(24).remove(QLatin1Char('/')));
        const CliRun run = cli(command + damaged + QStringList{QStringLiteral("-o"), out});
        SCOPED_TRACE(command.join(QLatin1Char(' ')).toStdString());
        EXPECT_EQ(run.exitCode, 1) << run.err.toStdString();
        for (const QString& file : damaged)
            EXPECT_TRUE(run.err.contains(file + QStringLiteral(": the file is damaged or incomplete"))) << file.toStdString();
        QDirIterator written(out, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        EXPECT_FALSE(written.hasNext()) << written.next().toStdString();
    }

    // The whole files go through, and exiftool reads the pixels' place in the copy.
    const QString out = path(QStringLiteral("whole"));
    const CliRun run = cli({QStringLiteral("strip"), QStringLiteral("all"), imageMagickTiff, exifToolTiff, png, QStringLiteral("-o"), out});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    for (const QString& name : {QStringLiteral("magick.tif"), QStringLiteral("exiftool.tif")}) {
        const QJsonObject tags = exiftool(out + QLatin1Char('/') + name);
        EXPECT_EQ(tags.value(QStringLiteral("IFD0:ImageWidth")).toInt(), 160) << name.toStdString();
        const QJsonValue strips = tags.value(QStringLiteral("IFD0:StripOffsets"));
        const double first = strips.isDouble() ? strips.toDouble() : strips.toString().section(QLatin1Char(' '), 0, 0).toDouble();
        EXPECT_GT(first, 0) << name.toStdString();
    }
}

TEST_F(CliPhotoFilesTest, CanonRawsAreRewrittenThemselvesByEveryMetadataCommand)
{
    const QString source = QStringLiteral(PELORIN_TEST_DATA_DIR "/et-Canon_M50.cr3");
    const QString templates = path(QStringLiteral("templates"));
    ASSERT_EQ(cli({QStringLiteral("export-plist"), QStringLiteral("template"), QStringLiteral("--artist"), QStringLiteral("A"),
                   QStringLiteral("-o"), templates}).exitCode, 0);
    // Each command with a tag exiftool must then read from the rewritten file.
    const QList<std::pair<QStringList, std::pair<QString, QJsonValue>>> commands{
        {{QStringLiteral("strip"), QStringLiteral("gps")}, {QStringLiteral("GPS:GPSVersionID"), QJsonValue(QJsonValue::Undefined)}},
        {{QStringLiteral("strip"), QStringLiteral("all")}, {QStringLiteral("ExifIFD:ExposureTime"), QJsonValue(QJsonValue::Undefined)}},
        {{QStringLiteral("gps"), QStringLiteral("set"), QStringLiteral("--lat"), QStringLiteral("1.5"), QStringLiteral("--lon"),
          QStringLiteral("2"), QStringLiteral("--alt"), QStringLiteral("3")},
         {QStringLiteral("Composite:GPSLatitude"), 1.5}},
        {{QStringLiteral("apply"), QStringLiteral("--artist"), QStringLiteral("B")}, {QStringLiteral("IFD0:Artist"), QStringLiteral("B")}},
        {{QStringLiteral("shift-dates"), QStringLiteral("--by"), QStringLiteral("1d")},
         {QStringLiteral("ExifIFD:DateTimeOriginal"), QStringLiteral("2018:02:22 12:08:56")}},
        {{QStringLiteral("set-date"), QStringLiteral("--original"), QStringLiteral("2012:01:01 10:00:00")},
         {QStringLiteral("ExifIFD:DateTimeOriginal"), QStringLiteral("2012:01:01 10:00:00")}},
        {{QStringLiteral("import-plist"), QStringLiteral("template"), templates + QStringLiteral("/templatefile.plist")},
         {QStringLiteral("IFD0:Artist"), QStringLiteral("A")}},
    };
    const QByteArray raw = exiftoolExtract(source, QStringLiteral("JpgFromRaw"));
    ASSERT_FALSE(raw.isEmpty());
    for (const auto& [command, expected] : commands) {
        SCOPED_TRACE(command.join(QLatin1Char(' ')).toStdString());
        const QString out = path(QStringLiteral("out-") + command.first() + QString::number(qHash(command.join(QString()))));
        const CliRun run = cli(command + QStringList{source, QStringLiteral("-o"), out});
        ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        EXPECT_EQ(QDir(out).entryList(QDir::Files), QStringList{QStringLiteral("et-Canon_M50.cr3")});
        const QString output = out + QStringLiteral("/et-Canon_M50.cr3");
        const QJsonObject tags = exiftool(output);
        EXPECT_EQ(tags.value(QStringLiteral("File:FileType")).toString(), QStringLiteral("CR3"));
        EXPECT_EQ(tags.value(expected.first), expected.second) << expected.first.toStdString();
        EXPECT_EQ(exiftoolExtract(output, QStringLiteral("JpgFromRaw")), raw);
    }
}

// Keys of exiftool's output in one group, or in the PNG group under a name prefix
// ("PNG:Exif" for ImageMagick's "exif:<tag>" text chunks).
QStringList keysStartingWith(const QJsonObject& tags, const QString& prefix)
{
    QStringList keys;
    for (auto it = tags.begin(); it != tags.end(); ++it) {
        if (it.key().startsWith(prefix))
            keys << it.key();
    }
    return keys;
}

TEST_F(CliPhotoFilesTest, RemovalsTakeThePngTextChunksOfTheirGroup)
{
    // ImageMagick keeps the camera's EXIF, IPTC and Photoshop resources and adds a text chunk
    // per EXIF value and its own dates; exiftool adds PNG text and a GPS position.
    const QString png = path(QStringLiteral("camera.png"));
    ASSERT_TRUE(imageMagick({QStringLiteral(PELORIN_TEST_DATA_DIR "/exiv2-Reagan_all.jpg"), QStringLiteral("-resize"),
                             QStringLiteral("120x"), QStringLiteral("-set"), QStringLiteral("comment"), QStringLiteral("hello"),
                             QStringLiteral("-set"), QStringLiteral("Title"), QStringLiteral("Harbour"), QStringLiteral("-set"),
                             QStringLiteral("exif:GPSLatitude"), QStringLiteral("10/1,0/1,0/1"), png}));
    ASSERT_TRUE(exiftoolWrite(png, {QStringLiteral("-PNG:Author=Ann"), QStringLiteral("-PNG:CreationTime=2004:06:21 23:37:53"),
                                    QStringLiteral("-GPSLatitude=10"), QStringLiteral("-GPSLatitudeRef=N")}));
    const QJsonObject before = exiftool(png);
    for (const char* key : {"PNG:Author", "PNG:Comment", "PNG:Title", "PNG:CreationTime", "PNG:Datecreate", "PNG:ExifMake",
                            "PNG:ExifDateTimeOriginal", "PNG:ExifGPSLatitude", "ExifIFD:DateTimeOriginal", "GPS:GPSLatitude",
                            "IPTC:ObjectName", "IFD0:Make"})
        ASSERT_TRUE(before.contains(QLatin1String(key))) << key;

    auto strip = [&](const QString& what) {
        const QString out = path(QStringLiteral("strip-") + what);
        const CliRun run = cli({QStringLiteral("strip"), what, png, QStringLiteral("-o"), out});
        EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
        return exiftool(out + QStringLiteral("/camera.png"));
    };
    const QJsonObject all = strip(QStringLiteral("all"));
    for (const char* key : {"PNG:Author", "PNG:Comment", "PNG:Title", "PNG:CreationTime", "PNG:Datecreate", "PNG:Datemodify",
                            "PNG:ModifyDate"})
        EXPECT_FALSE(all.contains(QLatin1String(key))) << key;
    for (const char* prefix : {"PNG:Exif", "ExifIFD:", "GPS:", "IPTC:", "Photoshop:", "XMP"})
        EXPECT_EQ(keysStartingWith(all, QLatin1String(prefix)), QStringList{}) << prefix;
    EXPECT_EQ(keysStartingWith(all, QStringLiteral("IFD0:")), QStringList{QStringLiteral("IFD0:Orientation")});
    EXPECT_EQ(all.value(QStringLiteral("ICC_Profile:ProfileDescription")).toString(), QStringLiteral("Adobe RGB (1998)"));

    const QJsonObject exif = strip(QStringLiteral("exif"));
    for (const char* key : {"PNG:ExifDateTimeOriginal", "PNG:ExifExposureTime", "PNG:ExifFlashPixVersion", "PNG:CreationTime"})
        EXPECT_FALSE(exif.contains(QLatin1String(key))) << key;
    EXPECT_EQ(keysStartingWith(exif, QStringLiteral("ExifIFD:")), QStringList{});
    for (const char* key : {"PNG:Author", "PNG:ExifMake", "IFD0:Make", "PNG:ExifGPSLatitude", "GPS:GPSLatitude"})
        EXPECT_TRUE(exif.contains(QLatin1String(key))) << key;

    const QJsonObject gps = strip(QStringLiteral("gps"));
    EXPECT_EQ(keysStartingWith(gps, QStringLiteral("GPS:")), QStringList{});
    EXPECT_EQ(keysStartingWith(gps, QStringLiteral("PNG:ExifGPS")), QStringList{});
    EXPECT_TRUE(gps.contains(QStringLiteral("PNG:ExifDateTimeOriginal")));

    const QJsonObject iptc = strip(QStringLiteral("iptc"));
    EXPECT_EQ(keysStartingWith(iptc, QStringLiteral("IPTC:")), QStringList{});
    EXPECT_EQ(keysStartingWith(iptc, QStringLiteral("Photoshop:")), QStringList{});
    EXPECT_TRUE(iptc.contains(QStringLiteral("ExifIFD:DateTimeOriginal")));
}

}  // namespace

namespace {

// apply reads a photo's metadata once, in the engine: it opens the photo as often as info (the
// read) and strip (the rewrite) together, and never to look at the photo on its own first.
TEST_F(CliPhotoFilesTest, ApplyReadsEachPhotoOnce)
{
    for (const char* sample : {"et-GPS.jpg", "exiv2-iPhoneXR_orient6.heic"}) {
        const QString photo = path(QString::fromLatin1(sample));
        ASSERT_TRUE(QFile::copy(pelorin::test::dataPath(QString::fromLatin1(sample)), photo));
        const int read = pelorin::test::opensOf(photo, {QStringLiteral("info"), photo}, home);
        const int rewrite = pelorin::test::opensOf(photo, {QStringLiteral("-o"), path(QStringLiteral("strip")), QStringLiteral("strip"),
                                            QStringLiteral("gps"), photo}, home);
        const int apply = pelorin::test::opensOf(photo, {QStringLiteral("-o"), path(QStringLiteral("apply")), QStringLiteral("apply"),
                                          QStringLiteral("--title"), QStringLiteral("Once"), photo}, home);
        ASSERT_GT(read, 0) << sample;
        ASSERT_GT(rewrite, 0) << sample;
        EXPECT_EQ(apply, read + rewrite) << sample;
    }
}

}  // namespace

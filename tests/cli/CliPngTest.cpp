// pelorin-cli's photo commands on PNGs from ImageMagick, exiftool, ffmpeg and exifr's samples,
// whose image data is copied from the source around the rewritten metadata: the changes read
// back in exiftool, its -validate (chunk checksums included) finds nothing new, and the pixels
// decode as the source's, every frame of an animation included.
#include "CliRunner.h"
#include "ExifTool.h"
#include "TestPaths.h"
#include "ToolRun.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using pelorin::test::exiftool;
using pelorin::test::runs;

// ffmpeg's MD5 of each decoded frame: the pixels as an independent decoder sees them.
QByteArray frameDigests(const QString& png)
{
    QProcess process;
    process.start(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), png,
                                             QStringLiteral("-f"), QStringLiteral("framemd5"), QStringLiteral("-")});
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return {};
    QByteArray digests;
    for (const QByteArray& line : process.readAllStandardOutput().split('\n')) {
        if (!line.startsWith('#'))
            digests += line.split(',').last().trimmed() + '\n';
    }
    return digests;
}

// ImageMagick's count of differing pixels ("0" when the pictures are the same).
QByteArray differingPixels(const QString& a, const QString& b)
{
    QProcess process;
    process.start(QStringLiteral("compare"), {QStringLiteral("-metric"), QStringLiteral("AE"), a, b, QStringLiteral("null:")});
    return process.waitForFinished(60000) ? process.readAllStandardError().trimmed() : QByteArray("compare failed");
}

// exiv2 writes EXIF as a "Raw profile type exif" text, which exiftool calls non-standard.
QStringList newWarnings(const QString& source, const QString& output)
{
    QStringList added = pelorin::test::newValidationWarnings(source, output);
    added.removeAll(QStringLiteral("[minor] Non-standard EXIF in PNG Raw profile type exif chunk"));
    return added;
}

TEST(CliPngTest, StripSetDateAndApplyKeepEveryImageChunkOfThePng)
{
    QTemporaryDir home;
    // ImageMagick: hundreds of IDAT chunks, its date texts after them; exiftool then adds GPS
    // (eXIf), a comment and XMP before them.
    const QString tagged = home.filePath(QStringLiteral("tagged.png"));
    ASSERT_TRUE(runs(QStringLiteral("convert"), {QStringLiteral("-size"), QStringLiteral("900x700"), QStringLiteral("xc:"),
                                                 QStringLiteral("+noise"), QStringLiteral("Random"), QStringLiteral("-depth"),
                                                 QStringLiteral("8"), tagged}));
    const QString converted = home.filePath(QStringLiteral("converted.png"));
    ASSERT_TRUE(QFile::copy(tagged, converted));
    ASSERT_TRUE(pelorin::test::exiftoolWrite(tagged, {QStringLiteral("-GPSLatitude=48.85"), QStringLiteral("-GPSLatitudeRef=N"),
                                                      QStringLiteral("-GPSLongitude=2.29"), QStringLiteral("-GPSLongitudeRef=E"),
                                                      QStringLiteral("-PNG:Comment=kept"), QStringLiteral("-XMP-dc:Title=Noise")}));
    // ffmpeg: an animation, its frames in fcTL and fdAT chunks after the first IDAT.
    const QString animation = home.filePath(QStringLiteral("animation.png"));
    ASSERT_TRUE(runs(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"), QStringLiteral("lavfi"),
                                                QStringLiteral("-i"), QStringLiteral("testsrc=size=160x120:rate=5"), QStringLiteral("-frames:v"),
                                                QStringLiteral("4"), QStringLiteral("-plays"), QStringLiteral("0"), QStringLiteral("-f"),
                                                QStringLiteral("apng"), animation}));
    // exifr's sample: a camera's EXIF with GPS in an eXIf chunk after the image data.
    const QString camera = home.filePath(QStringLiteral("camera.png"));
    ASSERT_TRUE(QFile::copy(pelorin::test::dataPath(QStringLiteral("exifr-png_exif_gps.png")), camera));
    const QStringList sources{tagged, converted, animation, camera};

    const auto run = [&](const QString& folder, const QStringList& command) {
        const pelorin::test::CliRun result =
            pelorin::test::runCli(QStringList{QStringLiteral("-o"), home.filePath(folder)} + command + sources, home);
        EXPECT_EQ(result.exitCode, 0) << result.out.toStdString() << result.err.toStdString();
        for (const QString& source : sources) {
            const QString output = home.filePath(folder + QLatin1Char('/') + QFileInfo(source).fileName());
            SCOPED_TRACE((folder + QLatin1Char(' ') + output).toStdString());
            const QStringList warnings = newWarnings(source, output);
            EXPECT_TRUE(warnings.isEmpty()) << warnings.join(u'\n').toStdString();
            EXPECT_EQ(differingPixels(source, output), "0");
            const QByteArray frames = frameDigests(source);
            EXPECT_FALSE(frames.isEmpty());
            EXPECT_EQ(frameDigests(output), frames);
        }
    };
    const auto tags = [&](const QString& folder, const QString& name) {
        return exiftool(home.filePath(folder + QLatin1Char('/') + name));
    };

    run(QStringLiteral("stripped"), {QStringLiteral("strip"), QStringLiteral("gps")});
    EXPECT_TRUE(pelorin::test::tagsOf(tags(QStringLiteral("stripped"), QStringLiteral("tagged.png")), {QStringLiteral("GPS")}).isEmpty());
    const QJsonObject cameraTags = tags(QStringLiteral("stripped"), QStringLiteral("camera.png"));
    EXPECT_TRUE(pelorin::test::tagsOf(cameraTags, {QStringLiteral("GPS")}).isEmpty());
    EXPECT_EQ(cameraTags.value(QStringLiteral("IFD0:Model")).toString(), QStringLiteral("Canon PowerShot S40"));
    EXPECT_EQ(tags(QStringLiteral("stripped"), QStringLiteral("tagged.png")).value(QStringLiteral("XMP-dc:Title")).toString(),
              QStringLiteral("Noise"));

    run(QStringLiteral("dated"), {QStringLiteral("set-date"), QStringLiteral("--original"), QStringLiteral("2020:01:02 03:04:05")});
    for (const QString& source : sources)
        EXPECT_EQ(tags(QStringLiteral("dated"), QFileInfo(source).fileName()).value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(),
                  QStringLiteral("2020:01:02 03:04:05")) << source.toStdString();

    run(QStringLiteral("applied"), {QStringLiteral("apply"), QStringLiteral("--artist"), QStringLiteral("Ann Example"),
                                    QStringLiteral("--lat"), QStringLiteral("-22.95"), QStringLiteral("--lon"), QStringLiteral("-43.21")});
    for (const QString& source : sources) {
        const QJsonObject applied = tags(QStringLiteral("applied"), QFileInfo(source).fileName());
        EXPECT_EQ(applied.value(QStringLiteral("IFD0:Artist")).toString(), QStringLiteral("Ann Example")) << source.toStdString();
        EXPECT_NEAR(applied.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 22.95, 1e-6) << source.toStdString();
    }
}

}  // namespace

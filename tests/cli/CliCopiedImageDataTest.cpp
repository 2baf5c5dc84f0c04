// pelorin-cli's photo commands on PNGs and WebPs from ImageMagick, exiftool, ffmpeg and others'
// samples, whose image data is copied from the source around the rewritten metadata: the changes
// read back in exiftool, its -validate (PNG chunk checksums included) finds nothing new, and the
// pixels decode as the source's, every frame of an animation included.
#include "CliRunner.h"
#include "ExifTool.h"
#include "TestPaths.h"
#include "ToolRun.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

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

// ImageMagick's signature of each frame's decoded pixels.
QByteArray pixelSignatures(const QString& picture)
{
    QProcess process;
    process.start(QStringLiteral("identify"), {QStringLiteral("-format"), QStringLiteral("%#\\n"), picture});
    return process.waitForFinished(60000) && process.exitCode() == 0 ? process.readAllStandardOutput() : QByteArray();
}

// exiv2 writes EXIF into a PNG as a "Raw profile type exif" text, which exiftool calls non-standard.
QStringList newWarnings(const QString& source, const QString& output)
{
    QStringList added = pelorin::test::newValidationWarnings(source, output);
    added.removeAll(QStringLiteral("[minor] Non-standard EXIF in PNG Raw profile type exif chunk"));
    return added;
}

// Runs each command over the sources into its own folder and checks every output's structure
// and pixels; `frames` decodes the pixels of a file, frame by frame.
using Decoder = QByteArray (*)(const QString&);
void runEachCommand(const QTemporaryDir& home, const QStringList& sources, Decoder frames,
                    const std::function<void(const QString& folder)>& checkValues)
{
    const QList<std::pair<QString, QStringList>> commands{
        {QStringLiteral("stripped"), {QStringLiteral("strip"), QStringLiteral("gps")}},
        {QStringLiteral("dated"), {QStringLiteral("set-date"), QStringLiteral("--original"), QStringLiteral("2020:01:02 03:04:05")}},
        {QStringLiteral("applied"), {QStringLiteral("apply"), QStringLiteral("--artist"), QStringLiteral("Ann Example"),
                                     QStringLiteral("--lat"), QStringLiteral("-22.95"), QStringLiteral("--lon"), QStringLiteral("-43.21")}}};
    for (const auto& [folder, command] : commands) {
        const pelorin::test::CliRun result =
            pelorin::test::runCli(QStringList{QStringLiteral("-o"), home.filePath(folder)} + command + sources, home);
        EXPECT_EQ(result.exitCode, 0) << result.out.toStdString() << result.err.toStdString();
        for (const QString& source : sources) {
            const QString output = home.filePath(folder + QLatin1Char('/') + QFileInfo(source).fileName());
            SCOPED_TRACE(output.toStdString());
            const QStringList warnings = newWarnings(source, output);
            EXPECT_TRUE(warnings.isEmpty()) << warnings.join(u'\n').toStdString();
            const QByteArray decoded = frames(source);
            EXPECT_FALSE(decoded.isEmpty());
            EXPECT_EQ(frames(output), decoded);
        }
        checkValues(folder);
    }
}

// The values each command wrote, as exiftool reads them from every output.
void expectCommandValues(const QTemporaryDir& home, const QString& folder, const QStringList& sources)
{
    for (const QString& source : sources) {
        const QJsonObject tags = exiftool(home.filePath(folder + QLatin1Char('/') + QFileInfo(source).fileName()));
        SCOPED_TRACE((folder + QLatin1Char(' ') + source).toStdString());
        if (folder == QLatin1String("stripped")) {
            EXPECT_TRUE(pelorin::test::tagsOf(tags, {QStringLiteral("GPS")}).isEmpty());
        } else if (folder == QLatin1String("dated")) {
            EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("2020:01:02 03:04:05"));
        } else {
            EXPECT_EQ(tags.value(QStringLiteral("IFD0:Artist")).toString(), QStringLiteral("Ann Example"));
            EXPECT_NEAR(tags.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 22.95, 1e-6);
        }
    }
}

TEST(CliCopiedImageDataTest, StripSetDateAndApplyKeepEveryImageChunkOfThePng)
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

    runEachCommand(home, sources, frameDigests, [&](const QString& folder) {
        expectCommandValues(home, folder, sources);
        if (folder != QLatin1String("stripped"))
            return;
        const QJsonObject cameraTags = exiftool(home.filePath(QStringLiteral("stripped/camera.png")));
        EXPECT_EQ(cameraTags.value(QStringLiteral("IFD0:Model")).toString(), QStringLiteral("Canon PowerShot S40"));
        EXPECT_EQ(exiftool(home.filePath(QStringLiteral("stripped/tagged.png"))).value(QStringLiteral("XMP-dc:Title")).toString(),
                  QStringLiteral("Noise"));
    });
}

// WebPs from ImageMagick (lossy, lossless, with alpha), ffmpeg (an animation), exiftool's and a
// phone's samples (VP8X with ICC, EXIF with GPS and XMP after the image chunk).
TEST(CliCopiedImageDataTest, StripSetDateAndApplyKeepEveryImageChunkOfTheWebP)
{
    QTemporaryDir home;
    QStringList sources;
    const auto make = [&](const QString& name, const QStringList& args) {
        sources << home.filePath(name);
        return runs(QStringLiteral("convert"), args + QStringList{sources.last()});
    };
    ASSERT_TRUE(make(QStringLiteral("lossy.webp"), {QStringLiteral("-size"), QStringLiteral("600x400"), QStringLiteral("xc:"),
                                                    QStringLiteral("+noise"), QStringLiteral("Random"), QStringLiteral("-quality"), QStringLiteral("90")}));
    ASSERT_TRUE(make(QStringLiteral("lossless.webp"), {QStringLiteral("-size"), QStringLiteral("300x200"), QStringLiteral("xc:"),
                                                       QStringLiteral("+noise"), QStringLiteral("Random"), QStringLiteral("-define"),
                                                       QStringLiteral("webp:lossless=true")}));
    ASSERT_TRUE(make(QStringLiteral("alpha.webp"), {QStringLiteral("-size"), QStringLiteral("300x200"), QStringLiteral("gradient:red-blue"),
                                                    QStringLiteral("-alpha"), QStringLiteral("set"), QStringLiteral("-channel"), QStringLiteral("A"),
                                                    QStringLiteral("-evaluate"), QStringLiteral("set"), QStringLiteral("50%")}));
    sources << home.filePath(QStringLiteral("animation.webp"));
    ASSERT_TRUE(runs(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"), QStringLiteral("lavfi"),
                                                QStringLiteral("-i"), QStringLiteral("testsrc=size=160x120:rate=5"), QStringLiteral("-frames:v"),
                                                QStringLiteral("4"), QStringLiteral("-loop"), QStringLiteral("0"), sources.last()}));
    ASSERT_TRUE(pelorin::test::exiftoolWrite(sources.first(), {QStringLiteral("-GPSLatitude=48.85"), QStringLiteral("-GPSLatitudeRef=N"),
                                                               QStringLiteral("-XMP-dc:Title=Noise")}));
    for (const char* name : {"et-RIFF.webp", "mde-HTC_Desire.webp"}) {
        sources << home.filePath(QString::fromLatin1(name));
        ASSERT_TRUE(QFile::copy(pelorin::test::dataPath(QString::fromLatin1(name)), sources.last()));
        QFile::setPermissions(sources.last(), QFile::ReadOwner | QFile::WriteOwner);
    }
    runEachCommand(home, sources, pixelSignatures, [&](const QString& folder) {
        expectCommandValues(home, folder, sources);
        if (folder == QLatin1String("stripped")) {
            EXPECT_EQ(exiftool(home.filePath(QStringLiteral("stripped/lossy.webp"))).value(QStringLiteral("XMP-dc:Title")).toString(),
                      QStringLiteral("Noise"));
        }
    });
}

}  // namespace

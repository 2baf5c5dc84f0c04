// The cheap ones of the limits that scripts/limits measures at full size: a 4,000-byte path,
// a 20 MB ID3 tag, photos past the megapixels the default image reader allows and past the
// re-encoding limit. Inputs are made by ffmpeg, exiftool, sox, lame and mutagen; exiftool and
// mutagen read the outputs.
#include "ToolRun.h"
#include "CliRunner.h"
#include "ExifTool.h"
#include "TestPaths.h"

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
using pelorin::test::dataPath;
using pelorin::test::exiftool;
using pelorin::test::exiftoolWrite;

using pelorin::test::runs;

QString python(const QString& script, const QStringList& args)
{
    QProcess process;
    process.start(QStringLiteral("/usr/bin/python3"), QStringList{QStringLiteral("-c"), script} + args);
    process.waitForFinished(120000);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

class CliLimitsTest : public ::testing::Test {
protected:
    CliRun cli(QStringList args, const QString& output)
    {
        args << QStringLiteral("--output") << output << QStringLiteral("--json");
        const CliRun run = pelorin::test::runCli(args, home, 180000);
        EXPECT_TRUE(run.finished);
        return run;
    }
    QString path(const QString& relative) const { return home.filePath(relative); }
    static QJsonObject result(const CliRun& run) { return QJsonDocument::fromJson(run.out.toUtf8()).object(); }
    // A flat grey JPEG of the given size with a real camera's EXIF, made by ffmpeg and exiftool.
    QString ffmpegPhoto(const QString& name, int width, int height)
    {
        const QString photo = path(name);
        EXPECT_TRUE(runs(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y"),
                                                    QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                                                    QStringLiteral("color=c=gray:s=%1x%2").arg(width).arg(height),
                                                    QStringLiteral("-frames:v"), QStringLiteral("1"), photo}));
        EXPECT_TRUE(exiftoolWrite(photo, {QStringLiteral("-tagsFromFile"), dataPath(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg")),
                                          QStringLiteral("-exif:all")}));
        return photo;
    }
    QTemporaryDir home;
};

TEST_F(CliLimitsTest, SourceAndOutputFourThousandBytesDeep)
{
    QString deep = home.path();
    const QString segment(200, QLatin1Char('d'));
    while (deep.size() < 3780)
        deep += QLatin1Char('/') + segment;
    deep += QLatin1Char('/') + QString(3990 - deep.size() - 1, QLatin1Char('e'));
    ASSERT_EQ(deep.size(), 3990);
    ASSERT_TRUE(QDir().mkpath(deep + QStringLiteral("/out")));
    const QString photo = deep + QStringLiteral("/photo.jpg");
    ASSERT_TRUE(QFile::copy(dataPath(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg")), photo));

    const CliRun run = cli({QStringLiteral("strip"), QStringLiteral("gps"), photo}, deep + QStringLiteral("/out"));
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QString output = deep + QStringLiteral("/out/photo.jpg");
    EXPECT_EQ(result(run)[QStringLiteral("written")].toArray(), QJsonArray{output});
    const QJsonObject tags = exiftool(output);
    EXPECT_EQ(tags[QStringLiteral("IFD0:Make")].toString(), QStringLiteral("Canon"));
    EXPECT_FALSE(tags.contains(QStringLiteral("GPS:GPSLatitude")));

    const CliRun info = cli({QStringLiteral("info"), photo}, deep + QStringLiteral("/out"));
    EXPECT_EQ(info.exitCode, 0) << info.err.toStdString();
    const QJsonArray rows = QJsonDocument::fromJson(info.out.toUtf8()).array();
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows.at(0)[QStringLiteral("file")].toString(), photo);
}

TEST_F(CliLimitsTest, TwentyMegabyteId3TagIsKeptWhenOneFieldChanges)
{
    const QString wav = path(QStringLiteral("tone.wav"));
    const QString song = path(QStringLiteral("big-tag.mp3"));
    ASSERT_TRUE(runs(QStringLiteral("sox"), {QStringLiteral("-n"), QStringLiteral("-r"), QStringLiteral("44100"), QStringLiteral("-c"),
                                             QStringLiteral("1"), wav, QStringLiteral("synth"), QStringLiteral("1"),
                                             QStringLiteral("sine"), QStringLiteral("440")}));
    ASSERT_TRUE(runs(QStringLiteral("lame"), {QStringLiteral("--quiet"), wav, song}));
    const QString describe = QStringLiteral(
        "import sys, hashlib, mutagen.id3 as m\n"
        "t = m.ID3(sys.argv[1])\n"
        "print(t['TIT2'].text[0], len(t.getall('GEOB')[0].data), hashlib.sha1(t.getall('GEOB')[0].data).hexdigest())\n");
    python(QStringLiteral("import os, sys, mutagen.id3 as m\n"
                          "t = m.ID3(); t.add(m.TIT2(encoding=3, text='Before'))\n"
                          "t.add(m.GEOB(encoding=3, mime='application/octet-stream', filename='b', desc='blob',"
                          " data=os.urandom(20 * 1024 * 1024)))\n"
                          "t.save(sys.argv[1])\n"),
           {song});
    const QString before = python(describe, {song});
    ASSERT_TRUE(before.startsWith(QStringLiteral("Before 20971520 "))) << before.toStdString();

    const QString out = path(QStringLiteral("out"));
    const CliRun run = cli({QStringLiteral("tags"), QStringLiteral("set"), QStringLiteral("--title"), QStringLiteral("After"), song}, out);
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(python(describe, {out + QStringLiteral("/big-tag.mp3")}),
              QString(before).replace(QStringLiteral("Before"), QStringLiteral("After")));
}

TEST_F(CliLimitsTest, LargePhotosAreRecompressedUpToTheLimitAndRefusedPastIt)
{
    // 72 megapixels: past the 256 MB that Qt's image reader allows by default.
    const QString large = ffmpegPhoto(QStringLiteral("large.jpg"), 9600, 7500);
    const QString out = path(QStringLiteral("out"));
    const CliRun run = cli({QStringLiteral("recompress"), large}, out);
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString() << run.out.toStdString();
    const QJsonObject tags = exiftool(out + QStringLiteral("/large_date.jpg"));
    EXPECT_EQ(tags[QStringLiteral("File:ImageWidth")].toInt(), 9600);
    EXPECT_EQ(tags[QStringLiteral("File:ImageHeight")].toInt(), 7500);
    EXPECT_EQ(tags[QStringLiteral("IFD0:Make")].toString(), QStringLiteral("Canon"));

    // 120 megapixels: refused with the reason, by recompress and by the date stamp alike.
    const QString huge = ffmpegPhoto(QStringLiteral("huge.jpg"), 12000, 10000);
    for (const QString& command : {QStringLiteral("recompress"), QStringLiteral("stamp")}) {
        const CliRun refused = cli({command, huge}, out);
        EXPECT_EQ(refused.exitCode, 1) << command.toStdString();
        const QJsonArray skipped = result(refused)[QStringLiteral("skipped")].toArray();
        ASSERT_EQ(skipped.size(), 1) << command.toStdString() << refused.out.toStdString();
        EXPECT_EQ(skipped.at(0)[QStringLiteral("reason")].toString(),
                  QStringLiteral("the picture is too large to be re-encoded (12000 x 10000 pixels, 120 megapixels; "
                                 "the limit is 110)"));
    }
    EXPECT_FALSE(QFileInfo::exists(out + QStringLiteral("/huge_date.jpg")));
}

}  // namespace

// Outputs and option values of the command line, on files made by exiftool, ffmpeg, lame and
// mutagen and read back by exiftool and mutagen.
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

using pelorin::test::runs;

QString mutagen(const QString& script, const QString& path)
{
    QProcess process;
    process.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-c"), script, path});
    process.waitForFinished(60000);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

class CliOutputsTest : public ::testing::Test {
protected:
    CliRun cli(QStringList args)
    {
        args << QStringLiteral("--output") << out() << QStringLiteral("--json");
        const CliRun run = pelorin::test::runCli(args, home, 60000);
        EXPECT_TRUE(run.finished);
        return run;
    }
    QString out() const { return home.filePath(QStringLiteral("out")); }
    QString in(const QString& relative) const
    {
        const QString path = home.filePath(QStringLiteral("in/") + relative);
        QDir().mkpath(QFileInfo(path).absolutePath());
        return path;
    }
    QString copyIn(const QString& sample, const QString& relative) const
    {
        const QString path = in(relative);
        EXPECT_TRUE(QFile::copy(dataPath(sample), path));
        return path;
    }
    static QStringList written(const CliRun& run)
    {
        QStringList paths;
        for (const QJsonValue& v : QJsonDocument::fromJson(run.out.toUtf8()).object()[QStringLiteral("written")].toArray())
            paths << v.toString();
        return paths;
    }
    QStringList outputFiles() const
    {
        return QDir(out()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    // A short tone made by lame, tagged by mutagen (ID3v2.4, TRCK "3/12").
    QString lameMp3(const QString& relative, const QString& title) const
    {
        const QString wav = in(relative + QStringLiteral(".wav"));
        const QString mp3 = in(relative);
        EXPECT_TRUE(runs(QStringLiteral("sox"), {QStringLiteral("-n"), QStringLiteral("-r"), QStringLiteral("44100"),
                                               QStringLiteral("-c"), QStringLiteral("1"), wav, QStringLiteral("synth"),
                                               QStringLiteral("0.3"), QStringLiteral("sine"), QStringLiteral("440")}));
        EXPECT_TRUE(runs(QStringLiteral("lame"), {QStringLiteral("--quiet"), wav, mp3}));
        QFile::remove(wav);
        mutagen(QStringLiteral("import sys, mutagen.id3 as m\n"
                               "t = m.ID3(); t.add(m.TIT2(encoding=3, text='%1')); t.add(m.TRCK(encoding=3, text='3/12'))\n"
                               "t.save(sys.argv[1])\n").arg(title),
                mp3);
        return mp3;
    }
    QTemporaryDir home;
};

const char* const kTitleAndTrack =
    "import sys, mutagen.id3 as m\nt = m.ID3(sys.argv[1])\nprint(t['TIT2'].text[0], t['TRCK'].text[0])\n";

TEST_F(CliOutputsTest, SameNamedPhotosOfOneBatchGetNumberedNames)
{
    // Two different exiftool-tagged JPEGs named alike, stripped in one (parallel) batch.
    const QString a = copyIn(QStringLiteral("et-GPS.jpg"), QStringLiteral("a/photo.jpg"));
    const QString b = copyIn(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"), QStringLiteral("b/photo.jpg"));
    const QString makeA = exiftool(a)[QStringLiteral("IFD0:Make")].toString();
    const QString makeB = exiftool(b)[QStringLiteral("IFD0:Make")].toString();
    ASSERT_NE(makeA, makeB);

    CliRun run = cli({QStringLiteral("strip"), QStringLiteral("gps"), a, b});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString() << run.out.toStdString();
    EXPECT_EQ(written(run), (QStringList{out() + QStringLiteral("/photo.jpg"), out() + QStringLiteral("/photo-2.jpg")}));
    EXPECT_EQ(outputFiles(), (QStringList{QStringLiteral("photo-2.jpg"), QStringLiteral("photo.jpg")}));
    const QJsonObject first = exiftool(out() + QStringLiteral("/photo.jpg"));
    const QJsonObject second = exiftool(out() + QStringLiteral("/photo-2.jpg"));
    EXPECT_EQ(first[QStringLiteral("IFD0:Make")].toString(), makeA);
    EXPECT_EQ(second[QStringLiteral("IFD0:Make")].toString(), makeB);
    EXPECT_TRUE(pelorin::test::tagsOf(first, {QStringLiteral("GPS")}).isEmpty());
    EXPECT_TRUE(pelorin::test::tagsOf(second, {QStringLiteral("GPS")}).isEmpty());

    // A later command may replace the earlier outputs, as always; its own stay apart. Date copies
    // run in parallel through another batch.
    run = cli({QStringLiteral("copy-date"), QStringLiteral("name-to-comment"), b, a});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(written(run), (QStringList{out() + QStringLiteral("/photo.jpg"), out() + QStringLiteral("/photo-3.jpg")}));
    const QJsonObject copiedB = exiftool(out() + QStringLiteral("/photo.jpg"));
    const QJsonObject copiedA = exiftool(out() + QStringLiteral("/photo-3.jpg"));
    EXPECT_EQ(copiedB[QStringLiteral("IFD0:Make")].toString(), makeB);
    EXPECT_EQ(copiedA[QStringLiteral("IFD0:Make")].toString(), makeA);
    EXPECT_EQ(copiedA[QStringLiteral("ExifIFD:UserComment")].toString(), QStringLiteral("photo"));
}

TEST_F(CliOutputsTest, RecompressedPhotosOfDifferentKindsDoNotShareTheirJpegName)
{
    // PNG and TIFF made by ffmpeg, the PNG sample from exiftool: all become photo_date.jpg.
    const QString png = in(QStringLiteral("photo.png"));
    const QString tif = in(QStringLiteral("photo.tif"));
    const QString jpg = in(QStringLiteral("x/photo.png"));
    ASSERT_TRUE(runs(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"),
                                               QStringLiteral("lavfi"), QStringLiteral("-i"),
                                               QStringLiteral("testsrc=size=64x48"), QStringLiteral("-frames:v"),
                                               QStringLiteral("1"), png}));
    ASSERT_TRUE(runs(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"),
                                               QStringLiteral("lavfi"), QStringLiteral("-i"),
                                               QStringLiteral("testsrc=size=80x60"), QStringLiteral("-frames:v"),
                                               QStringLiteral("1"), tif}));
    ASSERT_TRUE(QFile::copy(dataPath(QStringLiteral("et-PNG.png")), jpg));

    const CliRun run = cli({QStringLiteral("recompress"), png, tif, jpg});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QStringList paths = written(run);
    ASSERT_EQ(paths.size(), 3) << run.out.toStdString();
    EXPECT_EQ(paths, (QStringList{out() + QStringLiteral("/photo_date.jpg"), out() + QStringLiteral("/photo_date-2.jpg"),
                                  out() + QStringLiteral("/photo_date-3.jpg")}));
    EXPECT_EQ(outputFiles().size(), 3);
    EXPECT_EQ(exiftool(paths[0])[QStringLiteral("File:ImageWidth")].toInt(), 64);
    EXPECT_EQ(exiftool(paths[1])[QStringLiteral("File:ImageWidth")].toInt(), 80);
    EXPECT_EQ(exiftool(paths[2])[QStringLiteral("File:FileType")].toString(), QStringLiteral("JPEG"));
}

TEST_F(CliOutputsTest, SameNamedSongsOfOneBatchGetNumberedNames)
{
    const QString a = lameMp3(QStringLiteral("a/song.mp3"), QStringLiteral("first"));
    const QString b = lameMp3(QStringLiteral("b/song.mp3"), QStringLiteral("second"));
    CliRun run = cli({QStringLiteral("tags"), QStringLiteral("set"), QStringLiteral("--album"), QStringLiteral("Both"), a, b});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(written(run), (QStringList{out() + QStringLiteral("/song.mp3"), out() + QStringLiteral("/song-2.mp3")}));
    EXPECT_EQ(mutagen(kTitleAndTrack, out() + QStringLiteral("/song.mp3")), QStringLiteral("first 3/12"));
    EXPECT_EQ(mutagen(kTitleAndTrack, out() + QStringLiteral("/song-2.mp3")), QStringLiteral("second 3/12"));

    run = cli({QStringLiteral("tags"), QStringLiteral("remove"), a, b});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(written(run), (QStringList{out() + QStringLiteral("/song.mp3"), out() + QStringLiteral("/song-3.mp3")}));

    // Artwork exports of same-named songs (pictures added by mutagen) stay apart too.
    for (const QString& song : {a, b})
        mutagen(QStringLiteral("import sys, base64, mutagen.id3 as m\n"
                               "png = base64.b64decode('iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAIAAACQd1PeAAAADElEQVR4nGP4z8AAAAMBAQDJ/pLvAAAAAElFTkSuQmCC')\n"
                               "t = m.ID3(sys.argv[1]); t.add(m.APIC(encoding=3, mime='image/png', type=3, data=png)); t.save()\n"),
                song);
    run = cli({QStringLiteral("artwork"), QStringLiteral("export"), a, b});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(written(run), (QStringList{out() + QStringLiteral("/song.mp3.jpg"), out() + QStringLiteral("/song.mp3-2.jpg")}));
    EXPECT_EQ(exiftool(out() + QStringLiteral("/song.mp3-2.jpg"))[QStringLiteral("File:FileType")].toString(), QStringLiteral("JPEG"));
}

TEST_F(CliOutputsTest, SameNamedMoviesOfOneBatchGetNumberedNames)
{
    // Two ffmpeg movies of different lengths with the same name; ffprobe tells the copies apart.
    QStringList movies;
    for (const auto& [folder, seconds] : {std::pair{QStringLiteral("a"), QStringLiteral("1")},
                                          std::pair{QStringLiteral("b"), QStringLiteral("2")}}) {
        movies << in(folder + QStringLiteral("/clip.mp4"));
        ASSERT_TRUE(runs(QStringLiteral("ffmpeg"),
                         {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"), QStringLiteral("lavfi"),
                          QStringLiteral("-i"), QStringLiteral("testsrc=size=32x32:rate=10:duration=") + seconds,
                          QStringLiteral("-metadata"), QStringLiteral("creation_time=2021-05-01T10:00:00Z"), movies.last()}));
    }
    const CliRun run = cli({QStringLiteral("video"), QStringLiteral("remove"), movies[0], movies[1]});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString() << run.out.toStdString();
    EXPECT_EQ(written(run), (QStringList{out() + QStringLiteral("/clip.mp4"), out() + QStringLiteral("/clip-2.mp4")}));
    auto duration = [](const QString& path) {
        QProcess probe;
        probe.start(QStringLiteral("ffprobe"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
                                                QStringLiteral("format=duration"), QStringLiteral("-of"),
                                                QStringLiteral("csv=p=0"), path});
        probe.waitForFinished(60000);
        return qRound(QString::fromUtf8(probe.readAllStandardOutput()).trimmed().toDouble());
    };
    EXPECT_EQ(duration(out() + QStringLiteral("/clip.mp4")), 1);
    EXPECT_EQ(duration(out() + QStringLiteral("/clip-2.mp4")), 2);
}

TEST_F(CliOutputsTest, TruncatedMp3IsNeverWrittenAsAnEmptyFile)
{
    // mutagen's tag with a large picture, cut inside the tag: no audio frame is left.
    const QString song = lameMp3(QStringLiteral("song.mp3"), QStringLiteral("cut"));
    mutagen(QStringLiteral("import sys, mutagen.id3 as m\n"
                           "t = m.ID3(sys.argv[1]); t.add(m.APIC(encoding=3, mime='image/png', type=3, data=b'x' * 20000))\n"
                           "t.save(sys.argv[1])\n"),
            song);
    QFile file(song);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.resize(12000));
    file.close();

    for (const QStringList& args : {QStringList{QStringLiteral("tags"), QStringLiteral("remove"), song},
                                    QStringList{QStringLiteral("tags"), QStringLiteral("set"), QStringLiteral("--title"),
                                                QStringLiteral("x"), song}}) {
        const CliRun run = cli(args);
        EXPECT_NE(run.exitCode, 0) << args.join(QLatin1Char(' ')).toStdString();
        EXPECT_TRUE(written(run).isEmpty()) << run.out.toStdString();
        EXPECT_TRUE(outputFiles().isEmpty()) << outputFiles().join(QLatin1Char(' ')).toStdString();
    }
}

TEST_F(CliOutputsTest, MalformedAndOutOfRangeValuesAreUsageErrors)
{
    const QString song = lameMp3(QStringLiteral("song.mp3"), QStringLiteral("t"));
    const QString photo = copyIn(QStringLiteral("et-GPS.jpg"), QStringLiteral("photo.jpg"));
    const QString movie = copyIn(QStringLiteral("ft-lavf.m4v"), QStringLiteral("clip.m4v"));
    struct Case {
        QStringList args;
        QString named;    // the value the message must repeat
        QString allowed;  // and a part of the allowed range
    };
    const QString lat = QStringLiteral("--lat"), lon = QStringLiteral("--lon"), alt = QStringLiteral("--alt");
    const Case cases[] = {
        {{QStringLiteral("tags"), QStringLiteral("set"), QStringLiteral("--created-date"),
          QStringLiteral("2020-13-45 99:99:99"), song}, QStringLiteral("2020-13-45 99:99:99"), QStringLiteral("YYYY-MM-DD HH:MM:SS")},
        {{QStringLiteral("tags"), QStringLiteral("set"), QStringLiteral("--track"), QStringLiteral("seven"), song},
         QStringLiteral("seven"), QStringLiteral("1 to 65535")},
        {{QStringLiteral("tags"), QStringLiteral("set"), QStringLiteral("--track"), QStringLiteral("13/12"), song},
         QStringLiteral("13/12"), QStringLiteral("NUMBER <= TOTAL")},
        {{QStringLiteral("tags"), QStringLiteral("set"), QStringLiteral("--year"), QStringLiteral("20x0"), song},
         QStringLiteral("20x0"), QStringLiteral("YYYY")},
        {{QStringLiteral("gps"), QStringLiteral("set"), lat, QStringLiteral("91"), lon, QStringLiteral("10"), alt,
          QStringLiteral("5"), photo}, QStringLiteral("91"), QStringLiteral("-90 to 90")},
        {{QStringLiteral("gps"), QStringLiteral("set"), lat, QStringLiteral("abc"), lon, QStringLiteral("10"), alt,
          QStringLiteral("5"), photo}, QStringLiteral("abc"), QStringLiteral("-90 to 90")},
        {{QStringLiteral("gps"), QStringLiteral("set"), lat, QStringLiteral("10"), lon, QStringLiteral("-180.5"), alt,
          QStringLiteral("5"), photo}, QStringLiteral("-180.5"), QStringLiteral("-180 to 180")},
        {{QStringLiteral("gps"), QStringLiteral("set"), lat, QStringLiteral("10"), lon, QStringLiteral("10"), alt,
          QStringLiteral("nan"), photo}, QStringLiteral("nan"), QStringLiteral("metres")},
        {{QStringLiteral("gps"), QStringLiteral("set"), lat, QStringLiteral("10"), lon, QStringLiteral("10"), alt,
          QStringLiteral("5"), QStringLiteral("--time"), QStringLiteral("25:00:00"), photo}, QStringLiteral("25:00:00"),
         QStringLiteral("HH:MM:SS")},
        {{QStringLiteral("apply"), QStringLiteral("--lat=91"), photo}, QStringLiteral("91"), QStringLiteral("-90 to 90")},
        {{QStringLiteral("apply"), QStringLiteral("--camera-date"), QStringLiteral("2020:02:30 10:00:00"), photo},
         QStringLiteral("2020:02:30 10:00:00"), QStringLiteral("YYYY:MM:DD HH:MM:SS")},
        {{QStringLiteral("apply"), QStringLiteral("--gps-date"), QStringLiteral("2020:13:01"), photo},
         QStringLiteral("2020:13:01"), QStringLiteral("YYYY:MM:DD")},
        {{QStringLiteral("set-date"), QStringLiteral("--original"), QStringLiteral("2020-13-45 99:99:99"), photo},
         QStringLiteral("2020-13-45 99:99:99"), QStringLiteral("YYYY:MM:DD HH:MM:SS")},
        {{QStringLiteral("set-date"), QStringLiteral("--original"), QStringLiteral("2020:01:01 10:00:00"),
          QStringLiteral("--digitized"), QStringLiteral("yesterday"), photo}, QStringLiteral("yesterday"),
         QStringLiteral("YYYY:MM:DD HH:MM:SS")},
        {{QStringLiteral("shift-dates"), QStringLiteral("--to"), QStringLiteral("2021:04:31 10:00:00"), photo},
         QStringLiteral("2021:04:31 10:00:00"), QStringLiteral("YYYY:MM:DD HH:MM:SS")},
        {{QStringLiteral("video"), QStringLiteral("set"), lat, QStringLiteral("91"), lon, QStringLiteral("10"), movie},
         QStringLiteral("91"), QStringLiteral("-90 to 90")},
        {{QStringLiteral("video"), QStringLiteral("set"), QStringLiteral("--created-date"), QStringLiteral("2020-13-45"), movie},
         QStringLiteral("2020-13-45"), QStringLiteral("YYYY-MM-DD HH:MM:SS")},
    };
    for (const Case& c : cases) {
        const CliRun run = cli(c.args);
        const std::string label = c.args.join(QLatin1Char(' ')).toStdString();
        EXPECT_EQ(run.exitCode, 2) << label << "\n" << run.err.toStdString();
        EXPECT_TRUE(run.err.contains(QLatin1Char('\'') + c.named + QLatin1Char('\''))) << label << "\n" << run.err.toStdString();
        EXPECT_TRUE(run.err.contains(c.allowed)) << label << "\n" << run.err.toStdString();
        EXPECT_FALSE(run.err.contains(QStringLiteral("Vaule"))) << label;
        EXPECT_TRUE(outputFiles().isEmpty()) << label;
    }

    // Values at the ends of their ranges are taken, and written as given (exiftool reads them).
    CliRun run = cli({QStringLiteral("gps"), QStringLiteral("set"), lat, QStringLiteral("-90"), lon,
                      QStringLiteral("180"), alt, QStringLiteral("-12"), photo});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QJsonObject gps = exiftool(out() + QStringLiteral("/photo.jpg"));
    EXPECT_DOUBLE_EQ(gps[QStringLiteral("GPS:GPSLatitude")].toDouble(), 90);
    EXPECT_EQ(gps[QStringLiteral("GPS:GPSLatitudeRef")].toString(), QStringLiteral("S"));
    run = cli({QStringLiteral("tags"), QStringLiteral("set"), QStringLiteral("--track"), QStringLiteral("12/12"),
               QStringLiteral("--created-date"), QStringLiteral("2020-02-29 23:59:59"), song});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(mutagen(kTitleAndTrack, out() + QStringLiteral("/song.mp3")), QStringLiteral("t 12/12"));
}

}  // namespace

// pelorin-cli's photo commands on files made by other programs (exiftool, ImageMagick), checked
// with exiftool.
#include "CliRunner.h"
#include "ExifTool.h"
#include "ImageMagick.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using pelorin::test::CliRun;
using pelorin::test::exiftool;
using pelorin::test::exiftoolWrite;
using pelorin::test::imageMagick;

class CliPhotoFilesTest : public ::testing::Test {
protected:
    CliRun cli(const QStringList& args)
    {
        const CliRun run = pelorin::test::runCli(args, home, 60000);
        EXPECT_TRUE(run.finished);
        return run;
    }
    QString path(const QString& name) const { return home.filePath(name); }
    QString made(const QString& name, const QStringList& extra = {})
    {
        const QString file = path(name);
        EXPECT_TRUE(imageMagick(QStringList{QStringLiteral("-size"), QStringLiteral("64x48"),
                                            QStringLiteral("gradient:red-blue")}
                                + extra + QStringList{file}));
        return file;
    }
    QTemporaryDir home;
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

}  // namespace

// pelorin-cli's photo commands on HEIC files from a phone: written in the file, no sidecar.
#include "CliRunner.h"
#include "ExifTool.h"
#include "TestPaths.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using pelorin::test::exiftool;

TEST(CliHeifTest, RemovalDatesAndLocationAreWrittenIntoTheHeic)
{
    QTemporaryDir home;
    const QString source = home.filePath(QStringLiteral("IMG_1929.heic"));
    ASSERT_TRUE(QFile::copy(pelorin::test::dataPath(QStringLiteral("exiv2-iPhoneXR_orient6.heic")), source));
    auto run = [&](const QString& folder, const QStringList& args) {
        const pelorin::test::CliRun result =
            pelorin::test::runCli(QStringList{QStringLiteral("-o"), home.filePath(folder)} + args + QStringList{source}, home);
        EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
        EXPECT_TRUE(QDir(home.filePath(folder)).entryList({QStringLiteral("*.xmp")}).isEmpty());
        return exiftool(home.filePath(folder + QStringLiteral("/IMG_1929.heic")));
    };
    const QJsonObject stripped = run(QStringLiteral("strip"), {QStringLiteral("strip"), QStringLiteral("gps")});
    EXPECT_TRUE(pelorin::test::tagsOf(stripped, {QStringLiteral("GPS")}).isEmpty());
    EXPECT_EQ(stripped.value(QStringLiteral("IFD0:Model")).toString(), QStringLiteral("iPhone XR"));

    const QJsonObject dated = run(QStringLiteral("dated"), {QStringLiteral("set-date"), QStringLiteral("--original"),
                                                             QStringLiteral("2020:01:02 03:04:05")});
    EXPECT_EQ(dated.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("2020:01:02 03:04:05"));
    EXPECT_EQ(dated.value(QStringLiteral("ExifIFD:CreateDate")).toString(), QStringLiteral("2020:01:02 03:04:05"));

    const QJsonObject shifted = run(QStringLiteral("shifted"), {QStringLiteral("shift-dates"), QStringLiteral("--by"), QStringLiteral("1d")});
    EXPECT_EQ(shifted.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("2021:02:14 11:03:31"));
    EXPECT_EQ(shifted.value(QStringLiteral("ExifIFD:CreateDate")).toString(), QStringLiteral("2021:02:14 11:03:31"));

    const QJsonObject located = run(QStringLiteral("located"), {QStringLiteral("gps"), QStringLiteral("set"), QStringLiteral("--lat"),
                                                                 QStringLiteral("-22.95"), QStringLiteral("--lon"), QStringLiteral("-43.21"),
                                                                 QStringLiteral("--alt"), QStringLiteral("30")});
    EXPECT_NEAR(located.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 22.95, 1e-6);
    EXPECT_EQ(located.value(QStringLiteral("GPS:GPSLatitudeRef")).toString(), QStringLiteral("S"));
    EXPECT_NEAR(located.value(QStringLiteral("GPS:GPSAltitude")).toDouble(), 30.0, 1e-6);

    const pelorin::test::CliRun info = pelorin::test::runCli({QStringLiteral("info"), home.filePath(QStringLiteral("located/IMG_1929.heic"))}, home);
    EXPECT_TRUE(info.out.contains(QStringLiteral("22.95"))) << info.out.toStdString();
}

}  // namespace

#include "CliRunner.h"
#include "ExifTool.h"
#include "ScopedTimeZone.h"
#include "QtPrinters.h"
#include "cli/CliApp.h"
#include "cli/CliFamilies.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using pelorin::test::CliRun;

// Runs pelorin-cli with a home of its own, so the user's preferences are never touched.
class CliTest : public pelorin::test::CliTestBase {};

TEST_F(CliTest, KindsNamesEachExtensionsKindAndPositions)
{
    const CliRun run = cli({QStringLiteral("kinds"), QStringLiteral("jpg"), QStringLiteral("JPG"),
                         QStringLiteral("mp4"), QStringLiteral("m4a"), QStringLiteral("heic"),
                         QStringLiteral("hevc"), QStringLiteral("ts"), QStringLiteral("ts.bak"),
                         QStringLiteral("CR2")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QStringList lines = run.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 9);
    const QStringList kinds = {QStringLiteral("image"), QStringLiteral("image"), QStringLiteral("video"),
                               QStringLiteral("audio"), QStringLiteral("image"), QStringLiteral("video"),
                               QStringLiteral("video"), QStringLiteral("none"), QStringLiteral("image+raw")};
    for (qsizetype i = 0; i < lines.size(); ++i)
        EXPECT_EQ(lines[i].split(QLatin1Char('\t')).value(1), kinds[i]) << lines[i].toStdString();
    EXPECT_EQ(lines[0], QStringLiteral("jpg\timage\timage 66"));
    EXPECT_EQ(lines[5], QStringLiteral("hevc\tvideo\tvideo 0"));
    EXPECT_EQ(lines[7], QStringLiteral("ts.bak\tnone"));
    EXPECT_EQ(lines[8], QStringLiteral("CR2\timage+raw\timage 26, raw 1"));
}

TEST_F(CliTest, GlobalOptionsWorkBeforeAndAfterTheCommand)
{
    for (const QStringList& args :
         {QStringList{QStringLiteral("--json"), QStringLiteral("kinds"), QStringLiteral("CR2")},
          QStringList{QStringLiteral("kinds"), QStringLiteral("CR2"), QStringLiteral("--json")},
          QStringList{QStringLiteral("kinds"), QStringLiteral("--output"), home.path(),
                      QStringLiteral("--json"), QStringLiteral("CR2")}}) {
        const CliRun run = cli(args);
        ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        const QJsonArray rows = QJsonDocument::fromJson(run.out.toUtf8()).array();
        ASSERT_EQ(rows.size(), 1) << run.out.toStdString();
        const QJsonObject row = rows[0].toObject();
        EXPECT_EQ(row[QStringLiteral("extension")].toString(), QStringLiteral("CR2"));
        EXPECT_EQ(row[QStringLiteral("kinds")].toArray().size(), 2);
        EXPECT_EQ(row[QStringLiteral("positions")].toObject()[QStringLiteral("raw")].toInt(), 1);
    }
}

// The launcher sends the photo commands to the program that holds only them: its list and that
// program's commands must be the same, and the full program must hold every command.
TEST(CliFamilies, ThePhotoProgramHoldsExactlyTheCommandsTheLauncherSendsIt)
{
    QStringList listed;
    for (const std::string_view name : pelorin::cli::kPhotoFamilyCommands)
        listed << QString::fromLatin1(name.data(), qsizetype(name.size()));
    QStringList photo = pelorin::cli::makePhotoCliApp()->commandNames();
    listed.sort();
    photo.sort();
    EXPECT_EQ(photo, listed);
    const QStringList all = pelorin::cli::makeCliApp()->commandNames();
    for (const QString& name : photo)
        EXPECT_TRUE(all.contains(name)) << name.toStdString();
    // prefs, recompress, stamp, thumbnail; artwork, camera, media-metadata, tags, video
    EXPECT_EQ(all.size(), photo.size() + 9);
}

// Each command reaches a program that holds it: the launcher sends a painting command to the
// full program (the photo program has no GUI library to paint with) and help lists them all.
TEST_F(CliTest, TheLauncherStartsEveryCommandInAProgramThatHoldsIt)
{
    const QStringList names = pelorin::cli::makeCliApp()->commandNames();
    const CliRun help = cli({QStringLiteral("--help")});
    for (const QString& name : names) {
        EXPECT_TRUE(help.out.contains(QStringLiteral("\n  ") + name + QLatin1Char(' '))) << name.toStdString();
        const CliRun run = cli({name, QStringLiteral("--help")});
        EXPECT_EQ(run.exitCode, 0) << name.toStdString() << run.err.toStdString();
        EXPECT_TRUE(run.out.contains(QStringLiteral("pelorin-cli ") + name)) << name.toStdString();
    }

    // The painting commands do their work through the launcher; exiftool reads what they wrote.
    const QString photo = QStringLiteral(PELORIN_TEST_DATA_DIR "/et-GPS.jpg");
    QTemporaryDir out;
    const QString thumbnail = out.filePath(QStringLiteral("thumb.png"));
    CliRun run = cli({QStringLiteral("thumbnail"), QStringLiteral("--size"), QStringLiteral("60"), QStringLiteral("--out"), thumbnail, photo});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    QJsonObject tags = pelorin::test::exiftool(thumbnail);
    EXPECT_EQ(tags.value(QStringLiteral("File:FileType")).toString(), QStringLiteral("PNG"));
    EXPECT_EQ(std::max(tags.value(QStringLiteral("PNG:ImageWidth")).toInt(), tags.value(QStringLiteral("PNG:ImageHeight")).toInt()), 60);
    for (const QString& command : {QStringLiteral("stamp"), QStringLiteral("recompress")}) {
        run = cli({command, QStringLiteral("--json"), QStringLiteral("-o"), out.path(), photo});
        ASSERT_EQ(run.exitCode, 0) << command.toStdString() << run.err.toStdString();
    }
    tags = pelorin::test::exiftool(out.filePath(QStringLiteral("et-GPS_date.jpg")));
    EXPECT_EQ(tags.value(QStringLiteral("File:FileType")).toString(), QStringLiteral("JPEG"));
    EXPECT_TRUE(tags.contains(QStringLiteral("ExifIFD:DateTimeOriginal")));
}

TEST_F(CliTest, UsageErrorsExitWithTwo)
{
    EXPECT_EQ(cli({}).exitCode, 2);
    EXPECT_EQ(cli({QStringLiteral("frobnicate")}).exitCode, 2);
    EXPECT_EQ(cli({QStringLiteral("kinds")}).exitCode, 2);
    EXPECT_EQ(cli({QStringLiteral("kinds"), QStringLiteral("jpg"), QStringLiteral("--output")}).exitCode, 2);
    EXPECT_EQ(cli({QStringLiteral("prefs"), QStringLiteral("set"), QStringLiteral("fontsize")}).exitCode, 2);
    const CliRun help = cli({QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains(QStringLiteral("kinds")));
    EXPECT_TRUE(cli({QStringLiteral("prefs"), QStringLiteral("--help")}).out.contains(QStringLiteral("Postion")));
    EXPECT_TRUE(cli({QStringLiteral("--version")}).out.startsWith(QStringLiteral("pelorin-cli ")));
}

TEST_F(CliTest, PrefsShowsDefaultsAndStoresCheckedValues)
{
    CliRun run = cli({QStringLiteral("--json"), QStringLiteral("prefs")});
    ASSERT_EQ(run.exitCode, 0);
    QJsonObject prefs = QJsonDocument::fromJson(run.out.toUtf8()).object();
    EXPECT_TRUE(prefs[QStringLiteral("storagePath")].toString().endsWith(
        QStringLiteral("/com.Quorvane.mediametadata")));
    EXPECT_EQ(prefs[QStringLiteral("fontsize")].toInt(), 14);

    const QString store = home.filePath(QStringLiteral("my store/out"));
    ASSERT_EQ(cli({QStringLiteral("prefs"), QStringLiteral("set"), QStringLiteral("storagePath"), store}).exitCode, 0);
    EXPECT_TRUE(QFileInfo(store).isDir());
    ASSERT_EQ(cli({QStringLiteral("prefs"), QStringLiteral("set"), QStringLiteral("Postion"),
                   QStringLiteral("upper right CORNER")}).exitCode, 0);
    run = cli({QStringLiteral("prefs"), QStringLiteral("set"), QStringLiteral("Dateformat"), QStringLiteral("someday")});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(run.err.contains(QStringLiteral("MM/DD/YYYY HH:MM")));

    prefs = QJsonDocument::fromJson(cli({QStringLiteral("prefs"), QStringLiteral("--json")}).out.toUtf8()).object();
    EXPECT_EQ(prefs[QStringLiteral("storagePath")].toString(), store);
    EXPECT_EQ(prefs[QStringLiteral("Postion")].toString(), QStringLiteral("Upper right corner"));
    EXPECT_EQ(prefs[QStringLiteral("Dateformat")].toString(), QStringLiteral("MM/DD/YYYY HH:MM"));
}

TEST_F(CliTest, InfoAndStripWorkOnRealPhotos)
{
    const QString photo = QStringLiteral(PELORIN_TEST_DATA_DIR "/et-GPS.jpg");
    CliRun run = cli({QStringLiteral("info"), QStringLiteral("--json"), photo, home.filePath(QStringLiteral("missing.jpg"))});
    EXPECT_EQ(run.exitCode, 1);  // one file could not be read
    const QJsonArray rows = QJsonDocument::fromJson(run.out.toUtf8()).array();
    ASSERT_EQ(rows.size(), 2);
    const QJsonObject gps = rows[0].toObject()[QStringLiteral("properties")].toObject()[QStringLiteral("{GPS}")].toObject();
    EXPECT_EQ(gps[QStringLiteral("LatitudeRef")].toString(), QStringLiteral("N"));
    EXPECT_EQ(rows[0].toObject()[QStringLiteral("editorFields")].toObject()[QStringLiteral("GPS longitude")].toString().left(6),
              QStringLiteral("-1.914"));
    EXPECT_FALSE(rows[1].toObject()[QStringLiteral("error")].toString().isEmpty());

    run = cli({QStringLiteral("info"), QStringLiteral("--plist"), photo});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(run.out.contains(QStringLiteral("<key>{GPS}</key>")));

    const QString out = home.filePath(QStringLiteral("out"));
    run = cli({QStringLiteral("strip"), QStringLiteral("gps"), photo, QStringLiteral("--output"), out});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out.trimmed(), out + QStringLiteral("/et-GPS.jpg"));
    run = cli({QStringLiteral("info"), QStringLiteral("--json"), out + QStringLiteral("/et-GPS.jpg")});
    const QJsonObject props = QJsonDocument::fromJson(run.out.toUtf8()).array()[0].toObject()[QStringLiteral("properties")].toObject();
    EXPECT_FALSE(props.contains(QStringLiteral("{GPS}")));
    EXPECT_TRUE(props.contains(QStringLiteral("{IPTC}")));
    EXPECT_EQ(cli({QStringLiteral("strip"), QStringLiteral("everything"), photo}).exitCode, 2);

    // A dry run says what would change and leaves the disk as it was.
    const QString dry = home.filePath(QStringLiteral("dry"));
    run = cli({QStringLiteral("--dry-run"), QStringLiteral("strip"), QStringLiteral("gps"), photo, QStringLiteral("-o"), dry});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(run.out.contains(QStringLiteral("{GPS}"))) << run.out.toStdString();
    EXPECT_FALSE(QFileInfo::exists(dry));
}

TEST_F(CliTest, DateGpsAndPropertyListCommandsWriteIntoTheOutputFolder)
{
    const QString photo = QStringLiteral(PELORIN_TEST_DATA_DIR "/et-GPS.jpg");
    const QString out = home.filePath(QStringLiteral("out"));
    auto json = [&](const QString& file) {
        return QJsonDocument::fromJson(cli({QStringLiteral("info"), QStringLiteral("--json"), file}).out.toUtf8())
            .array()[0].toObject()[QStringLiteral("properties")].toObject();
    };

    CliRun run = cli({QStringLiteral("shift-dates"), QStringLiteral("--by"), QStringLiteral("1d 2h"), photo, QStringLiteral("-o"), out});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(json(out + QStringLiteral("/et-GPS.jpg"))[QStringLiteral("{Exif}")].toObject()[QStringLiteral("DateTimeOriginal")].toString(),
              QStringLiteral("2002:07:14 17:58:28"));
    EXPECT_EQ(cli({QStringLiteral("shift-dates"), QStringLiteral("--by"), QStringLiteral("3 fortnights"), photo}).exitCode, 2);

    run = cli({QStringLiteral("gps"), QStringLiteral("set"), QStringLiteral("--lat"), QStringLiteral("-33.45"), QStringLiteral("--lon"),
               QStringLiteral("-70.66"), QStringLiteral("--alt"), QStringLiteral("-5"), photo, QStringLiteral("-o"), out});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QJsonObject gps = json(out + QStringLiteral("/et-GPS.jpg"))[QStringLiteral("{GPS}")].toObject();
    EXPECT_EQ(gps[QStringLiteral("LatitudeRef")].toString(), QStringLiteral("S"));
    EXPECT_EQ(gps[QStringLiteral("AltitudeRef")].toInt(), 1);
    EXPECT_EQ(cli({QStringLiteral("gps"), QStringLiteral("set"), QStringLiteral("--lat"), QStringLiteral("95"), QStringLiteral("--lon"),
                   QStringLiteral("1"), QStringLiteral("--alt"), QStringLiteral("1"), photo, QStringLiteral("-o"), out}).exitCode, 2);

    ASSERT_EQ(cli({QStringLiteral("export-plist"), QStringLiteral("tiff"), photo, QStringLiteral("-o"), out}).exitCode, 0);
    const QString plist = out + QStringLiteral("/ExportTiffInfo.plist");
    EXPECT_TRUE(QFileInfo::exists(plist));
    const QString other = home.filePath(QStringLiteral("other.jpg"));
    QFile::copy(QStringLiteral(PELORIN_TEST_DATA_DIR "/exiv2-FurnaceCreekInn_gps.jpg"), other);
    run = cli({QStringLiteral("--dry-run"), QStringLiteral("import-plist"), QStringLiteral("tiff"), plist, other,
               QStringLiteral("-o"), home.filePath(QStringLiteral("dry"))});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(run.out.contains(QStringLiteral("{TIFF}/Make"))) << run.out.toStdString();
    EXPECT_FALSE(QFileInfo::exists(home.filePath(QStringLiteral("dry"))));
    ASSERT_EQ(cli({QStringLiteral("import-plist"), QStringLiteral("tiff"), plist, other, QStringLiteral("-o"), out}).exitCode, 0);
    EXPECT_EQ(json(out + QStringLiteral("/other.jpg"))[QStringLiteral("{TIFF}")].toObject()[QStringLiteral("Make")].toString(),
              QStringLiteral("FUJIFILM"));
}

TEST_F(CliTest, AudioAndMovieCommandsReadAndWrite)
{
    const QString out = home.filePath(QStringLiteral("out"));
    const QString mp3 = QStringLiteral(PELORIN_TEST_DATA_DIR "/atl-id3v23_utf16_apic.mp3");
    CliRun run = cli({QStringLiteral("tags"), QStringLiteral("set"), QStringLiteral("--title"), QStringLiteral("New Title"),
                      mp3, QStringLiteral("-o"), out});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    run = cli({QStringLiteral("tags"), QStringLiteral("show"), QStringLiteral("--json"), out + QStringLiteral("/atl-id3v23_utf16_apic.mp3")});
    const QJsonObject tags = QJsonDocument::fromJson(run.out.toUtf8()).array()[0].toObject();
    EXPECT_EQ(tags[QStringLiteral("fields")].toObject()[QStringLiteral("title")].toString(), QStringLiteral("New Title"));
    EXPECT_EQ(tags[QStringLiteral("fields")].toObject()[QStringLiteral("album")].toString(), QStringLiteral("Papa\u058Drules"));
    EXPECT_TRUE(tags[QStringLiteral("hasArtwork")].toBool());

    const QString mov = QStringLiteral(PELORIN_TEST_DATA_DIR "/ft-MacBook_keys.mov");
    run = cli({QStringLiteral("video"), QStringLiteral("set"), QStringLiteral("--title"), QStringLiteral("Holiday"), mov,
               QStringLiteral("-o"), out});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    run = cli({QStringLiteral("video"), QStringLiteral("show"), QStringLiteral("--json"), out + QStringLiteral("/ft-MacBook_keys.mov")});
    const QJsonObject fields = QJsonDocument::fromJson(run.out.toUtf8()).array()[0].toObject()[QStringLiteral("fields")].toObject();
    EXPECT_EQ(fields[QStringLiteral("fileTitle")].toString(), QStringLiteral("Holiday"));
    EXPECT_EQ(fields[QStringLiteral("fileMake")].toString(), QStringLiteral("Apple"));  // the other items stay
    EXPECT_EQ(cli({QStringLiteral("video"), QStringLiteral("show"), home.filePath(QStringLiteral("none.mov"))}).exitCode, 1);
}

TEST_F(CliTest, MovieShootDatesInTheSpringGapAreWrittenAndBadOnesRefused)
{
    const pelorin::test::ScopedTimeZone berlin("Europe/Berlin");
    const QString out = home.filePath(QStringLiteral("out"));
    const QString mov = QStringLiteral(PELORIN_TEST_DATA_DIR "/ft-MacBook_keys.mov");
    CliRun run = cli({QStringLiteral("video"), QStringLiteral("set"), QStringLiteral("--shoot-date"),
                      QStringLiteral("2021-02-30 10:00:00"), mov, QStringLiteral("-o"), out});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_FALSE(QFileInfo::exists(out + QStringLiteral("/ft-MacBook_keys.mov")));

    run = cli({QStringLiteral("video"), QStringLiteral("set"), QStringLiteral("--shoot-date"),
               QStringLiteral("2021-03-28 02:30:00"), mov, QStringLiteral("-o"), out});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    run = cli({QStringLiteral("video"), QStringLiteral("show"), QStringLiteral("--json"), out + QStringLiteral("/ft-MacBook_keys.mov")});
    const QJsonObject movie = QJsonDocument::fromJson(run.out.toUtf8()).array()[0].toObject();
    QString creationDate;
    for (const QJsonValue item : movie[QStringLiteral("items")].toArray()) {
        if (item[QStringLiteral("identifier")] == QStringLiteral("mdta/com.apple.quicktime.creationdate"))
            creationDate = item[QStringLiteral("value")].toString();
    }
    EXPECT_EQ(creationDate, QStringLiteral("2021-03-28T02:30:00+0200"));
}

}  // namespace

#include "CliRunner.h"
#include "TestPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using pelorin::test::CliRun;

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Runs pelorin-cli camera against a folder served as a camera, with a home of its own so the
// user's preferences are never touched.
class CameraCliTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir(cameraDir.path()).mkpath(QStringLiteral("sub")));
        ASSERT_TRUE(QFile::copy(pelorin::test::dataPath(QStringLiteral("exiv2-nikon-d70.jpg")), onCamera("a.jpg")));
        ASSERT_TRUE(QFile::copy(pelorin::test::dataPath(QStringLiteral("ft-imovie.mp4")), onCamera("c.mp4")));
        ASSERT_TRUE(QFile::copy(pelorin::test::dataPath(QStringLiteral("et-GPS.jpg")), onCamera("sub/b.jpg")));
        ASSERT_TRUE(QFile::copy(pelorin::test::dataPath(QStringLiteral("et-GPS.jpg")), onCamera("sub/a.jpg")));
        QFile notes(onCamera("notes.txt"));
        ASSERT_TRUE(notes.open(QIODevice::WriteOnly) && notes.write("text\n") > 0);
    }

    CliRun camera(QStringList args)
    {
        args.prepend(QStringLiteral("camera"));
        const CliRun run = pelorin::test::runCli(args, home);
        EXPECT_TRUE(run.finished);
        return run;
    }

    QString port() const { return QStringLiteral("--port=disk:") + cameraDir.path(); }
    QString onCamera(const char* relative) const { return cameraDir.filePath(QString::fromLatin1(relative)); }
    QString output(const char* name) const { return outDir.filePath(QString::fromLatin1(name)); }

    QTemporaryDir home;
    QTemporaryDir cameraDir;
    QTemporaryDir outDir;
};

TEST_F(CameraCliTest, ListAndFilesNameTheCameraAndItsPhotosAndMovies)
{
    CliRun run = camera({QStringLiteral("list"), port()});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, QStringLiteral("Directory Browse\tdisk:%1\n").arg(cameraDir.path()));
    EXPECT_TRUE(run.err.isEmpty()) << run.err.toStdString();

    run = camera({QStringLiteral("files"), port()});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, QStringLiteral("/a.jpg\t44129\n/c.mp4\t55490\n/sub/a.jpg\t2133\n/sub/b.jpg\t2133\n"));
    EXPECT_TRUE(run.err.isEmpty()) << run.err.toStdString();

    run = camera({QStringLiteral("files"), port(), QStringLiteral("--json")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QJsonArray rows = QJsonDocument::fromJson(run.out.toUtf8()).array();
    ASSERT_EQ(rows.size(), 4);
    EXPECT_EQ(rows[2].toObject()[QStringLiteral("folder")].toString(), QStringLiteral("/sub"));
    EXPECT_EQ(rows[2].toObject()[QStringLiteral("size")].toInt(), 2133);
    EXPECT_FALSE(rows[2].toObject()[QStringLiteral("modified")].toString().isEmpty());
}

TEST_F(CameraCliTest, DownloadKeepsTheBytesAndEditPrintsThePaths)
{
    CliRun run = camera({QStringLiteral("download"), port(), QStringLiteral("--output"), outDir.path(),
                         QStringLiteral("c.mp4"), QStringLiteral("sub/b.jpg")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(run.err.isEmpty()) << run.err.toStdString();
    EXPECT_EQ(readAll(output("c.mp4")), readAll(onCamera("c.mp4")));
    EXPECT_EQ(readAll(output("b.jpg")), readAll(onCamera("sub/b.jpg")));

    run = camera({QStringLiteral("download"), QStringLiteral("--edit"), port(), QStringLiteral("-o"), outDir.path(),
                  QStringLiteral("/a.jpg")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, output("a.jpg") + QLatin1Char('\n'));
    EXPECT_EQ(readAll(output("a.jpg")), readAll(onCamera("a.jpg")));
    EXPECT_TRUE(run.err.isEmpty()) << run.err.toStdString();
}

TEST_F(CameraCliTest, DownloadReportsMissingAndAmbiguousNames)
{
    const CliRun run = camera({QStringLiteral("download"), port(), QStringLiteral("-o"), outDir.path(), QStringLiteral("--json"),
                               QStringLiteral("a.jpg"), QStringLiteral("none.jpg"), QStringLiteral("c.mp4")});
    EXPECT_EQ(run.exitCode, 1);
    const QJsonObject result = QJsonDocument::fromJson(run.out.toUtf8()).object();
    EXPECT_EQ(result[QStringLiteral("written")].toArray(), QJsonArray({output("c.mp4")}));
    const QJsonArray skipped = result[QStringLiteral("skipped")].toArray();
    ASSERT_EQ(skipped.size(), 2) << run.out.toStdString();
    EXPECT_TRUE(skipped[0].toObject()[QStringLiteral("reason")].toString().contains(QStringLiteral("/sub/a.jpg")));
    EXPECT_EQ(skipped[1].toObject()[QStringLiteral("path")].toString(), QStringLiteral("/none.jpg"));
    EXPECT_FALSE(QFileInfo::exists(output("a.jpg")));
    EXPECT_FALSE(QFileInfo::exists(output("none.jpg")));
}

TEST_F(CameraCliTest, DeleteRemovesFromTheCamera)
{
    CliRun run = camera({QStringLiteral("delete"), port(), QStringLiteral("--dry-run"), QStringLiteral("c.mp4")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(QFileInfo::exists(onCamera("c.mp4")));

    run = camera({QStringLiteral("delete"), port(), QStringLiteral("c.mp4"), QStringLiteral("/sub/b.jpg"),
                  QStringLiteral("/sub/zzz.jpg")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, QStringLiteral("/c.mp4\n/sub/b.jpg\n"));
    EXPECT_TRUE(run.err.startsWith(QStringLiteral("skipped /sub/zzz.jpg: "))) << run.err.toStdString();
    EXPECT_FALSE(QFileInfo::exists(onCamera("c.mp4")));
    EXPECT_FALSE(QFileInfo::exists(onCamera("sub/b.jpg")));
    EXPECT_TRUE(QFileInfo::exists(onCamera("a.jpg")));
}

TEST_F(CameraCliTest, UsageErrorsExitWithTwo)
{
    EXPECT_EQ(camera({}).exitCode, 2);
    EXPECT_EQ(camera({QStringLiteral("frobnicate"), port()}).exitCode, 2);
    EXPECT_EQ(camera({QStringLiteral("download"), port()}).exitCode, 2);
    EXPECT_EQ(camera({QStringLiteral("files"), port(), QStringLiteral("--camera"), QStringLiteral("X")}).exitCode, 2);
    // No hardware here: with no camera named, the message says what could be chosen.
    const CliRun run = camera({QStringLiteral("files")});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(run.err.contains(QStringLiteral("--port disk:/folder"))) << run.err.toStdString();
    EXPECT_EQ(camera({QStringLiteral("files"), QStringLiteral("--port=disk:/no/such/folder")}).exitCode, 1);
    EXPECT_EQ(camera({QStringLiteral("--help")}).exitCode, 0);
}

}  // namespace

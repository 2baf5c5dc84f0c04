// `tags set` as a person runs it: how often it opens each song, and Ctrl-C in a long batch.
#include "CliRunner.h"
#include "TestPaths.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QThread>

#include <csignal>

using namespace pelorin;

namespace {

class CliTagsTest : public test::CliTestBase {
protected:
    QTemporaryDir work;
    QString copyOfSample(const QString& name, const QString& as)
    {
        const QString path = work.filePath(as);
        EXPECT_TRUE(QFile::copy(test::dataPath(name), path));
        return path;
    }
};

// A set reads a song's tags once, as a show does, and opens it besides only to copy its bytes,
// to check the copy, to look for damage TagLib would hide and to compare the written audio:
// the command line does not read the tags first on its own.
TEST_F(CliTagsTest, SetReadsEachSongsTagsOnce)
{
    for (const char* sample : {"atl-id3v23_utf16_apic.mp3", "beets-image.m4a", "atl-audacity_info_id3.wav"}) {
        const QString song = copyOfSample(QString::fromLatin1(sample), QString::fromLatin1(sample));
        const int show = test::opensOf(song, {QStringLiteral("tags"), QStringLiteral("show"), song}, home);
        const QString out = work.filePath(QStringLiteral("out-") + QString::fromLatin1(sample));
        const int set = test::opensOf(song, {QStringLiteral("-o"), out, QStringLiteral("tags"), QStringLiteral("set"),
                                       QStringLiteral("--title"), QStringLiteral("Once"), song}, home);
        ASSERT_GT(show, 0) << sample;
        ASSERT_TRUE(QFile::exists(out + QLatin1Char('/') + QString::fromLatin1(sample))) << sample;
        EXPECT_LE(set, show + 4) << sample;
    }
}

// A song whose container cannot hold artwork is refused by the same words the editor's artwork
// well shows, and nothing is written for it; the others of the batch take the picture.
TEST_F(CliTagsTest, ArtworkIsRefusedForContainersThatCannotHoldIt)
{
    const QString caf = copyOfSample(QStringLiteral("atl-lpcm.caf"), QStringLiteral("a.caf"));
    const QString mp3 = copyOfSample(QStringLiteral("atl-id3v23_utf16_apic.mp3"), QStringLiteral("b.mp3"));
    const QString picture = test::dataPath(QStringLiteral("et-GPS.jpg"));
    const QString out = work.filePath(QStringLiteral("out"));
    const test::CliRun run = cli({QStringLiteral("-o"), out, QStringLiteral("tags"), QStringLiteral("set"),
                                  QStringLiteral("--artwork"), picture, caf, mp3});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.contains(QStringLiteral("CAF files cannot hold artwork here; nothing was written")))
        << run.err.toStdString();
    EXPECT_FALSE(QFile::exists(out + QStringLiteral("/a.caf")));
    EXPECT_TRUE(QFile::exists(out + QStringLiteral("/b.mp3")));
}

// Ctrl-C stops the batch after the song in hand: what was written is whole and named, nothing
// else is, and the command says how far it came.
TEST_F(CliTagsTest, InterruptStopsTheBatchAndReportsTheFilesDone)
{
    QStringList songs;
    for (int i = 0; i < 400; ++i)
        songs << copyOfSample(QStringLiteral("atl-id3v23_utf16_apic.mp3"), QStringLiteral("song%1.mp3").arg(i));
    const QString out = work.filePath(QStringLiteral("out"));
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home.path());
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(PELORIN_CLI_PATH),
                  QStringList{QStringLiteral("-o"), out, QStringLiteral("tags"), QStringLiteral("set"),
                              QStringLiteral("--title"), QStringLiteral("Stopped")} + songs);
    ASSERT_TRUE(process.waitForStarted());
    // Interrupt once the first copies are there.
    for (int i = 0; i < 2000 && QDir(out).entryList(QDir::Files).size() < 3; ++i)
        QThread::msleep(5);
    ::kill(pid_t(process.processId()), SIGINT);
    ASSERT_TRUE(process.waitForFinished(60000));
    const QString err = QString::fromLocal8Bit(process.readAllStandardError());
    const QStringList written = QString::fromLocal8Bit(process.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
    EXPECT_EQ(process.exitCode(), 130) << err.toStdString();
    const QStringList onDisk = QDir(out).entryList(QDir::Files | QDir::Hidden);
    ASSERT_GE(onDisk.size(), 3);
    ASSERT_LT(onDisk.size(), songs.size());
    EXPECT_EQ(written.size(), onDisk.size());  // every file done is reported, and no scratch copy stays
    EXPECT_TRUE(err.contains(QStringLiteral("interrupted: %1 of 400 files done").arg(onDisk.size())))
        << err.toStdString();
    const QString last = out + QLatin1Char('/') + onDisk.last();
    QProcess mutagen;
    mutagen.start(QStringLiteral("/usr/bin/python3"),
                  {QStringLiteral("-c"), QStringLiteral("import sys, mutagen; print(mutagen.File(sys.argv[1])['TIT2'])"), last});
    ASSERT_TRUE(mutagen.waitForFinished(60000));
    EXPECT_EQ(QString::fromUtf8(mutagen.readAllStandardOutput()).trimmed(), QStringLiteral("Stopped"));
}

}  // namespace

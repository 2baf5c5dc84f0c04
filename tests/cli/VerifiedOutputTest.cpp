// Every writer reads its output back before it is linked into place: a fault planted in the
// finished bytes (as a broken writer would leave them) is caught, the item is reported with
// "verification failed" and no file, not even a temporary one, is left. Inputs are made by sox,
// lame, flac, ImageMagick, mutagen and ffmpeg, or come from cameras and iMovie.
#include "ToolRun.h"
#include "CliRunner.h"
#include "TestPaths.h"

#include "cli/CliApp.h"
#include "model/SafeOutput.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>
#include <unistd.h>

namespace {

using pelorin::test::dataPath;

using pelorin::test::runs;

QByteArray readAll(int fd)
{
    QByteArray bytes;
    char buffer[65536];
    for (off_t at = 0;;) {
        const ssize_t n = ::pread(fd, buffer, sizeof buffer, at);
        if (n <= 0)
            return bytes;
        bytes.append(buffer, n);
        at += n;
    }
}

// A writer that slipped one byte near the end: in the scans of a JPEG, the last frames of an
// MP3 or FLAC, the closing values of a property list.
void flipByteNearTheEnd(int fd)
{
    const QByteArray bytes = readAll(fd);
    const off_t at = bytes.size() > 200 ? bytes.size() - 100 : bytes.size() / 2;
    const char flipped = char(bytes[qsizetype(at)] ^ 0x5A);
    ASSERT_EQ(::pwrite(fd, &flipped, 1, at), 1);
}

// A remux that slipped one byte of the media data: the middle of a Matroska file is packets.
void flipByteInTheMiddle(int fd)
{
    const QByteArray bytes = readAll(fd);
    const off_t at = bytes.size() / 2;
    const char flipped = char(bytes[qsizetype(at)] ^ 0x5A);
    ASSERT_EQ(::pwrite(fd, &flipped, 1, at), 1);
}

// A writer that forgot to move one chunk offset when the media data moved.
void missOneChunkOffset(int fd)
{
    const QByteArray bytes = readAll(fd);
    const qsizetype table = bytes.indexOf("stco");
    ASSERT_GT(table, 0);
    const qsizetype first = table + 12;  // after the type, version, flags and count
    char wrong[4];
    for (int i = 0; i < 4; ++i)
        wrong[i] = bytes[first + i];
    wrong[3] = char(wrong[3] + 16);
    ASSERT_EQ(::pwrite(fd, wrong, 4, first), 4);
}

// A writer that moved the media data by a few bytes and forgot to move the offsets to it.
void moveTheMediaData(int fd)
{
    QByteArray bytes = readAll(fd);
    const qsizetype type = bytes.lastIndexOf("mdat");
    ASSERT_GT(type, 4);
    const bool largeSize = bytes.mid(type - 4, 4) == QByteArray("\0\0\0\1", 4);
    const qsizetype start = type + (largeSize ? 12 : 4);
    bytes.insert(start, 8, '\0');
    bytes.chop(8);
    ASSERT_EQ(::pwrite(fd, bytes.constData(), size_t(bytes.size()), 0), bytes.size());
}

// A writer that wrote its picture's first bytes wrong (a re-encoded photo, a thumbnail).
void clobberTheHeader(int fd)
{
    const char zeros[16] = {};
    ASSERT_EQ(::pwrite(fd, zeros, sizeof zeros, 0), qint64(sizeof zeros));
}

struct CliRun {
    int exitCode = -1;
    QString output;  // standard output and error together
};

class VerifiedOutputTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        qputenv("HOME", home.path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral(".config")).toLocal8Bit());
    }
    void TearDown() override { pelorin::setPendingOutputHookForTests({}); }

    // The command line in this process, so that the hook reaches its writers.
    CliRun cli(QStringList args, const QString& out)
    {
        args << QStringLiteral("--output") << out;
        std::FILE* sink = std::tmpfile();
        CliRun run;
        run.exitCode = pelorin::cli::makeCliApp()->run(args, sink, sink);
        std::rewind(sink);
        QByteArray text;
        char buffer[4096];
        while (const std::size_t n = std::fread(buffer, 1, sizeof buffer, sink))
            text.append(buffer, qsizetype(n));
        std::fclose(sink);
        run.output = QString::fromLocal8Bit(text);
        return run;
    }
    QString in(const QString& name) const { return home.filePath(name); }
    QString copied(const QString& sample) const
    {
        const QString path = in(sample);
        EXPECT_TRUE(QFile::copy(dataPath(sample), path));
        return path;
    }
    QString tone(const QString& name) const
    {
        const QString wav = in(name + QStringLiteral(".wav"));
        EXPECT_TRUE(runs(QStringLiteral("sox"), {QStringLiteral("-n"), QStringLiteral("-r"), QStringLiteral("44100"),
                                               QStringLiteral("-c"), QStringLiteral("2"), wav, QStringLiteral("synth"),
                                               QStringLiteral("1"), QStringLiteral("sine"), QStringLiteral("440")}));
        return wav;
    }
    QStringList filesIn(const QString& folder) const
    {
        return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System);
    }
    QTemporaryDir home;
};

TEST_F(VerifiedOutputTest, APlantedFaultInAnyWritersOutputIsCaughtAndNothingIsLinked)
{
    const QString wav = tone(QStringLiteral("tone"));
    const QString mp3 = in(QStringLiteral("tone.mp3"));
    const QString flac = in(QStringLiteral("tone.flac"));
    ASSERT_TRUE(runs(QStringLiteral("lame"), {QStringLiteral("--quiet"), wav, mp3}));
    ASSERT_TRUE(runs(QStringLiteral("flac"), {QStringLiteral("--silent"), QStringLiteral("-o"), flac, wav}));
    const QString png = in(QStringLiteral("noise.png"));
    ASSERT_TRUE(runs(QStringLiteral("convert"), {QStringLiteral("-size"), QStringLiteral("64x48"), QStringLiteral("xc:gray"),
                                                 QStringLiteral("+noise"), QStringLiteral("Random"),
                                                 QStringLiteral("-set"), QStringLiteral("comment"), QStringLiteral("hello"), png}));
    const QString jpeg = copied(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"));
    const QString movie = copied(QStringLiteral("ft-imovie.mp4"));
    const QString heic = copied(QStringLiteral("exiv2-iPhoneXR_orient6.heic"));
    // Large enough that the middle is outside what the final copy compares (its first and
    // last 64 KiB): only the remux's own read-back can see a fault there.
    const QString matroska = in(QStringLiteral("movie.mkv"));
    ASSERT_TRUE(runs(QStringLiteral("ffmpeg"),
                     {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                      QStringLiteral("testsrc=size=640x480:rate=25"), QStringLiteral("-t"), QStringLiteral("4"),
                      QStringLiteral("-c:v"), QStringLiteral("mpeg4"), QStringLiteral("-q:v"), QStringLiteral("1"), matroska}));

    struct Case {
        const char* what;
        QStringList args;
        void (*fault)(int);
        // Which finished output gets the fault: a song is first copied (that copy is checked
        // too), then edited in place and checked again.
        int faultedOutput = 1;
        QString reason = QStringLiteral("verification failed: ");
    };
    const QList<Case> cases{
        {"JPEG without GPS", {QStringLiteral("strip"), QStringLiteral("gps"), jpeg}, flipByteNearTheEnd},
        {"PNG without metadata", {QStringLiteral("strip"), QStringLiteral("all"), png}, flipByteNearTheEnd},
        {"copy of an MP3", {QStringLiteral("tags"), QStringLiteral("set"), QStringLiteral("--title"), QStringLiteral("T"), mp3},
         flipByteNearTheEnd, 1, QStringLiteral("verification failed: the copy's bytes differ")},
        {"MP3 with a title", {QStringLiteral("tags"), QStringLiteral("set"), QStringLiteral("--title"), QStringLiteral("T"), mp3},
         flipByteNearTheEnd, 2, QStringLiteral("verification failed: the output's audio differs from the source's")},
        {"FLAC without tags", {QStringLiteral("tags"), QStringLiteral("remove"), flac}, flipByteNearTheEnd, 2,
         QStringLiteral("verification failed: the output's audio differs from the source's")},
        {"movie with a title", {QStringLiteral("video"), QStringLiteral("set"), QStringLiteral("--title"), QStringLiteral("T"), movie},
         missOneChunkOffset},
        {"Matroska without tags", {QStringLiteral("video"), QStringLiteral("remove"), matroska}, flipByteInTheMiddle},
        {"property list", {QStringLiteral("export-plist"), QStringLiteral("all"), jpeg}, flipByteNearTheEnd},
        {"HEIC with a position", {QStringLiteral("gps"), QStringLiteral("set"), QStringLiteral("--lat"), QStringLiteral("48.1"),
                                  QStringLiteral("--lon"), QStringLiteral("11.5"), QStringLiteral("--alt"), QStringLiteral("500"), heic},
         moveTheMediaData},
        {"small JPEG copy", {QStringLiteral("recompress"), png}, clobberTheHeader},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        // Written as they are, the outputs are kept...
        const QString good = home.filePath(QStringLiteral("good-") + QString::fromLatin1(c.what));
        pelorin::setPendingOutputHookForTests({});
        const CliRun clean = cli(c.args, good);
        EXPECT_EQ(clean.exitCode, 0) << clean.output.toStdString();
        EXPECT_EQ(filesIn(good).size(), 1) << clean.output.toStdString();
        // ...with the fault, nothing is.
        const QString bad = home.filePath(QStringLiteral("bad-") + QString::fromLatin1(c.what));
        int finished = 0;
        pelorin::setPendingOutputHookForTests([&](int fd) {
            if (++finished == c.faultedOutput)
                c.fault(fd);
        });
        const CliRun faulty = cli(c.args, bad);
        EXPECT_EQ(faulty.exitCode, 1) << faulty.output.toStdString();
        EXPECT_TRUE(faulty.output.contains(c.reason)) << faulty.output.toStdString();
        EXPECT_EQ(filesIn(bad), QStringList()) << faulty.output.toStdString();
    }
}

}  // namespace

// Batches whose output folder runs out of space: the outputs that fit are whole, every other
// item is reported with "no space left", nothing partial or temporary is left behind, and the
// exit status is 1. The output folder is a 20 MB tmpfs where the test may mount one (root);
// elsewhere the CLI runs under a file-size limit (RLIMIT_FSIZE), which fails writes with EFBIG.
// Photos are made by ImageMagick and exiftool, songs by sox and lame; exiftool reads the outputs.
#include "FileBytes.h"
#include "ToolRun.h"
#include "ExifTool.h"
#include "ImageMagick.h"
#include "TestPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

using pelorin::test::dataPath;
using pelorin::test::exiftool;
using pelorin::test::exiftoolWrite;
using pelorin::test::imageMagick;

constexpr qint64 kTmpfsBytes = 20 * 1024 * 1024;
constexpr qint64 kPhotoFileLimit = 200 * 1024;

// The output folder on a small file system of its own, unmounted however the test ends.
class SmallOutputDisk {
public:
    explicit SmallOutputDisk(const QString& folder) : folder_(folder)
    {
        QDir().mkpath(folder_);
        const QByteArray options = "size=" + QByteArray::number(kTmpfsBytes);
        mounted_ = ::geteuid() == 0
                   && ::mount("tmpfs", QFile::encodeName(folder_).constData(), "tmpfs", MS_NOSUID | MS_NODEV,
                              options.constData())
                          == 0;
    }
    ~SmallOutputDisk()
    {
        if (mounted_)
            ::umount2(QFile::encodeName(folder_).constData(), MNT_DETACH);
    }
    SmallOutputDisk(const SmallOutputDisk&) = delete;
    SmallOutputDisk& operator=(const SmallOutputDisk&) = delete;

    bool mounted() const { return mounted_; }
    qint64 freeBytes() const
    {
        struct statvfs fs {};
        ::statvfs(QFile::encodeName(folder_).constData(), &fs);
        return qint64(fs.f_bavail) * qint64(fs.f_frsize);
    }

private:
    QString folder_;
    bool mounted_ = false;
};

struct CliOutcome {
    bool finished = false;
    bool crashed = false;
    int exitCode = -1;
    QJsonObject result;
    QString err;
};

// Runs the CLI with --json; fileSizeLimit > 0 sets RLIMIT_FSIZE in the child only.
CliOutcome runCli(const QStringList& args, const QTemporaryDir& home, qint64 fileSizeLimit)
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home.path());
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral(".config")));
    process.setProcessEnvironment(env);
    if (fileSizeLimit > 0) {
        process.setChildProcessModifier([fileSizeLimit] {
            const rlimit limit{rlim_t(fileSizeLimit), rlim_t(fileSizeLimit)};
            ::setrlimit(RLIMIT_FSIZE, &limit);
        });
    }
    process.start(QStringLiteral(PELORIN_CLI_PATH), QStringList{QStringLiteral("--json")} + args);
    CliOutcome run;
    run.finished = process.waitForFinished(180000);
    run.crashed = process.exitStatus() != QProcess::NormalExit;
    run.exitCode = process.exitCode();
    run.result = QJsonDocument::fromJson(process.readAllStandardOutput()).object();
    run.err = QString::fromLocal8Bit(process.readAllStandardError());
    return run;
}

using pelorin::test::runs;

using pelorin::test::readAll;
using pelorin::test::scanData;

QSet<QString> entriesOf(const QString& folder)
{
    const QStringList names = QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System | QDir::Dirs
                                                     | QDir::NoDotAndDotDot);
    return {names.begin(), names.end()};
}

class CliFullDiskTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(home.isValid());
        QDir().mkpath(in());
        disk = std::make_unique<SmallOutputDisk>(out());
        if (!disk->mounted())
            fileSizeLimit = kPhotoFileLimit;
    }
    QString in(const QString& name = {}) const { return home.filePath(QStringLiteral("in/") + name); }
    QString out(const QString& name = {}) const { return home.filePath(QStringLiteral("out/") + name); }

    // A photo with the GPS and camera tags of a real one, width x height pixels of noise.
    QString makePhoto(const QString& name, const QString& size)
    {
        const QString path = in(name);
        EXPECT_TRUE(imageMagick({QStringLiteral("-size"), size, QStringLiteral("plasma:fractal"),
                                 QStringLiteral("-quality"), QStringLiteral("95"), path}));
        EXPECT_TRUE(exiftoolWrite(path, {QStringLiteral("-tagsFromFile"), dataPath(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg")),
                                         QStringLiteral("-exif:all"), QStringLiteral("-gps:all")}));
        return path;
    }

    QTemporaryDir home;
    std::unique_ptr<SmallOutputDisk> disk;
    qint64 fileSizeLimit = 0;  // 0 on the tmpfs
};

TEST_F(CliFullDiskTest, PhotoBatchKeepsWholeOutputsAndNamesEveryMissingOne)
{
    // Large and small photos alternate, so that after the first failure smaller ones still fit
    // (on the tmpfs) or stay under the file-size limit (elsewhere).
    const QString large = makePhoto(QStringLiteral("large.jpg"), QStringLiteral("800x600"));
    const QString small = makePhoto(QStringLiteral("small.jpg"), QStringLiteral("320x240"));
    ASSERT_GT(QFileInfo(large).size(), kPhotoFileLimit);
    ASSERT_LT(QFileInfo(small).size(), kPhotoFileLimit / 2);
    ASSERT_TRUE(exiftool(large).contains(QStringLiteral("GPS:GPSLatitude")));
    QStringList sources;
    QHash<QString, QString> originOf;
    for (int i = 0; i < 300; ++i) {
        const QString path = in(QStringLiteral("p%1.jpg").arg(i, 3, 10, QLatin1Char('0')));
        ASSERT_TRUE(QFile::copy(i % 3 == 2 ? small : large, path));
        sources << path;
        originOf.insert(QFileInfo(path).fileName(), i % 3 == 2 ? small : large);
    }

    const CliOutcome run = runCli(QStringList{QStringLiteral("strip"), QStringLiteral("gps"), QStringLiteral("-o"), out()} + sources,
                           home, fileSizeLimit);
    ASSERT_TRUE(run.finished);
    ASSERT_FALSE(run.crashed) << "killed by the file-size limit?";
    EXPECT_EQ(run.exitCode, 1) << run.err.toStdString();

    const QJsonArray written = run.result.value(QStringLiteral("written")).toArray();
    const QJsonArray skipped = run.result.value(QStringLiteral("skipped")).toArray();
    EXPECT_EQ(written.size() + skipped.size(), 300);
    EXPECT_GT(written.size(), 30);
    EXPECT_GT(skipped.size(), 30);
    QSet<QString> reported;
    for (const QJsonValue& item : skipped) {
        const QString reason = item[QStringLiteral("reason")].toString();
        EXPECT_TRUE(reason.contains(QStringLiteral("no space left"))) << reason.toStdString();
        reported.insert(QFileInfo(item[QStringLiteral("path")].toString()).fileName());
    }
    // The batch went on after the first failure: some items after it were written.
    const QString firstSkipped = QFileInfo(skipped.at(0)[QStringLiteral("path")].toString()).fileName();
    bool writtenAfter = false;
    QSet<QString> names;
    for (const QJsonValue& path : written) {
        const QString name = QFileInfo(path.toString()).fileName();
        names.insert(name);
        writtenAfter = writtenAfter || name > firstSkipped;
        EXPECT_FALSE(reported.contains(name)) << name.toStdString();
        // Whole: the picture is the source's, byte for byte, up to its last byte.
        const QByteArray scan = scanData(readAll(originOf.value(name)));
        ASSERT_FALSE(scan.isEmpty());
        EXPECT_EQ(scanData(readAll(path.toString())), scan) << name.toStdString();
    }
    EXPECT_TRUE(writtenAfter);
    // Nothing but the finished outputs: no partial file, no hidden temporary.
    EXPECT_EQ(entriesOf(out()), names);

    // exiftool reads every output without complaint, and its GPS is gone.
    QProcess reader;
    reader.start(QStringLiteral("exiftool"), {QStringLiteral("-j"), QStringLiteral("-G1"), QStringLiteral("-a"),
                                              out()});
    ASSERT_TRUE(reader.waitForFinished(120000));
    const QJsonArray read = QJsonDocument::fromJson(reader.readAllStandardOutput()).array();
    EXPECT_EQ(read.size(), written.size());
    for (const QJsonValue& entry : read) {
        const QJsonObject tags = entry.toObject();
        const std::string name = tags.value(QStringLiteral("SourceFile")).toString().toStdString();
        EXPECT_FALSE(tags.contains(QStringLiteral("ExifTool:Error"))) << name;
        EXPECT_FALSE(tags.contains(QStringLiteral("GPS:GPSLatitude"))) << name;
        EXPECT_TRUE(tags.contains(QStringLiteral("IFD0:Make"))) << name;
    }
}

// The tag grows by the artwork while TagLib saves it into the copy: the copy fits, the grown
// tag does not. The song must be refused, not written cut off.
TEST_F(CliFullDiskTest, SongWhoseTagNoLongerFitsIsRefusedNotCut)
{
    const QString wav = in(QStringLiteral("tone.wav"));
    const QString song = in(QStringLiteral("tone.mp3"));
    const QString art = in(QStringLiteral("art.jpg"));
    ASSERT_TRUE(runs(QStringLiteral("sox"), {QStringLiteral("-n"), QStringLiteral("-r"), QStringLiteral("44100"),
                                             QStringLiteral("-c"), QStringLiteral("2"), wav, QStringLiteral("synth"),
                                             QStringLiteral("20"), QStringLiteral("sine"), QStringLiteral("440")}));
    ASSERT_TRUE(runs(QStringLiteral("lame"), {QStringLiteral("--quiet"), QStringLiteral("-b"), QStringLiteral("128"), wav, song}));
    ASSERT_TRUE(imageMagick({QStringLiteral("-size"), QStringLiteral("500x500"), QStringLiteral("plasma:fractal"),
                             QStringLiteral("-quality"), QStringLiteral("95"), art}));
    const qint64 songSize = QFileInfo(song).size();
    const qint64 artSize = QFileInfo(art).size();
    ASSERT_GT(artSize, 64 * 1024);
    const qint64 room = songSize + artSize / 2;
    if (disk->mounted()) {
        // Fill the disk until only room for the copy and half the picture is left.
        QFile filler(out(QStringLiteral("filler")));
        ASSERT_TRUE(filler.open(QIODevice::WriteOnly));
        ASSERT_TRUE(filler.resize(0));
        const QByteArray block(64 * 1024, 'x');
        while (disk->freeBytes() - room >= block.size())
            ASSERT_EQ(filler.write(block), block.size());
        filler.close();
    } else {
        fileSizeLimit = room;
    }

    const CliOutcome run = runCli({QStringLiteral("tags"), QStringLiteral("set"), QStringLiteral("--title"), QStringLiteral("Full"),
                            QStringLiteral("--artwork"), art, QStringLiteral("-o"), out(), song},
                           home, fileSizeLimit);
    ASSERT_TRUE(run.finished);
    ASSERT_FALSE(run.crashed) << "killed by the file-size limit?";
    EXPECT_EQ(run.exitCode, 1) << run.err.toStdString();
    EXPECT_TRUE(run.result.value(QStringLiteral("written")).toArray().isEmpty());
    const QJsonArray skipped = run.result.value(QStringLiteral("skipped")).toArray();
    ASSERT_EQ(skipped.size(), 1);
    EXPECT_TRUE(skipped.at(0)[QStringLiteral("reason")].toString().contains(QStringLiteral("no space left")))
        << skipped.at(0)[QStringLiteral("reason")].toString().toStdString();
    QSet<QString> left = entriesOf(out());
    left.remove(QStringLiteral("filler"));
    EXPECT_TRUE(left.isEmpty()) << left.values().join(QLatin1Char(' ')).toStdString();
}

}  // namespace

#include "model/SafeOutput.h"

#include "TestPaths.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace pelorin {
namespace {

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QByteArray randomBytes(qsizetype n)
{
    QByteArray bytes(n, Qt::Uninitialized);
    QRandomGenerator gen(1234);
    gen.fillRange(reinterpret_cast<quint32*>(bytes.data()), n / 4);
    return bytes;
}

// Everything in the folder, hidden files included.
QStringList entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

class SafeOutputTest : public ::testing::Test {
protected:
    QString out(const QString& name) const { return dir.filePath(name); }
    QTemporaryDir dir;
};

TEST_F(SafeOutputTest, WritesAndReplacesWholeFiles)
{
    QString error;
    ASSERT_TRUE(writeFileAtomically(out(QStringLiteral("a.txt")), "first", {}, &error))
        << error.toStdString();
    ASSERT_TRUE(writeFileAtomically(out(QStringLiteral("a.txt")), "second", {}, &error));
    EXPECT_EQ(readAll(out(QStringLiteral("a.txt"))), QByteArray("second"));
    EXPECT_EQ(entries(dir.path()), QStringList{QStringLiteral("a.txt")});
}

TEST_F(SafeOutputTest, OutputsGetTheModeOfAnyNewFile)
{
    // Not the private mode of a temporary file: the umask decides, as for any program.
    const mode_t previous = ::umask(022);
    ASSERT_TRUE(writeFileAtomically(out(QStringLiteral("a.txt")), "x", {}, nullptr));
    ::umask(previous);
    struct stat st {};
    ASSERT_EQ(::stat(QFile::encodeName(out(QStringLiteral("a.txt"))).constData(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0644u);
}

TEST_F(SafeOutputTest, CopiesKeepEveryByte)
{
    const QString source = out(QStringLiteral("big.bin"));
    const QByteArray bytes = randomBytes(9 * 1024 * 1024 + 13);
    ASSERT_TRUE(writeFileAtomically(source, bytes, {}, nullptr));
    QDir(dir.path()).mkdir(QStringLiteral("store"));
    const QString target = out(QStringLiteral("store/big.bin"));
    QString error;
    ASSERT_TRUE(copyFileAtomically(source, target, &error)) << error.toStdString();
    EXPECT_EQ(readAll(target), bytes);

    const QString photo = test::dataPath(QStringLiteral("et-GPS.jpg"));
    ASSERT_TRUE(copyFileAtomically(photo, out(QStringLiteral("store/et-GPS.jpg")), &error));
    EXPECT_EQ(readAll(out(QStringLiteral("store/et-GPS.jpg"))), readAll(photo));
}

TEST_F(SafeOutputTest, AppendsRangesOfAnotherFile)
{
    const QString source = out(QStringLiteral("src.bin"));
    const QByteArray bytes = randomBytes(3 * 1024 * 1024);
    ASSERT_TRUE(writeFileAtomically(source, bytes, {}, nullptr));
    const int fd = ::open(QFile::encodeName(source).constData(), O_RDONLY);
    ASSERT_GE(fd, 0);
    AtomicFileWriter writer(out(QStringLiteral("joined.bin")));
    ASSERT_TRUE(writer.open());
    ASSERT_TRUE(writer.write("head"));
    ASSERT_TRUE(writer.appendFrom(fd, 1000, 2 * 1024 * 1024));
    ASSERT_TRUE(writer.commit()) << writer.error().toStdString();
    EXPECT_EQ(readAll(out(QStringLiteral("joined.bin"))), QByteArray("head") + bytes.mid(1000, 2 * 1024 * 1024));

    AtomicFileWriter pastTheEnd(out(QStringLiteral("short.bin")));
    ASSERT_TRUE(pastTheEnd.open());
    EXPECT_FALSE(pastTheEnd.appendFrom(fd, 3 * 1024 * 1024 - 10, 20));
    ::close(fd);
}

// A range that lies at the same place within a block in both files goes out in up to three
// parts (head, whole blocks, tail) so that a file system that shares blocks can clone the middle.
// Whatever the parts, the bytes must come out whole and in order.
TEST_F(SafeOutputTest, RangesAtTheSamePlaceWithinABlockComeOutWhole)
{
    const QString source = out(QStringLiteral("blocks.bin"));
    const qint64 size = 3 * 1024 * 1024 + 123;
    const QByteArray bytes = randomBytes(int(size));
    ASSERT_TRUE(writeFileAtomically(source, bytes, {}, nullptr));
    const int fd = ::open(QFile::encodeName(source).constData(), O_RDONLY);
    ASSERT_GE(fd, 0);
    const qint64 block = kCloneBlockSize;
    struct Range {
        qint64 written;  // bytes in the output before the range
        qint64 offset;
        qint64 length;
    };
    const Range ranges[] = {
        {100, 100 + 3 * block, 1024 * 1024 + 7},  // unaligned head and tail, short of the end
        {0, 2 * block, size - 2 * block},         // aligned, to the source's end
        {4000, 4000 + block, size - 4000 - block},  // unaligned head, to the end
        {10, 10, 2 * block},                      // two blocks' worth, neither end aligned
        {0, 0, 2 * block - 1},                    // just under two blocks
    };
    int n = 0;
    for (const Range& r : ranges) {
        SCOPED_TRACE(n);
        const QString target = out(QStringLiteral("aligned-%1.bin").arg(n++));
        AtomicFileWriter writer(target);
        ASSERT_TRUE(writer.open());
        const QByteArray before(qsizetype(r.written), 'h');
        ASSERT_TRUE(writer.write(before));
        ASSERT_TRUE(writer.appendFrom(fd, r.offset, r.length)) << writer.error().toStdString();
        ASSERT_TRUE(writer.write("tail"));
        ASSERT_TRUE(writer.commit()) << writer.error().toStdString();
        EXPECT_EQ(readAll(target), before + bytes.mid(qsizetype(r.offset), qsizetype(r.length)) + "tail");
    }
    ::close(fd);
}

TEST_F(SafeOutputTest, NeverReplacesTheProtectedSource)
{
    const QString source = out(QStringLiteral("original.jpg"));
    ASSERT_TRUE(writeFileAtomically(source, "precious", {}, nullptr));
    QString error;
    EXPECT_FALSE(copyFileAtomically(source, source, &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(writeFileAtomically(source, "rewritten", source, &error));
    // The same file reached through another path is recognised too.
    EXPECT_FALSE(writeFileAtomically(dir.path() + QStringLiteral("/./original.jpg"), "x", source, &error));
    EXPECT_EQ(readAll(source), QByteArray("precious"));
    EXPECT_EQ(entries(dir.path()), QStringList{QStringLiteral("original.jpg")});
}

TEST_F(SafeOutputTest, DiscardedWritesLeaveNothing)
{
    {
        AtomicFileWriter writer(out(QStringLiteral("never.jpg")));
        ASSERT_TRUE(writer.open());
        ASSERT_TRUE(writer.write("partial"));
    }
    EXPECT_TRUE(entries(dir.path()).isEmpty());
    AtomicFileWriter missingFolder(out(QStringLiteral("no/such/folder/x.jpg")));
    EXPECT_FALSE(missingFolder.open());
    EXPECT_FALSE(missingFolder.error().isEmpty());
}

// A process killed in the middle of writing leaves no file under the target name, and an
// earlier file of that name keeps its content.
TEST_F(SafeOutputTest, KilledWriterLeavesNoTargetFile)
{
    const QString fresh = out(QStringLiteral("fresh.jpg"));
    const QString existing = out(QStringLiteral("existing.jpg"));
    ASSERT_TRUE(writeFileAtomically(existing, "old content", {}, nullptr));
    for (const QString& target : {fresh, existing}) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            AtomicFileWriter writer(target);
            if (writer.open())
                writer.write(randomBytes(4 * 1024 * 1024));
            ::raise(SIGKILL);
            ::_exit(0);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status));
    }
    EXPECT_FALSE(QFile::exists(fresh));
    EXPECT_EQ(readAll(existing), QByteArray("old content"));
    EXPECT_EQ(entries(dir.path()), QStringList{QStringLiteral("existing.jpg")});
}

TEST_F(SafeOutputTest, EnsureFolderCreatesIntermediateFolders)
{
    const QString deep = out(QStringLiteral("a/b/c"));
    EXPECT_TRUE(ensureFolder(deep));
    EXPECT_TRUE(QFileInfo(deep).isDir());
    EXPECT_TRUE(ensureFolder(deep));
    ASSERT_TRUE(writeFileAtomically(out(QStringLiteral("file")), "x", {}, nullptr));
    QString error;
    EXPECT_FALSE(ensureFolder(out(QStringLiteral("file")), &error));
    EXPECT_FALSE(ensureFolder(out(QStringLiteral("file/sub")), &error));
    EXPECT_EQ(storageOutputPath(QStringLiteral("/store"), QStringLiteral("a.jpg"), QStringLiteral("NoExifAndGPS_")),
              QStringLiteral("/store/NoExifAndGPS_a.jpg"));
}

}  // namespace
}  // namespace pelorin

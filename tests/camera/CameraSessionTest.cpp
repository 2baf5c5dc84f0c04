#include "camera/CameraDevices.h"
#include "camera/CameraSession.h"
#include "TestPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <gtest/gtest.h>

#include <thread>
#include <unistd.h>

namespace pelorin {
namespace {

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Everything written to stderr (fd 2) while it lives, libgphoto2's own printing included.
class StderrCapture {
public:
    StderrCapture()
    {
        file_.open();
        std::fflush(stderr);
        saved_ = ::dup(2);
        ::dup2(file_.handle(), 2);
    }
    ~StderrCapture() { restore(); }
    QByteArray text()
    {
        restore();
        return readAll(file_.fileName());
    }

private:
    void restore()
    {
        if (saved_ < 0)
            return;
        std::fflush(stderr);
        ::dup2(saved_, 2);
        ::close(saved_);
        saved_ = -1;
    }
    QTemporaryFile file_;
    int saved_ = -1;
};

// A folder served as a camera: two photos (one in a sub-folder, one without an embedded
// thumbnail), a movie, and a text file that is no photo.
class CameraSessionTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(cameraDir.isValid() && outDir.isValid());
        ASSERT_TRUE(QDir(root()).mkpath(QStringLiteral("sub")));
        ASSERT_TRUE(QFile::copy(test::dataPath(QStringLiteral("exiv2-nikon-d70.jpg")), onCamera("a.jpg")));
        ASSERT_TRUE(QFile::copy(test::dataPath(QStringLiteral("ft-imovie.mp4")), onCamera("c.mp4")));
        ASSERT_TRUE(QFile::copy(test::dataPath(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg")), onCamera("sub/b.jpg")));
        QFile notes(onCamera("notes.txt"));
        ASSERT_TRUE(notes.open(QIODevice::WriteOnly) && notes.write("not a photo\n") > 0);
        notes.close();
        QString error;
        session = CameraSession::open(directoryCamera(root()), &error);
        ASSERT_TRUE(session) << error.toStdString();
    }

    QString root() const { return cameraDir.path(); }
    QString onCamera(const char* relative) const { return root() + QLatin1Char('/') + QLatin1String(relative); }
    CameraFileRef ref(const char* folder, const char* name) const
    {
        return {session->device().port, QString::fromLatin1(folder), QString::fromLatin1(name)};
    }
    QString target(const char* name) const { return outDir.filePath(QString::fromLatin1(name)); }

    QTemporaryDir cameraDir;
    QTemporaryDir outDir;
    std::unique_ptr<CameraSession> session;
};

TEST_F(CameraSessionTest, ListsPhotosAndMoviesInFolderThenNameOrderWithSizesAndDates)
{
    StderrCapture err;
    QString error;
    const QList<CameraFileInfo> files = session->listFiles(nullptr, &error);
    EXPECT_TRUE(error.isEmpty()) << error.toStdString();
    ASSERT_EQ(files.size(), 3);
    const QStringList expected = {QStringLiteral("/|a.jpg"), QStringLiteral("/|c.mp4"), QStringLiteral("/sub|b.jpg")};
    for (qsizetype i = 0; i < files.size(); ++i) {
        const CameraFileInfo& file = files[i];
        EXPECT_EQ(file.ref.folder + QLatin1Char('|') + file.ref.name, expected[i]);
        EXPECT_EQ(file.ref.port, QStringLiteral("disk:") + root());
        const QFileInfo onDisk(onCamera(file.ref.folder == QLatin1String("/") ? "" : "sub")
                               + QLatin1Char('/') + file.ref.name);
        EXPECT_EQ(file.size, onDisk.size()) << file.ref.name.toStdString();
        EXPECT_EQ(file.modified.toSecsSinceEpoch(), onDisk.lastModified().toSecsSinceEpoch());
    }
    EXPECT_TRUE(err.text().isEmpty());
}

TEST_F(CameraSessionTest, ListingStopsAtTheDepthBoundAndSaysSo)
{
    QString deep = root();
    for (int i = 0; i < 18; ++i)
        deep += QStringLiteral("/d%1").arg(i);
    ASSERT_TRUE(QDir().mkpath(deep));
    ASSERT_TRUE(QFile::copy(test::dataPath(QStringLiteral("et-GPS.jpg")), deep + QStringLiteral("/deep.jpg")));
    QString error;
    const QList<CameraFileInfo> files = session->listFiles(nullptr, &error);
    EXPECT_EQ(files.size(), 3);  // the deep photo is beyond reach, the others are all there
    EXPECT_TRUE(error.contains(QStringLiteral("deeper than 16"))) << error.toStdString();

    const std::atomic_bool cancelled{true};
    error.clear();
    EXPECT_TRUE(session->listFiles(&cancelled, &error).isEmpty());
    EXPECT_TRUE(error.contains(QStringLiteral("cancelled"))) << error.toStdString();
}

TEST_F(CameraSessionTest, ThumbnailIsTheEmbeddedPreviewOrNullWithoutError)
{
    StderrCapture err;
    // exiftool, an independent reader, extracts the same embedded thumbnail.
    QProcess exiftool;
    exiftool.start(QStringLiteral("exiftool"), {QStringLiteral("-b"), QStringLiteral("-ThumbnailImage"), onCamera("a.jpg")});
    ASSERT_TRUE(exiftool.waitForFinished(30000));
    const QImage expected = QImage::fromData(exiftool.readAllStandardOutput());
    ASSERT_FALSE(expected.isNull());

    QString error;
    const QImage preview = session->thumbnail(ref("/", "a.jpg"), &error);
    EXPECT_TRUE(error.isEmpty()) << error.toStdString();
    EXPECT_EQ(preview.convertToFormat(QImage::Format_RGB32), expected.convertToFormat(QImage::Format_RGB32));

    // A photo without an embedded preview is shown from its own pixels, at most 256 pixels on
    // its longer side, the right way up; a movie without one has none.
    const QImage own = session->thumbnail(ref("/sub", "b.jpg"), &error);
    EXPECT_TRUE(error.isEmpty()) << error.toStdString();
    const QImage full(onCamera("sub/b.jpg"));
    ASSERT_FALSE(own.isNull());
    EXPECT_EQ(std::max(own.width(), own.height()), 256);
    EXPECT_EQ(own.width() > own.height(), full.width() > full.height());
    EXPECT_TRUE(session->thumbnail(ref("/", "c.mp4"), &error).isNull());
    EXPECT_TRUE(error.isEmpty()) << error.toStdString();
    EXPECT_TRUE(session->thumbnail(ref("/", "missing.jpg"), &error).isNull());
    EXPECT_FALSE(error.isEmpty());
    EXPECT_TRUE(err.text().isEmpty());
}

TEST_F(CameraSessionTest, DownloadCopiesTheBytesAndReplacesTheTarget)
{
    StderrCapture err;
    QString error;
    QFile old(target("a.jpg"));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly) && old.write("older file") > 0);
    old.close();
    ASSERT_TRUE(session->download(ref("/", "a.jpg"), target("a.jpg"), &error)) << error.toStdString();
    EXPECT_EQ(readAll(target("a.jpg")), readAll(onCamera("a.jpg")));
    ASSERT_TRUE(session->download(ref("/sub", "b.jpg"), target("b.jpg"), &error)) << error.toStdString();
    EXPECT_EQ(readAll(target("b.jpg")), readAll(onCamera("sub/b.jpg")));

    // Large enough that the driver hands it over in many pieces.
    QByteArray big(6 * 1024 * 1024 + 123, 0);
    QRandomGenerator(7).fillRange(reinterpret_cast<quint32*>(big.data()), big.size() / 4);
    QFile movie(onCamera("big.mov"));
    ASSERT_TRUE(movie.open(QIODevice::WriteOnly) && movie.write(big) == big.size());
    movie.close();
    session = CameraSession::open(directoryCamera(root()), &error);  // a listing made before knows no big.mov
    ASSERT_TRUE(session) << error.toStdString();
    ASSERT_TRUE(session->download(ref("/", "big.mov"), target("big.mov"), &error)) << error.toStdString();
    EXPECT_TRUE(readAll(target("big.mov")) == big);
    EXPECT_TRUE(err.text().isEmpty());
}

TEST_F(CameraSessionTest, FailedOrCancelledDownloadLeavesNoFile)
{
    QString error;
    EXPECT_FALSE(session->download(ref("/", "missing.jpg"), target("missing.jpg"), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("/missing.jpg"))) << error.toStdString();

    const std::atomic_bool cancelled{true};
    error.clear();
    EXPECT_FALSE(session->download(ref("/", "c.mp4"), target("c.mp4"), &error, &cancelled));
    EXPECT_TRUE(error.contains(QStringLiteral("cancelled"))) << error.toStdString();

    // A ref of another device, or one that names no file, is refused before the device is asked.
    EXPECT_FALSE(session->download({QStringLiteral("disk:/elsewhere"), QStringLiteral("/"), QStringLiteral("a.jpg")},
                                   target("a.jpg"), &error));
    EXPECT_FALSE(session->download(ref("/", ".."), target("a.jpg"), &error));
    EXPECT_TRUE(QDir(outDir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).isEmpty());
}

TEST_F(CameraSessionTest, RemoveDeletesTheFileAndReportsAMissingOne)
{
    QString error;
    EXPECT_TRUE(session->remove(ref("/sub", "b.jpg"), &error)) << error.toStdString();
    EXPECT_FALSE(QFileInfo::exists(onCamera("sub/b.jpg")));
    EXPECT_FALSE(session->remove(ref("/sub", "b.jpg"), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("/sub/b.jpg"))) << error.toStdString();
    const QList<CameraFileInfo> files = session->listFiles(nullptr, &error);
    ASSERT_EQ(files.size(), 2);
    EXPECT_EQ(files[1].ref.name, QStringLiteral("c.mp4"));
}

TEST_F(CameraSessionTest, FolderRemovedMidwayGivesErrorsNotCrashes)
{
    QString error;
    ASSERT_EQ(session->listFiles(nullptr, &error).size(), 3);
    ASSERT_TRUE(QDir(root()).removeRecursively());
    EXPECT_FALSE(session->download(ref("/", "a.jpg"), target("a.jpg"), &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(target("a.jpg")));
    error.clear();
    EXPECT_TRUE(session->thumbnail(ref("/", "a.jpg"), &error).isNull());
    EXPECT_FALSE(error.isEmpty());
    error.clear();
    EXPECT_FALSE(session->remove(ref("/", "c.mp4"), &error));
    EXPECT_FALSE(error.isEmpty());

    // A session opened on a folder that is gone fails at once.
    std::unique_ptr<CameraSession> again = CameraSession::open(directoryCamera(root()), &error);
    EXPECT_FALSE(again);
    EXPECT_TRUE(error.contains(QStringLiteral("does not exist"))) << error.toStdString();
}

TEST_F(CameraSessionTest, ListsAndDownloadsFromTwoThreadsAtOnce)
{
    std::atomic_int listed{0};
    std::thread lister([&] {
        for (int i = 0; i < 20; ++i) {
            QString error;
            if (session->listFiles(nullptr, &error).size() == 3 && error.isEmpty())
                ++listed;
        }
    });
    int downloaded = 0;
    for (int i = 0; i < 20; ++i) {
        QString error;
        downloaded += session->download(ref("/", "c.mp4"), target("c.mp4"), &error) ? 1 : 0;
    }
    lister.join();
    EXPECT_EQ(listed.load(), 20);
    EXPECT_EQ(downloaded, 20);
    EXPECT_EQ(readAll(target("c.mp4")), readAll(onCamera("c.mp4")));
}

TEST(CameraDevices, DetectionAnswersWithoutHardwareAndUnknownModelsFail)
{
    StderrCapture err;
    QString error;
    detectCameras(&error);
    EXPECT_TRUE(error.isEmpty()) << error.toStdString();
    EXPECT_FALSE(CameraSession::open({QStringLiteral("No Such Camera 9000"), QStringLiteral("usb:")}, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("No Such Camera 9000"))) << error.toStdString();
    EXPECT_FALSE(CameraSession::open({QStringLiteral("Directory Browse"), QStringLiteral("nonsense:xyz")}, &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_TRUE(err.text().isEmpty());
}

}  // namespace
}  // namespace pelorin

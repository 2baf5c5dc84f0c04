#include "camera/CameraCommands.h"
#include "camera/CameraDevices.h"
#include "camera/CameraPaths.h"
#include "TestPaths.h"
#include "model/ItemPictureImage.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class CameraCommandsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(cameraDir.isValid() && storeDir.isValid());
        ASSERT_TRUE(QDir(cameraDir.path()).mkpath(QStringLiteral("DCIM/100TEST")));
        ASSERT_TRUE(QFile::copy(test::dataPath(QStringLiteral("et-GPS.jpg")), onCamera("DCIM/100TEST/IMG_0001.JPG")));
        ASSERT_TRUE(QFile::copy(test::dataPath(QStringLiteral("ft-imovie.mp4")), onCamera("DCIM/100TEST/MVI_0002.MP4")));
        // An old date, so that the download's own date cannot pass for it.
        QFile photo(onCamera("DCIM/100TEST/IMG_0001.JPG"));
        ASSERT_TRUE(photo.open(QIODevice::ReadWrite));
        ASSERT_TRUE(photo.setFileTime(cameraDate, QFileDevice::FileModificationTime));
        photo.close();
        QString error;
        session = CameraSession::open(directoryCamera(cameraDir.path()), &error);
        ASSERT_TRUE(session) << error.toStdString();
        context.storageFolder = storeDir.filePath(QStringLiteral("store"));
        context.reveal.revealFile = [this](const QString& file) { revealed << file; };
        context.progress = [this](int done, int total) { progress << QStringLiteral("%1/%2").arg(done).arg(total); };
    }

    QString onCamera(const char* relative) const { return cameraDir.filePath(QString::fromLatin1(relative)); }
    CameraFileRef ref(const char* path) const { return cameraFileFromPath(session->device().port, QString::fromLatin1(path)); }
    QString stored(const char* name) const { return context.storageFolder + QLatin1Char('/') + QLatin1String(name); }

    const QDateTime cameraDate = QDateTime(QDate(2019, 5, 4), QTime(13, 14, 15), Qt::UTC);
    QTemporaryDir cameraDir;
    QTemporaryDir storeDir;
    std::unique_ptr<CameraSession> session;
    CommandContext context;
    QStringList revealed;
    QStringList progress;
};

TEST_F(CameraCommandsTest, DownloadWritesRevealsDatesAndSkipsFailures)
{
    const QList<CameraFileRef> files = {ref("DCIM/100TEST/IMG_0001.JPG"), ref("/DCIM/100TEST/NONE.JPG"),
                                        ref("/DCIM/100TEST/MVI_0002.MP4")};
    const CommandResult result = downloadCameraFiles(*session, files, context);
    EXPECT_EQ(result.written, QStringList({stored("IMG_0001.JPG"), stored("MVI_0002.MP4")}));
    EXPECT_EQ(revealed, result.written);
    EXPECT_EQ(progress, QStringList({QStringLiteral("1/3"), QStringLiteral("2/3"), QStringLiteral("3/3")}));
    ASSERT_EQ(result.skipped.size(), 1);
    EXPECT_EQ(result.skipped[0].path, QStringLiteral("/DCIM/100TEST/NONE.JPG"));
    EXPECT_FALSE(result.skipped[0].reason.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(stored("NONE.JPG")));
    EXPECT_EQ(readAll(stored("IMG_0001.JPG")), readAll(onCamera("DCIM/100TEST/IMG_0001.JPG")));
    EXPECT_EQ(readAll(stored("MVI_0002.MP4")), readAll(onCamera("DCIM/100TEST/MVI_0002.MP4")));
    EXPECT_EQ(QFileInfo(stored("IMG_0001.JPG")).lastModified().toUTC(), cameraDate);
    EXPECT_TRUE(result.notes.isEmpty());
}

TEST_F(CameraCommandsTest, DryRunAndCancelWriteNothing)
{
    context.dryRun = true;
    CommandResult result = downloadCameraFiles(*session, {ref("/DCIM/100TEST/IMG_0001.JPG")}, context);
    EXPECT_TRUE(result.written.isEmpty());
    ASSERT_FALSE(result.planned.isEmpty());
    EXPECT_EQ(result.planned[0].file, stored("IMG_0001.JPG"));
    EXPECT_FALSE(QFileInfo::exists(context.storageFolder));

    context.dryRun = false;
    const std::atomic_bool cancelled{true};
    context.cancelled = &cancelled;
    result = downloadCameraFiles(*session, {ref("/DCIM/100TEST/IMG_0001.JPG")}, context);
    EXPECT_TRUE(result.written.isEmpty());
    EXPECT_TRUE(result.skipped.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(stored("IMG_0001.JPG")));

    context.cancelled = nullptr;
    result = downloadCameraFiles(*session, {}, context);
    ASSERT_TRUE(result.alert);
    EXPECT_EQ(result.alert->message, QStringLiteral("No Item has been selected"));
}

TEST_F(CameraCommandsTest, DeleteReportsExactlyTheDeletedOnes)
{
    const QList<CameraFileRef> files = {ref("/DCIM/100TEST/MVI_0002.MP4"), ref("/DCIM/100TEST/GONE.JPG"),
                                        ref("/DCIM/100TEST/IMG_0001.JPG")};
    context.dryRun = true;
    QList<CameraFileRef> deleted;
    CommandResult result = deleteCameraFiles(*session, files, context, &deleted);
    EXPECT_TRUE(deleted.isEmpty());
    EXPECT_EQ(result.planned.size(), 2);
    EXPECT_EQ(result.skipped.size(), 1);
    EXPECT_TRUE(QFileInfo::exists(onCamera("DCIM/100TEST/MVI_0002.MP4")));

    context.dryRun = false;
    result = deleteCameraFiles(*session, files, context, &deleted);
    EXPECT_EQ(deleted, QList<CameraFileRef>({files[0], files[2]}));
    ASSERT_EQ(result.skipped.size(), 1);
    EXPECT_EQ(result.skipped[0].path, QStringLiteral("/DCIM/100TEST/GONE.JPG"));
    EXPECT_FALSE(result.skipped[0].reason.isEmpty());
    EXPECT_TRUE(QDir(onCamera("DCIM/100TEST")).isEmpty());
}

TEST_F(CameraCommandsTest, RecordDescribesTheCameraFile)
{
    QString error;
    const QList<CameraFileInfo> files = session->listFiles(nullptr, &error);
    ASSERT_EQ(files.size(), 2);
    QImage picture(4, 3, QImage::Format_RGB32);
    picture.fill(Qt::red);
    const IKImageItem photo = cameraRecord(files[0], picture);
    EXPECT_EQ(photo.fileName, QStringLiteral("IMG_0001.JPG"));
    EXPECT_EQ(photo.fileType, QStringLiteral("Image"));
    EXPECT_EQ(photo.cameraItem, files[0].ref);
    EXPECT_TRUE(photo.filePath.isEmpty());
    EXPECT_EQ(pictureImage(photo.fileImage), picture);
    EXPECT_EQ(photo.fileSize, QStringLiteral("2.13 KB"));
    EXPECT_EQ(photo.fileModifyDate.toUTC(), cameraDate);
    const IKImageItem movie = cameraRecord(files[1], {});
    EXPECT_EQ(movie.fileType, QStringLiteral("Movie"));
    EXPECT_EQ(movie.fileSize, QStringLiteral("55.49 KB"));
}

TEST(CameraPaths, PathsAndRefsRoundTrip)
{
    const QString port = QStringLiteral("usb:001,004");
    EXPECT_EQ(cameraFileFromPath(port, QStringLiteral("IMG_1.JPG")), (CameraFileRef{port, QStringLiteral("/"), QStringLiteral("IMG_1.JPG")}));
    EXPECT_EQ(cameraFileFromPath(port, QStringLiteral("DCIM/IMG_1.JPG")).folder, QStringLiteral("/DCIM"));
    EXPECT_EQ(cameraFileFromPath(port, QStringLiteral("/IMG_1.JPG")).folder, QStringLiteral("/"));
    for (const QString& path : {QStringLiteral("/IMG_1.JPG"), QStringLiteral("/DCIM/100/IMG_1.JPG")})
        EXPECT_EQ(cameraFilePath(cameraFileFromPath(port, path)), path);
    EXPECT_FALSE(isUsableCameraFile(cameraFileFromPath(port, QStringLiteral("/DCIM/"))));
    EXPECT_FALSE(isUsableCameraFile({port, QStringLiteral("DCIM"), QStringLiteral("a.jpg")}));
}

}  // namespace
}  // namespace pelorin

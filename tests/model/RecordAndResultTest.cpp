#include "model/CommandResult.h"
#include "model/IKImageItem.h"

#include <gtest/gtest.h>

namespace pelorin {
namespace {

TEST(IKImageItem, NewRecordIsAnEmptyImage)
{
    const IKImageItem item;
    EXPECT_EQ(item.fileType, QStringLiteral("Image"));
    EXPECT_EQ(item.imageRepresentationType(), BrowserRepresentation::ImagePath);
    EXPECT_TRUE(item.fileMetaArray.isEmpty());
    EXPECT_TRUE(item.filePath.isNull());
    EXPECT_TRUE(item.fileImage.isNull());
    EXPECT_FALSE(item.cameraItem.isValid());
    EXPECT_EQ(item.fileduration, 0.0);
    EXPECT_EQ(item.filelatitude, 0.0);
    EXPECT_EQ(item.filelongtitude, 0.0);
    EXPECT_EQ(item.fileAtitude, 0.0);
    EXPECT_EQ(item.filePixWidth, 0);
    EXPECT_FALSE(item.bhasCopy);
}

TEST(IKImageItem, BrowserOperationsFollowPathAndType)
{
    IKImageItem movie;
    movie.filePath = QStringLiteral("/media/clip.mov");
    movie.fileName = QStringLiteral("clip.mov");
    movie.fileType = QStringLiteral("Movie");
    EXPECT_EQ(movie.imageUID(), movie.filePath);
    EXPECT_EQ(movie.imageRepresentation(), movie.filePath);
    EXPECT_EQ(movie.imageTitle(), QStringLiteral("clip.mov"));
    EXPECT_EQ(movie.imageRepresentationType(), BrowserRepresentation::MoviePath);

    IKImageItem indexed = movie;  // the index's kind text instead of "Movie"
    indexed.fileType = QStringLiteral("QuickTime movie");
    EXPECT_EQ(indexed.imageRepresentationType(), BrowserRepresentation::QuickLookPath);
    EXPECT_EQ(indexed.imageUID(), movie.imageUID());

    IKImageItem audio;
    audio.fileType = QStringLiteral("Audio");
    EXPECT_EQ(audio.imageRepresentationType(), BrowserRepresentation::QuickLookPath);
}

TEST(IKImageItem, RecordsAreIndependentValues)
{
    QString title = QStringLiteral("Before");
    IKImageItem item;
    item.fileTitle = title;
    item.fileMetaArray.append({QStringLiteral("id3"), QStringLiteral("TIT2"), QStringLiteral("id3/TIT2"),
                               QStringLiteral("Before"), QStringLiteral("UTF-8"), {}});
    IKImageItem copy = item;
    title.append(QStringLiteral(" and after"));
    copy.fileMetaArray[0].value = QStringLiteral("Changed");
    EXPECT_EQ(item.fileTitle, QStringLiteral("Before"));
    EXPECT_EQ(item.fileMetaArray[0].value.toString(), QStringLiteral("Before"));
}

TEST(CommandResult, MergeKeepsEverythingAndTheFirstAlert)
{
    CommandResult first;
    first.addWritten(QStringLiteral("/out/a.jpg"));
    first.noteOnce(QStringLiteral("creation dates not set"));
    CommandResult second;
    second.skip(QStringLiteral("/in/b.jpg"), QStringLiteral("not a photo"));
    second.noteOnce(QStringLiteral("creation dates not set"));
    second.alert = Alerts::noSelection();
    first.merge(second);
    EXPECT_EQ(first.written, QStringList{QStringLiteral("/out/a.jpg")});
    ASSERT_EQ(first.skipped.size(), 1);
    EXPECT_EQ(first.notes.size(), 1);
    ASSERT_TRUE(first.alert);
    EXPECT_EQ(first.alert->message, QStringLiteral("No Item has been selected"));
    EXPECT_FALSE(first.succeeded());
}

}  // namespace
}  // namespace pelorin

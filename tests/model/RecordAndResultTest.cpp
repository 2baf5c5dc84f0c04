#include "model/CommandResult.h"
#include "model/IKImageItem.h"

#include <gtest/gtest.h>

namespace pelorin {
namespace {

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

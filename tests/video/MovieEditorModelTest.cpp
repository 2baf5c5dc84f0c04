#include "video/MovieEditorModel.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

using namespace pelorin;

TEST(MovieEditorModel, InformationLinesShowCaptionsForMissingValues)
{
    IKImageItem item;
    item.fileName = "clip.mov";
    item.filePixWidth = 1920;
    item.filepixHeigh = 1080;
    item.filePath = "/videos/clip.mov";
    item.fileType = "QuickTime video";
    const QStringList lines = movieInformationLines(item);
    ASSERT_EQ(lines.size(), 11);
    EXPECT_EQ(lines[0], "File Name: clip.mov");
    EXPECT_EQ(lines[1], "Record Date:");
    EXPECT_EQ(lines[2], "File Dimensions: 1920 x 1080");
    EXPECT_EQ(lines[4], "Location: /videos/clip.mov");
    EXPECT_EQ(lines[5], "Kind: QuickTime video");
    EXPECT_EQ(lines[10], "Created Date:");
    item.filepixHeigh = 0;
    EXPECT_EQ(movieInformationLines(item)[2], "File Dimensions:");
}

TEST(MovieEditorModel, OnlyTouchedAndChangedFieldsAreSaved)
{
    IKImageItem item;
    item.fileTitle = "Old title";
    item.fileDirector = "Dir";
    item.filePublisher = "Pub";
    item.latitudeFormat = "-";
    item.filelatitude = 33.9;
    item.longtitudeFormat = "+";
    item.filelongtitude = 151.2;
    item.AtitudeFormat = "+";
    item.fileAtitude = 10;
    const MovieEditorFields old = MovieEditorFields::fromItem(item);
    EXPECT_EQ(old.make, "Dir");
    EXPECT_EQ(old.releaseYear, "Pub");
    EXPECT_EQ(old.latitude, "-33.900000");

    // Nothing typed: only the location shown goes out again.
    MovieFieldEdits unchanged = movieEditsFromEditor(old, old, {true, true});
    EXPECT_FALSE(unchanged.title.has_value());
    EXPECT_FALSE(unchanged.director.has_value());
    EXPECT_EQ(unchanged.latitude, "-33.900000");
    EXPECT_EQ(unchanged.longitude, "151.200000");

    MovieEditorFields shown = old;
    shown.title = "New title";
    shown.make = "Someone";
    shown.releaseYear = "2020";
    shown.latitude.clear();
    // The camera group was not touched: its change is not saved.
    const MovieFieldEdits edits = movieEditsFromEditor(shown, old, {true, false});
    EXPECT_EQ(edits.title, "New title");
    EXPECT_EQ(edits.director, "Someone");
    EXPECT_FALSE(edits.publisher.has_value());
    EXPECT_FALSE(edits.latitude.has_value());
}

#include "video/MovieReader.h"

#include "ExifTool.h"
#include "TestPaths.h"

#include <QDir>

#include <gtest/gtest.h>

using namespace pelorin;

namespace {

QVariant valueOf(const IKImageItem& item, const QString& identifier)
{
    for (const MediaMetadataItem& entry : item.fileMetaArray) {
        if (entry.identifier == identifier)
            return entry.value;
    }
    return {};
}

}  // namespace

TEST(MovieReader, QuickTimeKeysOfAMacMovieAgreeWithExiftool)
{
    const QString path = test::dataPath("ft-MacBook_keys.mov");
    const MovieReading reading = readMovieFile(path);
    EXPECT_TRUE(reading.containerRead);
    EXPECT_TRUE(reading.problems.isEmpty()) << reading.problems.join("; ").toStdString();
    const IKImageItem& item = reading.item;
    const QJsonObject oracle = test::exiftool(path);
    EXPECT_EQ(item.fileMake, oracle.value("Keys:Make").toString());
    EXPECT_EQ(item.fileModel, oracle.value("Keys:Model").toString());
    EXPECT_EQ(valueOf(item, "mdta/com.apple.quicktime.software").toString(), oracle.value("Keys:Software").toString());
    EXPECT_EQ(item.shootDateStr, "2014-12-19 07:39:06");
    EXPECT_EQ(item.filePixWidth, oracle.value("Track1:ImageWidth").toInt());
    EXPECT_EQ(item.filepixHeigh, oracle.value("Track1:ImageHeight").toInt());
    EXPECT_EQ(item.fileType, "QuickTime video");
    EXPECT_EQ(item.fileName, "ft-MacBook_keys.mov");
    EXPECT_FALSE(item.fileSize.isEmpty());
}

TEST(MovieReader, UserDataAndIsoBoxesGiveTheirItems)
{
    // exiftool's sample holds keys, iTunes atoms and QuickTime user data together.
    const QString path = test::dataPath("et-QuickTime.mov");
    const MovieReading reading = readMovieFile(path);
    const QJsonObject oracle = test::exiftool(path);
    ASSERT_FALSE(reading.item.fileMetaArray.isEmpty());
    for (const MediaMetadataItem& entry : reading.item.fileMetaArray) {
        EXPECT_EQ(entry.identifier, entry.keySpace + "/" + entry.key);
        EXPECT_TRUE(QStringList({"mdta", "udta", "uiso", "itsk"}).contains(entry.keySpace));
    }
    EXPECT_EQ(valueOf(reading.item, "udta/%A9alb").toString(), oracle.value("UserData:Album").toString());
    EXPECT_EQ(valueOf(reading.item, "udta/%A9com").toString(), oracle.value("UserData:Composer").toString());
    EXPECT_EQ(valueOf(reading.item, "mdta/com.apple.quicktime.comment").toString(), oracle.value("Keys:Comment").toString());
    EXPECT_EQ(valueOf(reading.item, "itsk/aART").toString(), oracle.value("ItemList:AlbumArtist").toString());
    EXPECT_EQ(valueOf(reading.item, "itsk/tmpo").toInt(), oracle.value("ItemList:BeatsPerMinute").toInt());
    EXPECT_EQ(reading.item.fileArist, oracle.value("ItemList:Artist").toString());
    EXPECT_FALSE(reading.item.fileImage.isNull());
    if (oracle.contains("ItemList:Title")) {
        EXPECT_EQ(reading.item.fileTitle, oracle.value("ItemList:Title").toString());
    }

    // A 3GPP title box in an iMovie export.
    const MovieReading imovie = readMovieFile(test::dataPath("ft-imovie.mp4"));
    EXPECT_EQ(valueOf(imovie.item, "uiso/titl").toString(), "fixture");
}

TEST(MovieReader, EverySampleReadsWithReasonsAndNoCrash)
{
    for (const QString& name : QDir(test::dataPath("")).entryList(QDir::Files)) {
        SCOPED_TRACE(name.toStdString());
        const MovieReading reading = readMovieFile(test::dataPath(name));
        if (!reading.containerRead) {
            EXPECT_FALSE(reading.problems.isEmpty());
        }
    }
    const MovieReading missing = readMovieFile(test::dataPath("no-such-file.mp4"));
    EXPECT_FALSE(missing.containerRead);
    EXPECT_EQ(missing.problems, QStringList{"the file cannot be read"});

    const MovieReading truncated = readMovieFile(test::dataPath("mutagen-truncated-64bit.mp4"));
    EXPECT_TRUE(truncated.problems.join(" ").contains("truncated"));
}

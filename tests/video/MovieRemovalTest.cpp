#include "video/MovieRemoval.h"
#include "video/MovieReader.h"

#include "EncodedPicture.h"
#include "ExifTool.h"
#include "TestPaths.h"
#include "ToolMovies.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace pelorin;

namespace {

QByteArray jpegBytes() { return test::plainJpeg(8, 8, Qt::blue); }

QStringList tagNames(const QJsonObject& tags, const QStringList& patterns)
{
    QStringList found;
    for (const QString& key : tags.keys()) {
        if (key.startsWith("System:") || key.startsWith("File:"))
            continue;
        for (const QString& pattern : patterns) {
            if (key.contains(pattern))
                found.append(key);
        }
    }
    return found;
}

}  // namespace

TEST(MovieRemoval, EveryLocationArtworkAndTextGoesTechnicalDataStays)
{
    QTemporaryDir dir;
    // A movie with a location in the southern and western hemisphere in every form, and artwork.
    const QString placed = dir.filePath("placed.mp4");
    const RewriteReport prepared = writeMovieChanges(
        test::dataPath("ft-MacBook_keys.mov"),
        {ItemChange::set("uiso/loci", "-33.8688-070.6693+010.000/"),
         ItemChange::set("mdta/com.apple.quicktime.location.ISO6709", "-33.8688-070.6693+010.000/"),
         ItemChange::set("udta/%A9xyz", "-33.8688-070.6693/"), ItemChange::set("itsk/%A9nam", "Title"),
         ItemChange::set("itsk/covr", jpegBytes(), "JPEG"), ItemChange::set("itsk/%A9too", "Encoder 1")},
        placed);
    ASSERT_TRUE(prepared.written) << prepared.error.toStdString();
    ASSERT_GE(tagNames(test::exiftool(placed), {"GPS", "Title", "CoverArt"}).size(), 3);

    CommandContext context;
    context.storageFolder = dir.filePath("out");
    const CommandResult result = removeMovieMetadata({placed}, context);
    ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
    const QString output = context.storageFolder + "/placed.mp4";
    const QJsonObject after = test::exiftool(output);
    EXPECT_EQ(tagNames(after, {"GPS", "Location", "Title", "CoverArt", "CreationDate", "Artist"}), QStringList{});
    EXPECT_EQ(after.value("Keys:Make").toString(), "Apple");
    EXPECT_EQ(after.value("Keys:Model").toString(), "MacBookPro11,3");
    EXPECT_EQ(after.value("ItemList:Encoder").toString(), "Encoder 1");
    const MovieReading reading = readMovieFile(output);
    EXPECT_TRUE(reading.item.latitudeFormat.isEmpty());
    EXPECT_TRUE(reading.item.fileImage.isNull());
    EXPECT_TRUE(reading.item.shootDateStr.isEmpty());
}

TEST(MovieRemoval, ClearsEveryKindOfTextItemOfARichMovie)
{
    const MovieReading source = readMovieFile(test::dataPath("et-QuickTime.mov"));
    const QList<ItemChange> removals = descriptiveItemRemovals(source.item.fileMetaArray);
    QStringList identifiers;
    for (const ItemChange& change : removals) {
        EXPECT_FALSE(change.value.has_value());
        identifiers.append(change.identifier);
    }
    EXPECT_TRUE(identifiers.contains("itsk/covr"));
    EXPECT_TRUE(identifiers.contains("udta/%A9ART"));
    EXPECT_TRUE(identifiers.contains("mdta/com.apple.quicktime.album"));
    EXPECT_FALSE(identifiers.contains("udta/%A9fmt"));
    EXPECT_EQ(identifiers.count("itsk/%A9ART"), 1);

    QTemporaryDir dir;
    CommandContext context;
    context.storageFolder = dir.path();
    context.dryRun = true;
    const CommandResult planned = removeMovieMetadata({test::dataPath("et-QuickTime.mov")}, context);
    EXPECT_GE(planned.planned.size(), 15);
    EXPECT_TRUE(QDir(dir.path()).isEmpty());
}

TEST(MovieRemoval, XmpOutsideTheMovieBoxBecomesPaddingAndTheMediaStays)
{
    QTemporaryDir dir;
    const QString source = dir.filePath("clip.mp4");
    ASSERT_TRUE(QFile::copy(test::dataPath("ft-imovie.mp4"), source));
    QFile::setPermissions(source, QFile::ReadOwner | QFile::WriteOwner);
    // exiftool files an MP4's XMP in a file-level 'uuid' box.
    ASSERT_TRUE(test::exiftoolWrite(source, {"-XMP-dc:Title=Secret", "-XMP-dc:Creator=Someone"}));
    ASSERT_EQ(test::exiftool(source).value("XMP-dc:Title").toString(), "Secret");
    CommandContext context;
    context.storageFolder = dir.filePath("out");
    ASSERT_TRUE(removeMovieMetadata({source}, context).succeeded());
    const QString output = dir.filePath("out/clip.mp4");
    const QJsonObject after = test::exiftool(output);
    for (auto it = after.begin(); it != after.end(); ++it)
        EXPECT_FALSE(it.key().startsWith("XMP")) << it.key().toStdString();
    EXPECT_EQ(QFileInfo(output).size(), QFileInfo(source).size());
    EXPECT_EQ(test::streamHash(output), test::streamHash(source));
}

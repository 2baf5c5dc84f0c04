#include "video/MovieItemChanges.h"
#include "video/MovieReader.h"

#include "ExifTool.h"
#include "TestPaths.h"
#include "ToolMovies.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace pelorin;

namespace {

QStringList identifiers(const QString& path)
{
    QStringList out;
    for (const MediaMetadataItem& item : readMovieFile(path).item.fileMetaArray)
        out.append(item.identifier);
    return out;
}

}  // namespace

TEST(MovieItemChanges, TitleOnAMovieWithKeysKeepsEverythingElse)
{
    QTemporaryDir dir;
    const QString source = test::dataPath("ft-MacBook_keys.mov");
    const QString target = dir.filePath("titled.mov");
    const RewriteReport report =
        writeMovieChanges(source, {ItemChange::set("itsk/%A9nam", QString::fromUtf8("Névé")),
                                   ItemChange::set("mdta/com.apple.quicktime.director", "Dir")},
                          target);
    ASSERT_TRUE(report.written) << report.error.toStdString();
    EXPECT_EQ(test::ffprobeTags(target).value("title"), QString::fromUtf8("Névé"));
    const QJsonObject before = test::exiftool(source);
    const QJsonObject after = test::exiftool(target);
    EXPECT_EQ(after.value("ItemList:Title").toString(), QString::fromUtf8("Névé"));
    EXPECT_EQ(after.value("Keys:Director").toString(), "Dir");
    for (const char* kept : {"Keys:Make", "Keys:Model", "Keys:Software", "Keys:CreationDate"})
        EXPECT_EQ(after.value(kept), before.value(kept)) << kept;
    EXPECT_EQ(test::streamHash(target), test::streamHash(source));
    const MovieReading reading = readMovieFile(target);
    EXPECT_EQ(reading.item.fileTitle, QString::fromUtf8("Névé"));
    EXPECT_EQ(reading.item.fileDirector, "Dir");
    EXPECT_TRUE(reading.problems.isEmpty()) << reading.problems.join("; ").toStdString();
}

TEST(MovieItemChanges, RemovingAKeyRenumbersTheOthers)
{
    QTemporaryDir dir;
    const QString target = dir.filePath("nomake.mov");
    const RewriteReport report = writeMovieChanges(
        test::dataPath("ft-MacBook_keys.mov"), {ItemChange::remove("mdta/com.apple.quicktime.make")}, target);
    ASSERT_TRUE(report.written) << report.error.toStdString();
    const QJsonObject after = test::exiftool(target);
    EXPECT_FALSE(after.contains("Keys:Make"));
    EXPECT_EQ(after.value("Keys:Model").toString(), "MacBookPro11,3");
    EXPECT_EQ(after.value("Keys:CreationDate").toString(), "2014:12:19 07:39:06+07:00");
    // Three keys of the movie and the track's pixel density.
    EXPECT_EQ(identifiers(target).size(), 4);
}

TEST(MovieItemChanges, UserDataAndLocationBoxesOnAnMp4)
{
    QTemporaryDir dir;
    const QString source = test::dataPath("ft-imovie.mp4");
    const QString target = dir.filePath("placed.mp4");
    const RewriteReport report = writeMovieChanges(
        source, {ItemChange::set("uiso/loci", "-33.8688+151.2093+010.000/"), ItemChange::set("udta/%A9nam", "Quay"),
                 ItemChange::set("uiso/titl", "Harbour"), ItemChange::set("uiso/kywd", "sea, sand")},
        target);
    ASSERT_TRUE(report.written) << report.error.toStdString();
    EXPECT_EQ(test::streamHash(target), test::streamHash(source));
    const QJsonObject after = test::exiftool(target);
    EXPECT_NEAR(after.value("Composite:GPSLatitude").toDouble(), -33.8688, 1e-4);
    EXPECT_NEAR(after.value("Composite:GPSLongitude").toDouble(), 151.2093, 1e-4);
    EXPECT_EQ(after.value("UserData:Keywords").toString(), "sea, sand");
    const MovieReading reading = readMovieFile(target);
    EXPECT_EQ(reading.item.latitudeFormat, "-");
    EXPECT_NEAR(reading.item.filelatitude, 33.8688, 1e-4);
    EXPECT_EQ(reading.item.longtitudeFormat, "+");
    QStringList texts;
    for (const MediaMetadataItem& item : reading.item.fileMetaArray)
        texts.append(item.identifier + "=" + item.value.toString());
    EXPECT_TRUE(texts.contains("udta/%A9nam=Quay"));
    EXPECT_TRUE(texts.contains("uiso/titl=Harbour"));
    EXPECT_EQ(texts.filter("uiso/titl").size(), 1);  // the iMovie title was replaced

    // Bad requests write nothing.
    const QString refused = dir.filePath("refused.mp4");
    EXPECT_FALSE(writeMovieChanges(source, {ItemChange::set("uiso/loci", "nowhere")}, refused).written);
    EXPECT_FALSE(writeMovieChanges(source, {ItemChange::set("id3/TIT2", "x")}, refused).written);
    EXPECT_FALSE(QFile::exists(refused));
}

#include "DateTestFiles.h"
#include "ScopedTimeZone.h"
#include "dates/PhotoDateCopy.h"
#include "dates/PhotoDateReading.h"

namespace pelorin {
namespace {

using test::clockOf;
using test::DatePhotos;
using test::tag;

CommandContext contextFor(const DatePhotos& photos)
{
    CommandContext context;
    context.storageFolder = photos.storage();
    return context;
}

TEST(PhotoDateCopy, ExifDateBecomesTheFileDatesOnTheLocalClock)
{
    test::ScopedTimeZone tz("Pacific/Chatham");
    DatePhotos photos;
    const QString source = photos.add(QStringLiteral("exiv2-nikon-d70.jpg"));
    ASSERT_TRUE(copyPhotoDate(DateCopy::ExifToCreated, DatePhotos::select({source}), contextFor(photos)).succeeded());
    EXPECT_EQ(test::fileHash(photos.output(source)), test::fileHash(source));
    EXPECT_EQ(tag(photos.output(source), QStringLiteral("System:FileModifyDate")).left(19), QStringLiteral("2004:03:30 10:43:46"));
}

TEST(PhotoDateCopy, NameGoesToTheCommentWithoutItsExtension)
{
    DatePhotos photos;
    const QString source = photos.add(QStringLiteral("exiv2-nikon-d70.jpg"), QStringLiteral("harbour.at.dawn.jpg"));
    test::setLocalModified(source, QStringLiteral("2019:05:05 05:05:05"));
    ASSERT_TRUE(copyPhotoDate(DateCopy::NameToComment, DatePhotos::select({source}), contextFor(photos)).succeeded());
    EXPECT_EQ(tag(photos.output(source), QStringLiteral("ExifIFD:UserComment")), QStringLiteral("harbour.at.dawn"));
    EXPECT_EQ(test::localModified(photos.output(source)), clockOf(QStringLiteral("2019:05:05 05:05:05")));
}

TEST(PhotoDateCopy, CreationDateBecomesTheCameraDatesAsLocalTime)
{
    test::ScopedTimeZone tz("America/Santiago");
    DatePhotos photos;
    const QString source = photos.add(QStringLiteral("et-Canon_1DmkIII.jpg"));
    const QString expected = localDateText(creationOrModification(readFileDates(source)));
    ASSERT_TRUE(copyPhotoDate(DateCopy::CreatedToCamera, DatePhotos::select({source}), contextFor(photos)).succeeded());
    const QJsonObject tags = test::exiftool(photos.output(source));
    EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), expected);
    EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:CreateDate")).toString(), expected);
    EXPECT_EQ(tags.value(QStringLiteral("IFD0:ModifyDate")).toString(), expected);
}

TEST(PhotoDateCopy, FileDateCopiesReplaceAStaleOutput)
{
    DatePhotos photos;
    const QString source = photos.add(QStringLiteral("et-GPS.jpg"));
    test::setLocalModified(source, QStringLiteral("2018:02:03 04:05:06"));
    const FileDateReading dates = readFileDates(source);
    ASSERT_TRUE(QDir().mkpath(photos.storage()));
    QFile stale(photos.output(source));
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
    stale.write("an older output");
    stale.close();

    const CommandResult created = copyPhotoDate(DateCopy::CreatedToModified, DatePhotos::select({source}), contextFor(photos));
    ASSERT_TRUE(created.succeeded());
    EXPECT_EQ(test::fileHash(photos.output(source)), test::fileHash(source));
    EXPECT_EQ(readFileDates(photos.output(source)).modified.toSecsSinceEpoch(), dates.created.toSecsSinceEpoch());

    const CommandResult modified = copyPhotoDate(DateCopy::ModifiedToCreated, DatePhotos::select({source}), contextFor(photos));
    EXPECT_TRUE(modified.skipped.isEmpty());
    EXPECT_EQ(test::localModified(photos.output(source)), clockOf(QStringLiteral("2018:02:03 04:05:06")));
}

}  // namespace
}  // namespace pelorin

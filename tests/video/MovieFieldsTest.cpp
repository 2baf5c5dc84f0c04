#include "video/MovieRecordFill.h"
#include "video/MovieItems.h"

#include "EncodedPicture.h"
#include "model/ItemPictureImage.h"


#include <gtest/gtest.h>

using namespace pelorin;

namespace {

MediaMetadataItem item(const QString& identifier, const QVariant& value)
{
    const qsizetype slash = identifier.indexOf('/');
    return {identifier.left(slash), identifier.mid(slash + 1), identifier, value, "UTF-8", {}};
}

}  // namespace

TEST(MovieLocation, SignsAndMagnitudesOfIso6709Texts)
{
    IKImageItem full;
    applyIso6709Location(full, "+37.3317-122.0307+020.000/");
    EXPECT_EQ(full.latitudeFormat, "+");
    EXPECT_EQ(full.longtitudeFormat, "-");
    EXPECT_EQ(full.AtitudeFormat, "+");
    EXPECT_DOUBLE_EQ(full.filelatitude, 37.3317);
    EXPECT_DOUBLE_EQ(full.filelongtitude, 122.0307);
    EXPECT_DOUBLE_EQ(full.fileAtitude, 20.0);

    // Without an altitude the longitude stays unread.
    IKImageItem two;
    applyIso6709Location(two, "-33.8688+151.2093/");
    EXPECT_EQ(two.latitudeFormat, "-");
    EXPECT_EQ(two.longtitudeFormat, "+");
    EXPECT_DOUBLE_EQ(two.filelatitude, 33.8688);
    EXPECT_DOUBLE_EQ(two.filelongtitude, 0.0);
    EXPECT_TRUE(two.AtitudeFormat.isEmpty());

    IKImageItem empty;
    applyIso6709Location(empty, "");
    EXPECT_TRUE(empty.latitudeFormat.isEmpty());

    // Our own text of a location reads back the same way.
    IKImageItem back;
    applyIso6709Location(back, iso6709Text(-12.5, -7.25, -3));
    EXPECT_EQ(back.latitudeFormat + back.longtitudeFormat + back.AtitudeFormat, "---");
    EXPECT_DOUBLE_EQ(back.filelatitude, 12.5);
    EXPECT_DOUBLE_EQ(back.filelongtitude, 7.25);
    EXPECT_DOUBLE_EQ(back.fileAtitude, 3.0);
}

TEST(MovieDate, ZoneSuffixesAndFallbacks)
{
    IKImageItem plus;
    applyMovieDateText(plus, "2019-05-06T07:08:09+0800");
    EXPECT_EQ(plus.shootDateStr, "2019-05-06 07:08:09");
    EXPECT_EQ(plus.shootDate, QDateTime(QDate(2019, 5, 6), QTime(7, 8, 9)));

    IKImageItem zulu;
    applyMovieDateText(zulu, "2019-05-06T07:08:09Z");
    EXPECT_EQ(zulu.shootDateStr, "2019-05-06 07:08:09");
    EXPECT_EQ(zulu.shootDate, QDateTime(QDate(2019, 5, 6), QTime(7, 8, 9)));

    // A western offset has no '+': the pieces are rebuilt and the offset dropped.
    IKImageItem west;
    applyMovieDateText(west, "2018-02-07T10:15:08-0500");
    EXPECT_EQ(west.shootDateStr, "2018-02-07 10:15:08");
    EXPECT_TRUE(west.shootDate.isValid());

    IKImageItem exif;
    applyMovieDateText(exif, "2016:05:01 12:30:45");
    EXPECT_EQ(exif.shootDate, QDateTime(QDate(2016, 5, 1), QTime(12, 30, 45)));

    // Too few pieces: the text stays, no date.
    IKImageItem year;
    applyMovieDateText(year, "2016");
    EXPECT_EQ(year.shootDateStr, "2016");
    EXPECT_FALSE(year.shootDate.isValid());

    // The part before '+' that neither form takes leaves the date unset.
    IKImageItem bad;
    applyMovieDateText(bad, "yesterday+0100");
    EXPECT_EQ(bad.shootDateStr, "yesterday");
    EXPECT_FALSE(bad.shootDate.isValid());
}

TEST(MovieItemsToRecord, IdentifierTableWithLaterItemsWinning)
{
    const QByteArray png = test::plainPicture(4, 3, Qt::red, "PNG");

    IKImageItem record;
    applyMovieItems(record, {
        item("itsk/%A9nam", "First"),
        item("udta/%A9nam", "Not a title field"),
        item("itsk/%A9nam", "Second"),
        item("mdta/com.apple.quicktime.make", "Apple"),
        item("mdta/com.apple.quicktime.model", "iPhone"),
        item("mdta/com.apple.proapps.manufacturer", "Maker"),
        item("itsk/%A9prd", "Producer"),
        item("udta/%A9key", "holiday, beach"),
        item("mdta/com.apple.quicktime.location.ISO6709", "+01.0000+002.0000+003.000/"),
        item("uiso/loci", "-10.0000-020.0000+000.000/"),
        item("uiso/date", "2016-05-01T12:30:45+0200"),
        item("itsk/covr", png),
    });
    EXPECT_EQ(record.fileTitle, "Second");
    EXPECT_EQ(record.fileMake, "Apple");
    EXPECT_EQ(record.fileModel, "iPhone");
    EXPECT_EQ(record.fileproducer, "Producer");
    EXPECT_EQ(record.fileKeyWords, "holiday, beach");
    EXPECT_EQ(record.latitudeFormat, "-");
    EXPECT_DOUBLE_EQ(record.filelongtitude, 20.0);
    EXPECT_EQ(record.shootDateStr, "2016-05-01 12:30:45");
    EXPECT_EQ(pictureImage(record.fileImage).size(), QSize(4, 3));
}

#include "DateTestFiles.h"
#include "ScopedTimeZone.h"
#include "dates/GpsSave.h"

namespace pelorin {
namespace {

using test::clockOf;
using test::DatePhotos;

CommandContext contextFor(const DatePhotos& photos)
{
    CommandContext context;
    context.storageFolder = photos.storage();
    return context;
}

TEST(GpsSave, SouthWestBelowSeaLevelReadsBackAndReplacesTheWholeGroup)
{
    test::ScopedTimeZone tz("America/Santiago");
    DatePhotos photos;
    const QString source = photos.add(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"));  // has map datum, method
    const QByteArray hash = test::fileHash(source);
    const GpsInput input{QStringLiteral("-33.45"), QStringLiteral("-70.66"), QStringLiteral("-5"),
                         QStringLiteral("2014:05:01"), QStringLiteral("10:20:30")};
    const CommandResult result = savePhotoGps(DatePhotos::select({source}), input, contextFor(photos));
    ASSERT_TRUE(result.succeeded());

    const QString output = photos.output(source);
    const QJsonObject gps = test::tagsOf(test::exiftool(output), {QStringLiteral("GPS:")});
    EXPECT_NEAR(gps.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 33.45, 1e-6);
    EXPECT_EQ(gps.value(QStringLiteral("GPS:GPSLatitudeRef")).toString(), QStringLiteral("S"));
    EXPECT_NEAR(gps.value(QStringLiteral("GPS:GPSLongitude")).toDouble(), 70.66, 1e-6);
    EXPECT_EQ(gps.value(QStringLiteral("GPS:GPSLongitudeRef")).toString(), QStringLiteral("W"));
    EXPECT_NEAR(gps.value(QStringLiteral("GPS:GPSAltitude")).toDouble(), 5.0, 1e-6);
    EXPECT_EQ(gps.value(QStringLiteral("GPS:GPSAltitudeRef")).toInt(), 1);
    EXPECT_EQ(gps.value(QStringLiteral("GPS:GPSDateStamp")).toString(), QStringLiteral("2014:05:01"));
    EXPECT_FALSE(gps.contains(QStringLiteral("GPS:GPSMapDatum")));
    EXPECT_FALSE(gps.contains(QStringLiteral("GPS:GPSProcessingMethod")));
    EXPECT_EQ(test::localModified(output), clockOf(QStringLiteral("2014:05:01 10:20:30")));
    EXPECT_EQ(test::fileHash(source), hash);
}

TEST(GpsSave, DashDateStampsSetFileDatesAndPlaceholdersLeaveThemAlone)
{
    test::ScopedTimeZone tz("Pacific/Chatham");
    DatePhotos photos;
    const QString dash = photos.add(QStringLiteral("et-GPS.jpg"), QStringLiteral("dash.jpg"));
    const QString placeholder = photos.add(QStringLiteral("et-GPS.jpg"), QStringLiteral("placeholder.jpg"));
    GpsInput input{QStringLiteral("10"), QStringLiteral("20"), QStringLiteral("30"), QStringLiteral("2014-05-01"),
                   QStringLiteral("10:20:30")};
    ASSERT_TRUE(savePhotoGps(DatePhotos::select({dash}), input, contextFor(photos)).succeeded());
    EXPECT_EQ(test::localModified(photos.output(dash)), clockOf(QStringLiteral("2014:05:01 10:20:30")));

    input.dateStamp = QStringLiteral("YYYY:MM:DD");
    input.timeStamp = QStringLiteral("HH:MM:SS");
    ASSERT_FALSE(savePhotoGps(DatePhotos::select({placeholder}), input, contextFor(photos)).alert);
    EXPECT_GT(readFileDates(photos.output(placeholder)).modified, QDateTime::currentDateTimeUtc().addSecs(-600));
}

TEST(GpsSave, InvalidInputAlertsAndWritesNothing)
{
    DatePhotos photos;
    const QString source = photos.add(QStringLiteral("et-GPS.jpg"));
    for (const GpsInput& bad : {GpsInput{QStringLiteral("north"), QStringLiteral("1"), QStringLiteral("1"), {}, {}},
                                GpsInput{QStringLiteral("1"), {}, QStringLiteral("1"), {}, {}}}) {
        const CommandResult result = savePhotoGps(DatePhotos::select({source}), bad, contextFor(photos));
        ASSERT_TRUE(result.alert);
        EXPECT_EQ(result.alert->message, QStringLiteral("Vaule Error"));
        EXPECT_EQ(result.alert->informativeText, QStringLiteral("Each value cannot be empty."));
    }
    EXPECT_FALSE(QFileInfo::exists(photos.storage()));
}

}  // namespace
}  // namespace pelorin

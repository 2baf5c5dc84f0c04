#include "dates/GpsGroup.h"

#include <gtest/gtest.h>

namespace pelorin {
namespace {

TEST(GpsGroup, SignsBecomeReferencesAndBadInputAnAlert)
{
    const GpsGroupResult south = buildGpsGroup({QStringLiteral("-33.45"), QStringLiteral("-70.66"), QStringLiteral("-5"),
                                                QStringLiteral("2014:05:01"), QStringLiteral("10:20:30")});
    ASSERT_FALSE(south.alert);
    EXPECT_DOUBLE_EQ(south.group.value(QStringLiteral("Latitude")).toDouble(), 33.45);
    EXPECT_EQ(south.group.value(QStringLiteral("LatitudeRef")).toString(), QStringLiteral("S"));
    EXPECT_EQ(south.group.value(QStringLiteral("LongitudeRef")).toString(), QStringLiteral("W"));
    EXPECT_DOUBLE_EQ(south.group.value(QStringLiteral("Altitude")).toDouble(), 5.0);
    EXPECT_EQ(south.group.value(QStringLiteral("AltitudeRef")).toInt(), 1);
    EXPECT_EQ(south.group.value(QStringLiteral("DateStamp")).toString(), QStringLiteral("2014:05:01"));

    const GpsGroupResult north = buildGpsGroup({QStringLiteral("0"), QStringLiteral("180"), QStringLiteral("0"), {}, {}});
    ASSERT_FALSE(north.alert);
    EXPECT_EQ(north.group.value(QStringLiteral("LatitudeRef")).toString(), QStringLiteral("N"));
    EXPECT_EQ(north.group.value(QStringLiteral("LongitudeRef")).toString(), QStringLiteral("E"));
    EXPECT_FALSE(north.group.contains(QStringLiteral("DateStamp")));

    // An altitude left empty is left out, not taken as sea level.
    const GpsGroupResult flat = buildGpsGroup({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral(" "), {}, {}});
    ASSERT_FALSE(flat.alert);
    EXPECT_FALSE(flat.group.contains(QStringLiteral("Altitude")));
    EXPECT_FALSE(flat.group.contains(QStringLiteral("AltitudeRef")));

    for (const GpsInput& bad : {GpsInput{{}, QStringLiteral("1"), QStringLiteral("1"), {}, {}},
                                GpsInput{QStringLiteral("north"), QStringLiteral("1"), QStringLiteral("1"), {}, {}},
                                GpsInput{QStringLiteral("90.5"), QStringLiteral("1"), QStringLiteral("1"), {}, {}},
                                GpsInput{QStringLiteral("1"), QStringLiteral("-180.01"), QStringLiteral("1"), {}, {}},
                                GpsInput{QStringLiteral("1"), QStringLiteral("1"), QStringLiteral("high"), {}, {}}}) {
        const GpsGroupResult r = buildGpsGroup(bad);
        ASSERT_TRUE(r.alert);
        EXPECT_EQ(r.alert->message, QStringLiteral("Vaule Error"));
        EXPECT_TRUE(r.group.isEmpty());
    }
}

}  // namespace
}  // namespace pelorin

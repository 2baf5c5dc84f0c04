#include "model/DateText.h"
#include "model/LocalTime.h"

#include "ScopedTimeZone.h"

#include <gtest/gtest.h>

#include <limits>

namespace pelorin {
namespace {

using test::ScopedTimeZone;

const char* const kZones[] = {"America/Santiago", "Asia/Kolkata", "Europe/Berlin", "UTC",
                              "Pacific/Chatham"};

TEST(DateText, AcceptsBothFormsAsWholeTextsOfRealDates)
{
    EXPECT_TRUE(CheckDateFormatWithDateString(QStringLiteral("2019:05:06 07:08:09")));
    EXPECT_TRUE(CheckDateFormatWithDateString(QStringLiteral("2019-05-06 07:08:09")));
    EXPECT_TRUE(CheckDateFormatWithDateString(QStringLiteral(" 2020:02:29 23:59:59 ")));
    for (const char* bad : {"2019/05/06 07:08:09", "2019:05:06", "2019:05:06 07:08",
                            "2019:05:06 07:08:09x", "2019:05-06 07:08:09", "2019:02:29 00:00:00",
                            "2019:13:01 00:00:00", "2019:04:31 00:00:00", "2019:05:06 24:00:00",
                            "2019:05:06 07:60:09", "0000:00:00 00:00:00", "2019:5:6 7:8:9",
                            "２０19:05:06 07:08:09", "", "    "}) {
        EXPECT_FALSE(CheckDateFormatWithDateString(QString::fromUtf8(bad))) << bad;
    }
}

TEST(DateText, ParseAndRenderAreTheIdentityInEveryZone)
{
    const QStringList texts = {QStringLiteral("2019:05:06 07:08:09"), QStringLiteral("0001:01:01 00:00:00"),
                               QStringLiteral("9999:12:31 23:59:59"), QStringLiteral("1969:12:31 23:59:59"),
                               QStringLiteral("2022:09:11 00:30:00"),  // skipped hour in Santiago
                               QStringLiteral("2023:03:26 02:30:00")}; // skipped hour in Berlin
    for (const char* zone : kZones) {
        ScopedTimeZone tz(zone);
        for (const QString& text : texts) {
            const auto clock = parseDateText(text);
            ASSERT_TRUE(clock) << text.toStdString();
            EXPECT_EQ(renderDateText(*clock, DateTextForm::Exif), text) << zone;
            QString dash = text;
            dash[4] = QLatin1Char('-');
            dash[7] = QLatin1Char('-');
            EXPECT_EQ(renderDateText(*clock, DateTextForm::Dash), dash) << zone;
            EXPECT_EQ(GetChangeDateforExifDate(text, 0), dash) << zone;
        }
    }
}

TEST(DateText, ShiftMovesTheClockFaceByExactlyTheSpan)
{
    for (const char* zone : kZones) {
        ScopedTimeZone tz(zone);
        // Across the start and the end of daylight-saving time in both hemispheres.
        EXPECT_EQ(GetChangeDateforExifDate(QStringLiteral("2023:03:25 10:15:00"), 86400),
                  QStringLiteral("2023-03-26 10:15:00")) << zone;
        EXPECT_EQ(GetChangeDateforExifDate(QStringLiteral("2022-09-10 00:30:00"), 86400),
                  QStringLiteral("2022-09-11 00:30:00")) << zone;
        EXPECT_EQ(GetChangeDateforExifDate(QStringLiteral("2023:04:02 12:00:00"), -86400 * 7),
                  QStringLiteral("2023-03-26 12:00:00")) << zone;
    }
    // Spans beyond 32 bits: one hundred 365-day years.
    EXPECT_EQ(GetChangeDateforExifDate(QStringLiteral("1920:01:01 00:00:00"), 100.0 * 31536000),
              QStringLiteral("2019-12-07 00:00:00"));
    // A fraction of a second shows as the earlier second, as a clock would.
    EXPECT_EQ(GetChangeDateforExifDate(QStringLiteral("2020:01:01 00:00:00"), 0.7),
              QStringLiteral("2020-01-01 00:00:00"));
    EXPECT_EQ(GetChangeDateforExifDate(QStringLiteral("2020:01:01 00:00:00"), -0.3),
              QStringLiteral("2019-12-31 23:59:59"));
}

TEST(DateText, ShiftThatCannotBeRenderedLeavesTheTextAlone)
{
    const QString text = QStringLiteral("9999:12:31 23:59:59");
    EXPECT_EQ(GetChangeDateforExifDate(text, 1), text);
    EXPECT_EQ(GetChangeDateforExifDate(QStringLiteral("0001:01:01 00:00:00"), -1),
              QStringLiteral("0001:01:01 00:00:00"));
    EXPECT_EQ(GetChangeDateforExifDate(QStringLiteral("not a date"), 60), QStringLiteral("not a date"));
    EXPECT_EQ(GetChangeDateforExifDate(text, std::numeric_limits<double>::quiet_NaN()), text);
    EXPECT_EQ(GetChangeDateforExifDate(text, -std::numeric_limits<double>::infinity()), text);
    EXPECT_EQ(GetChangeDateforExifDate(text, -1e300), text);
}

TEST(DateText, ExifFormReplacesEveryDash)
{
    EXPECT_EQ(toExifForm(QStringLiteral("2015-06-01 10:00:00")), QStringLiteral("2015:06:01 10:00:00"));
}

// File dates: a wall-clock reading becomes an instant in the local zone only at the end.
QDateTime utc(const char* iso) { return QDateTime::fromString(QString::fromLatin1(iso), Qt::ISODate); }

WallClock clock(const char* text) { return *parseDateText(QString::fromLatin1(text)); }

TEST(LocalTime, ReadingsBecomeLocalInstants)
{
    {
        ScopedTimeZone tz("Asia/Kolkata");
        EXPECT_EQ(instantFromWallClock(clock("2019:05:06 07:08:09")), utc("2019-05-06T01:38:09Z"));
    }
    {
        ScopedTimeZone tz("America/Santiago");
        EXPECT_EQ(instantFromWallClock(clock("2019:01:15 12:00:00")), utc("2019-01-15T15:00:00Z"));
        EXPECT_EQ(instantFromWallClock(clock("2019:07:15 12:00:00")), utc("2019-07-15T16:00:00Z"));
    }
}

TEST(LocalTime, SkippedReadingsMoveToTheFirstValidInstantAndRepeatedOnesTakeTheFirst)
{
    {
        ScopedTimeZone tz("America/Santiago");
        // Clocks jumped from 00:00 to 01:00 on 2022-09-11.
        const QDateTime gap = instantFromWallClock(clock("2022:09:11 00:30:00"));
        EXPECT_EQ(gap, utc("2022-09-11T04:00:00Z"));
        EXPECT_EQ(renderDateText(*wallClockFromInstant(gap), DateTextForm::Exif),
                  QStringLiteral("2022:09:11 01:00:00"));
        // Clocks went back from 00:00 to 23:00 on 2022-04-03: 23:30 happened twice.
        EXPECT_EQ(instantFromWallClock(clock("2022:04:02 23:30:00")), utc("2022-04-03T02:30:00Z"));
    }
    {
        ScopedTimeZone tz("Europe/Berlin");
        EXPECT_EQ(instantFromWallClock(clock("2023:03:26 02:30:00")), utc("2023-03-26T01:00:00Z"));
        EXPECT_EQ(instantFromWallClock(clock("2023:10:29 02:30:00")), utc("2023-10-29T00:30:00Z"));
    }
}

TEST(LocalTime, InstantToReadingAndBackIsTheIdentityOutsideGaps)
{
    for (const char* zone : kZones) {
        ScopedTimeZone tz(zone);
        for (qint64 t = utc("2021-01-01T00:00:00Z").toSecsSinceEpoch();
             t < utc("2023-01-01T00:00:00Z").toSecsSinceEpoch(); t += 3 * 3600 + 17) {
            const QDateTime instant = QDateTime::fromSecsSinceEpoch(t, Qt::UTC);
            const auto reading = wallClockFromInstant(instant);
            ASSERT_TRUE(reading);
            const QDateTime back = instantFromWallClock(*reading);
            // In a repeated hour the first instant comes back; that is one hour earlier at most.
            EXPECT_LE(instant.secsTo(back), 0) << zone << " " << t;
            EXPECT_GE(instant.secsTo(back), -3600) << zone << " " << t;
            EXPECT_EQ(wallClockFromInstant(back), reading) << zone << " " << t;
        }
    }
}

}  // namespace
}  // namespace pelorin

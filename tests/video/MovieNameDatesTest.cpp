#include "video/MovieNameDates.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

using namespace pelorin;

TEST(MovieNameDates, RealWorldCameraAndPhoneNames)
{
    const std::pair<const char*, const char*> names[] = {
        {"VID_20160501_123045", "2016:05:01 12:30:45"},
        {"IMG_20160501_123045", "2016:05:01 12:30:45"},
        {"PXL_20210101_123456789", "2021:01:01 12:34:56"},
        {"PXL_20210101_123456789.TS", "2021:01:01 12:34:56"},
        {"VID-20160501-WA0001", "2016:05:01 00:00:00"},
        {"2016-05-01 12.30.45", "2016:05:01 12:30:45"},
        {"Screen Recording 2021-01-01 at 12.00.00", "2021:01:01 12:00:00"},
        {"20160501T123045", "2016:05:01 12:30:45"},
        {"20160501_123045", "2016:05:01 12:30:45"},
        {"signal-2022-03-04-10-11-12-123", "2022:03:04 10:11:12"},
        {"video_2019-08-07_21-30-15", "2019:08:07 21:30:15"},
        {"20160501", "2016:05:01 00:00:00"},
        {"a20160501_1230", "2016:05:01 00:00:00"},
        // Digits and separators that reassemble into no date text: the detector's date counts.
        {"2016.05.01 beach_day", "2016:05:01 00:00:00"},
        {"20210101. party_1", "2021:01:01 00:00:00"},
        {"MOV_0042", nullptr},
        {"holiday", nullptr},
        {"VID_20161399_999999", nullptr},
        {"", nullptr},
    };
    for (const auto& [name, expected] : names) {
        const std::optional<QString> found = dateTextFromFileName(QString::fromUtf8(name));
        if (expected) {
            EXPECT_EQ(found.value_or("none"), QString::fromLatin1(expected)) << name;
        } else {
            EXPECT_FALSE(found.has_value()) << name << " gave " << found->toStdString();
        }
    }
}

TEST(MovieNameDates, ManualParseAsTheEditorDoesIt)
{
    EXPECT_EQ(manualDateTextFromName("2016-05-01 12.30.45"), "2016:05:01 12:30:45");
    EXPECT_EQ(manualDateTextFromName("VID_20160501_123045"), "2016:05:01 12:30:45");
    // A time part shorter than six characters gives midnight.
    EXPECT_EQ(manualDateTextFromName("a20160501_1230"), "2016:05:01 00:00:00");
    // No separator, no manual date: only the detector can help.
    EXPECT_FALSE(manualDateTextFromName("20160501").has_value());
    EXPECT_EQ(detectDateText("20160501"), "2016:05:01 00:00:00");
    // Too long a digit run is no date.
    EXPECT_FALSE(detectDateText("1234567890123456789").has_value());
}

#include "model/DisplayTexts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace pelorin {
namespace {

TEST(DisplayTexts, SizeTextsUseDecimalUnitsInSinglePrecision)
{
    const std::pair<std::uint64_t, const char*> cases[] = {
        {0, "0 bytes"},
        {999, "999 bytes"},
        {1000, "1.00 KB"},
        {1536, "1.54 KB"},
        {1065, "1.07 KB"},  // single precision rounds up where double gives 1.06
        {999999, "1000.00 KB"},
        {1000000, "1.00 MB"},
        {999999999, "1000.00 MB"},
        {1000000000, "1.00 GB"},
        {999999995904, "1000.00 GB"},
        {1000000000000, "1.00 TB"},
    };
    for (const auto& [size, text] : cases)
        EXPECT_EQ(sizeText(size), QString::fromLatin1(text)) << size;
}

TEST(DisplayTexts, SizeTextNeverOverrunsTheCallersBuffer)
{
    char buffer[8];
    std::memset(buffer, 'x', sizeof buffer);
    size_to_unit(1536, buffer, 5);
    EXPECT_STREQ(buffer, "1.54");
    EXPECT_EQ(buffer[5], 'x');
    // The largest count still fits the documented buffer whole.
    char large[kSizeTextBufferSize];
    const QString text = QString::fromLatin1(size_to_unit(UINT64_MAX, large, sizeof large));
    EXPECT_TRUE(text.startsWith(QStringLiteral("1844674"))) << text.toStdString();
    EXPECT_TRUE(text.endsWith(QStringLiteral(".00 TB"))) << text.toStdString();
}

TEST(DisplayTexts, DurationTexts)
{
    EXPECT_EQ(getMediaDuration(0), QStringLiteral("0s"));
    EXPECT_EQ(getMediaDuration(59), QStringLiteral("59s"));
    EXPECT_EQ(getMediaDuration(60), QStringLiteral("1m:0s"));
    EXPECT_EQ(getMediaDuration(3599), QStringLiteral("59m:59s"));
    EXPECT_EQ(getMediaDuration(3600), QStringLiteral("1h:0m:0s"));
    EXPECT_EQ(getMediaDuration(3661), QStringLiteral("1h:1m:1s"));
    EXPECT_EQ(getMediaDuration(360000), QStringLiteral("100h:0m:0s"));
    // Durations as containers state them: fractions dropped, nonsense shown as none or the longest.
    EXPECT_EQ(mediaDurationText(61.9), QStringLiteral("1m:1s"));
    EXPECT_EQ(mediaDurationText(-3), QStringLiteral("0s"));
    EXPECT_EQ(mediaDurationText(std::nan("")), QStringLiteral("0s"));
    EXPECT_EQ(mediaDurationText(4294967280.0), QStringLiteral("596523h:14m:7s"));
}

}  // namespace
}  // namespace pelorin

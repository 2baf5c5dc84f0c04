#include "DateTestFiles.h"
#include "ScopedTimeZone.h"
#include "dates/DateSpan.h"
#include "dates/PhotoDateShift.h"

namespace pelorin {
namespace {

using test::clockOf;
using test::DatePhotos;
using test::tag;

QString exifText(const WallClock& clock) { return renderDateText(clock, DateTextForm::Exif); }

CommandContext contextFor(const DatePhotos& photos)
{
    CommandContext context;
    context.storageFolder = photos.storage();
    return context;
}

// Each case starts the day before a daylight-saving change of its zone, so that one day later
// is 23 or 25 hours later on a clock that keeps UTC.
TEST(DateShift, OneDayMovesEveryDateByOneDayAcrossDaylightSavingChanges)
{
    const std::pair<const char*, QString> cases[] = {
        {"Pacific/Chatham", QStringLiteral("2023:09:23 12:00:00")},
        {"Pacific/Chatham", QStringLiteral("2024:04:06 12:00:00")},
        {"America/Santiago", QStringLiteral("2023:09:02 12:00:00")},
        {"America/Santiago", QStringLiteral("2024:04:06 12:00:00")},
    };
    for (const auto& [zone, before] : cases) {
        SCOPED_TRACE(zone);
        test::ScopedTimeZone tz(zone);
        DatePhotos photos;
        const QString source = photos.add(QStringLiteral("exiv2-nikon-d70.jpg"));
        ASSERT_TRUE(test::exiftoolWrite(source, {QStringLiteral("-AllDates=") + before}));
        test::setLocalModified(source, before);

        BatchDateRequest request;
        request.span.days = 1;
        request.add = true;
        const CommandResult result = shiftPhotoDates(DatePhotos::select({source}), request, contextFor(photos));
        ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();

        const QString output = photos.output(source);
        const QString after = exifText(*clockOf(before).addSeconds(86400));
        const QJsonObject tags = test::exiftool(output);
        EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), after);
        EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:CreateDate")).toString(), after);
        EXPECT_EQ(tags.value(QStringLiteral("IFD0:ModifyDate")).toString(), after);
        // exiftool reads the file date in the same zone, on the local clock.
        EXPECT_EQ(tags.value(QStringLiteral("System:FileModifyDate")).toString().left(19), after);
    }
}

TEST(DateShift, HundredYearsMoveByHundredTimes365DaysWithoutWrapping)
{
    DatePhotos photos;
    const QString source = photos.add(QStringLiteral("exiv2-nikon-d70.jpg"));
    BatchDateRequest request;
    request.span.years = 100;
    request.add = true;
    ASSERT_TRUE(shiftPhotoDates(DatePhotos::select({source}), request, contextFor(photos)).succeeded());
    const WallClock expected = *clockOf(QStringLiteral("2004:03:30 10:43:46")).addSeconds(std::int64_t(100) * 365 * 86400);
    EXPECT_EQ(expected.date().year(), 2104);
    EXPECT_EQ(tag(photos.output(source), QStringLiteral("ExifIFD:DateTimeOriginal")), exifText(expected));
}

TEST(DateShift, SubtractsWhenNotAddingIgnoresNegativeFieldsAndCopiesPhotosWithoutDates)
{
    test::ScopedTimeZone tz("Europe/Berlin");
    DatePhotos photos;
    const QString dated = photos.add(QStringLiteral("et-Canon_1DmkIII.jpg"));
    const QString undated = photos.add(QStringLiteral("exiv2-nikon-d70.jpg"), QStringLiteral("undated.jpg"));
    ASSERT_TRUE(test::exiftoolWrite(undated, {QStringLiteral("-AllDates="), QStringLiteral("-XMP:all=")}));
    test::setLocalModified(undated, QStringLiteral("2020:01:10 08:00:00"));

    BatchDateRequest request;
    request.span.days = -5;  // counts as nothing
    request.span.hours = 2;
    const CommandResult result = shiftPhotoDates(DatePhotos::select({dated, undated}), request, contextFor(photos));
    ASSERT_TRUE(result.succeeded());
    EXPECT_EQ(tag(photos.output(dated), QStringLiteral("ExifIFD:DateTimeOriginal")), QStringLiteral("2007:02:22 15:02:42"));
    EXPECT_EQ(tag(photos.output(dated), QStringLiteral("IFD0:ModifyDate")), QStringLiteral("2007:02:22 15:02:42"));

    // No EXIF date: the bytes stay as they are, the file dates still move.
    EXPECT_EQ(test::fileHash(photos.output(undated)), test::fileHash(undated));
    EXPECT_EQ(test::localModified(photos.output(undated)), clockOf(QStringLiteral("2020:01:10 06:00:00")));
}

TEST(DateShift, SpansAreCalendarFreeAndTypedUnitsAreChecked)
{
    EXPECT_EQ(spanSeconds({0, 1, 1, 0, 0, 0}), 2678400);
    EXPECT_EQ(spanSeconds({100, 0, 0, 0, 0, 0}), std::int64_t(3153600000));
    EXPECT_EQ(spanSeconds({-1, 0, 0, -1, 0, 30}), 30);
    EXPECT_EQ(spanSeconds({std::int64_t(1) << 60, 0, 0, 0, 0, 0}), kLongestDateSpan);

    const auto span = parseDateSpan(QStringLiteral("1y 2mo 3d 4h 5m 6s"));
    ASSERT_TRUE(span);
    EXPECT_EQ(spanSeconds(*span), kSecondsPerYear + 2 * kSecondsPerMonth + 3 * 86400 + 4 * 3600 + 5 * 60 + 6);
    EXPECT_EQ(spanSeconds(*parseDateSpan(QStringLiteral("90m"))), 5400);
    QString error;
    for (const char* bad : {"3w", "1d x", "", "d", "-1d", "99999999999999999999y"}) {
        EXPECT_FALSE(parseDateSpan(QString::fromLatin1(bad), &error)) << bad;
        EXPECT_FALSE(error.isEmpty());
    }
}

TEST(DateShift, ASpanBeyondEveryDateSkipsThePhotoAndWritesNothing)
{
    DatePhotos photos;
    const QString source = photos.add(QStringLiteral("exiv2-nikon-d70.jpg"));
    BatchDateRequest request;
    request.span.years = 9000;
    request.add = true;
    const CommandResult result = shiftPhotoDates(DatePhotos::select({source}), request, contextFor(photos));
    ASSERT_EQ(result.skipped.size(), 1);
    EXPECT_TRUE(result.written.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(photos.output(source)));
}

}  // namespace
}  // namespace pelorin

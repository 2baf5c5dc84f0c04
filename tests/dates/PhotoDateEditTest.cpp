#include "DateTestFiles.h"
#include "ScopedTimeZone.h"
#include "dates/PhotoDateEdit.h"

namespace pelorin {
namespace {

using test::clockOf;
using test::DatePhotos;
using test::tag;

CommandContext contextFor(const DatePhotos& photos, bool dryRun = false)
{
    CommandContext context;
    context.storageFolder = photos.storage();
    context.dryRun = dryRun;
    return context;
}

const PhotoDateEdit kEdit{QStringLiteral("2015-06-01 10:00:00"), QStringLiteral("2015:06:02 11:30:00")};

TEST(PhotoDateEdit, EachFieldGoesWhereItsLabelSaysInExifForm)
{
    test::ScopedTimeZone tz("America/Santiago");
    DatePhotos photos;
    const QString withDates = photos.add(QStringLiteral("et-GPS.jpg"));
    const QString bare = photos.add(QStringLiteral("exiv2-nikon-d70.jpg"), QStringLiteral("bare.jpg"));
    ASSERT_TRUE(test::exiftoolWrite(bare, {QStringLiteral("-AllDates=")}));
    const QByteArray sourceHash = test::fileHash(withDates);
    QStringList revealed;
    CommandContext context = contextFor(photos);
    context.reveal.revealFile = [&](const QString& file) { revealed << file; };

    const CommandResult result = savePhotoDates(DatePhotos::select({withDates, bare}), kEdit, context);
    ASSERT_TRUE(result.succeeded());
    EXPECT_EQ(revealed, QStringList({photos.output(withDates), photos.output(bare)}));
    for (const QString& source : {withDates, bare}) {
        const QJsonObject tags = test::exiftool(photos.output(source));
        EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("2015:06:01 10:00:00"));
        EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:CreateDate")).toString(), QStringLiteral("2015:06:02 11:30:00"));
        EXPECT_EQ(tags.value(QStringLiteral("IFD0:ModifyDate")).toString(), QStringLiteral("2015:06:01 10:00:00"));
        EXPECT_EQ(test::localModified(photos.output(source)), clockOf(QStringLiteral("2015:06:01 10:00:00")));
    }
    EXPECT_EQ(test::fileHash(withDates), sourceHash);

    // A second save replaces the earlier output.
    const PhotoDateEdit later{QStringLiteral("2016:01:01 00:00:00"), QStringLiteral("2016:01:01 00:00:00")};
    ASSERT_TRUE(savePhotoDates(DatePhotos::select({withDates}), later, contextFor(photos)).succeeded());
    EXPECT_EQ(tag(photos.output(withDates), QStringLiteral("ExifIFD:DateTimeOriginal")), QStringLiteral("2016:01:01 00:00:00"));
}

TEST(PhotoDateEdit, AnInvalidFieldAlertsAndWritesNothing)
{
    DatePhotos photos;
    const QString source = photos.add(QStringLiteral("et-GPS.jpg"));
    for (const PhotoDateEdit& bad : {PhotoDateEdit{QStringLiteral("2015:13:01 10:00:00"), kEdit.digitized},
                                     PhotoDateEdit{kEdit.original, QStringLiteral("yesterday")},
                                     PhotoDateEdit{QString(), kEdit.digitized}}) {
        for (const auto& save : {savePhotoDates, savePhotoFileDates}) {
            const CommandResult result = save(DatePhotos::select({source}), bad, contextFor(photos));
            ASSERT_TRUE(result.alert);
            EXPECT_EQ(*result.alert, Alerts::invalidDateFormat());
            EXPECT_TRUE(result.written.isEmpty());
        }
    }
    EXPECT_FALSE(QFileInfo::exists(photos.storage()));
}

TEST(PhotoDateEdit, DryRunPlansEachValueAndTouchesNothing)
{
    DatePhotos photos;
    const QString source = photos.add(QStringLiteral("et-GPS.jpg"));
    const QByteArray hash = test::fileHash(source);
    const CommandResult result = savePhotoDates(DatePhotos::select({source}), kEdit, contextFor(photos, true));
    ASSERT_FALSE(result.alert);
    EXPECT_TRUE(result.skipped.isEmpty());
    EXPECT_TRUE(result.written.isEmpty());
    EXPECT_TRUE(result.planned.contains(PlannedChange{photos.output(source), QStringLiteral("{Exif}/DateTimeOriginal"),
                                                      QStringLiteral("2002:07:13 15:58:28"), QStringLiteral("2015:06:01 10:00:00")}));
    bool plansFileDate = false;
    for (const PlannedChange& change : result.planned)
        plansFileDate = plansFileDate || change.property == QLatin1String("file modification date");
    EXPECT_TRUE(plansFileDate);
    EXPECT_FALSE(QFileInfo::exists(photos.storage()));
    EXPECT_EQ(test::fileHash(source), hash);
}

TEST(PhotoDateEdit, RawGetsACopyPlusSidecarWhileHeicIsRewrittenItself)
{
    test::ScopedTimeZone tz("Europe/Berlin");
    DatePhotos photos;
    const QString raf = photos.add(QStringLiteral("et-Fuji_S5Pro.raf"));
    const QString heic = photos.add(QStringLiteral("exiv2-Stonehenge.heic"));
    const CommandResult result = savePhotoDates(DatePhotos::select({raf, heic}), kEdit, contextFor(photos));
    ASSERT_TRUE(result.succeeded());
    const QString rafOutput = photos.output(raf);
    EXPECT_TRUE(result.written.contains(rafOutput + QStringLiteral(".xmp")));
    EXPECT_EQ(test::fileHash(rafOutput), test::fileHash(raf));
    EXPECT_EQ(tag(rafOutput + QStringLiteral(".xmp"), QStringLiteral("XMP-exif:DateTimeOriginal")).left(19),
              QStringLiteral("2015:06:01 10:00:00"));
    EXPECT_TRUE(result.notes.join(QLatin1Char('\n')).contains(QStringLiteral("RAF")));

    const QString heicOutput = photos.output(heic);
    EXPECT_FALSE(result.written.contains(heicOutput + QStringLiteral(".xmp")));
    EXPECT_FALSE(QFileInfo::exists(heicOutput + QStringLiteral(".xmp")));
    EXPECT_EQ(tag(heicOutput, QStringLiteral("ExifIFD:DateTimeOriginal")), QStringLiteral("2015:06:01 10:00:00"));
    EXPECT_FALSE(result.notes.join(QLatin1Char('\n')).contains(QStringLiteral("HEIC")));
    for (const QString& output : {rafOutput, heicOutput})
        EXPECT_EQ(test::localModified(output), clockOf(QStringLiteral("2015:06:01 10:00:00")));
}

TEST(PhotoDateEdit, CameraPhotosAreRewrittenInPlaceAndFileDatesOnlyKeepsTheBytes)
{
    test::ScopedTimeZone tz("Pacific/Chatham");
    DatePhotos photos;
    ASSERT_TRUE(QDir().mkpath(photos.storage()));
    const QString downloaded = photos.storage() + QStringLiteral("/IMG_0001.jpg");
    ASSERT_TRUE(QFile::copy(test::dataPath(QStringLiteral("et-Canon_1DmkIII.jpg")), downloaded));
    const CommandResult camera = savePhotoDates(DatePhotos::select({QStringLiteral("/camera/IMG_0001.jpg")}, PhotoSource::Camera),
                                                kEdit, contextFor(photos));
    ASSERT_TRUE(camera.succeeded());
    EXPECT_EQ(camera.written, QStringList{downloaded});
    EXPECT_EQ(tag(downloaded, QStringLiteral("ExifIFD:CreateDate")), QStringLiteral("2015:06:02 11:30:00"));

    const QString source = photos.add(QStringLiteral("et-GPS.jpg"));
    ASSERT_TRUE(savePhotoFileDates(DatePhotos::select({source}), kEdit, contextFor(photos)).succeeded());
    EXPECT_EQ(test::fileHash(photos.output(source)), test::fileHash(source));
    EXPECT_EQ(test::localModified(photos.output(source)), clockOf(QStringLiteral("2015:06:01 10:00:00")));
}

}  // namespace
}  // namespace pelorin

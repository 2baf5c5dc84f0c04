#include "dates/EditorApply.h"
#include "photo/PhotoProperties.h"

#include "PlistTestFixture.h"

#include <QJsonArray>

namespace pelorin {
namespace {

using test::exiftool;

class EditorApplyTest : public test::PlistTestFixture {
protected:
    static PhotoFieldChanges changes(std::initializer_list<std::pair<const PhotoField, QString>> fields)
    {
        return {QMap<PhotoField, QString>(fields)};
    }
};

TEST_F(EditorApplyTest, WritesTheChangedFieldsAndRemovesEmptiedOnes)
{
    const QString photo = copyOf(QStringLiteral("et-GPS.jpg"));
    const CommandResult r = applyPhotoFieldChanges(select({photo}),
                                                   changes({{PhotoField::Artist, QStringLiteral("New Artist")},
                                                            {PhotoField::Copyright, QString()},
                                                            {PhotoField::Keywords, QStringLiteral("harbour, boats ,")},
                                                            {PhotoField::CameraDate, QStringLiteral("2015-06-01 10:00:00")}}),
                                                   context());
    ASSERT_TRUE(r.succeeded()) << r.skipped.value(0).reason.toStdString();
    const QString out = stored(QStringLiteral("et-GPS.jpg"));
    EXPECT_EQ(r.written, QStringList{out});
    const QJsonObject tags = exiftool(out);
    EXPECT_EQ(tags.value(QStringLiteral("IFD0:Artist")).toString(), QStringLiteral("New Artist"));
    EXPECT_FALSE(tags.contains(QStringLiteral("IFD0:Copyright")));
    EXPECT_EQ(tags.value(QStringLiteral("IPTC:Keywords")).toArray(), (QJsonArray{QStringLiteral("harbour"), QStringLiteral("boats")}));
    EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:CreateDate")).toString(), QStringLiteral("2015:06:01 10:00:00"));
    EXPECT_EQ(tags.value(QStringLiteral("IPTC:ObjectName")).toString(), QStringLiteral("Communications"));
    EXPECT_EQ(tags.value(QStringLiteral("IFD0:ImageDescription")).toString(), QStringLiteral("Communications"));
    const QJsonObject before = exiftool(photo);
    EXPECT_EQ(test::tagsOf(tags, {QStringLiteral("GPS")}), test::tagsOf(before, {QStringLiteral("GPS")}));
}

TEST_F(EditorApplyTest, GpsFieldsGoThroughTheBuilderAndEmptyingThemRemovesTheLocation)
{
    const QString photo = copyOf(QStringLiteral("exiv2-nikon-d70.jpg"));
    ASSERT_TRUE(applyPhotoFieldChanges(select({photo}),
                                       changes({{PhotoField::GpsLatitude, QStringLiteral("-33.5")},
                                                {PhotoField::GpsLongitude, QStringLiteral("-70.25")},
                                                {PhotoField::GpsDate, QStringLiteral("2015:06:01")}}),
                                       context())
                    .succeeded());
    const QString out = stored(QStringLiteral("exiv2-nikon-d70.jpg"));
    QJsonObject tags = exiftool(out);
    EXPECT_DOUBLE_EQ(tags.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 33.5);
    EXPECT_EQ(tags.value(QStringLiteral("GPS:GPSLatitudeRef")).toString(), QStringLiteral("S"));
    EXPECT_EQ(tags.value(QStringLiteral("GPS:GPSLongitudeRef")).toString(), QStringLiteral("W"));
    EXPECT_EQ(tags.value(QStringLiteral("GPS:GPSDateStamp")).toString(), QStringLiteral("2015:06:01"));
    EXPECT_FALSE(tags.contains(QStringLiteral("GPS:GPSAltitude")));  // never given

    // The output, edited again as a camera photo in place: every location field emptied.
    PhotoFieldChanges emptied;
    for (const PhotoFieldRow& row : photoFieldRows())
        if (row.section == PhotoSection::Location)
            emptied.fields.insert(row.field, QString());
    ASSERT_TRUE(applyPhotoFieldChanges(select({out}, PhotoSource::Camera), emptied, context()).succeeded());
    tags = exiftool(out);
    EXPECT_FALSE(tags.contains(QStringLiteral("GPS:GPSLatitude")));
    EXPECT_FALSE(tags.contains(QStringLiteral("XMP-exif:GPSLatitude")));
}

// A latitude alone is laid over each photo's own location; a photo without one cannot take it.
TEST_F(EditorApplyTest, ALatitudeAloneKeepsEachPhotosOwnLongitude)
{
    const QString located = copyOf(QStringLiteral("et-GPS.jpg"));
    const QString bare = copyOf(QStringLiteral("exiv2-nikon-d70.jpg"));
    const QJsonObject before = exiftool(located);
    const CommandResult r =
        applyPhotoFieldChanges(select({located, bare}), changes({{PhotoField::GpsLatitude, QStringLiteral("-12.5")}}), context());
    EXPECT_EQ(r.written, QStringList{stored(QStringLiteral("et-GPS.jpg"))});
    ASSERT_EQ(r.skipped.size(), 1);
    EXPECT_EQ(r.skipped[0].path, bare);
    EXPECT_TRUE(r.skipped[0].reason.contains(QStringLiteral("longitude")));
    const QJsonObject tags = exiftool(stored(QStringLiteral("et-GPS.jpg")));
    EXPECT_DOUBLE_EQ(tags.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 12.5);
    EXPECT_EQ(tags.value(QStringLiteral("GPS:GPSLatitudeRef")).toString(), QStringLiteral("S"));
    // Kept as the editor shows them: to six decimals of a degree, three of a metre.
    for (const char* kept : {"GPS:GPSLongitude", "GPS:GPSAltitude"})
        EXPECT_NEAR(tags.value(QLatin1String(kept)).toDouble(), before.value(QLatin1String(kept)).toDouble(), 1e-6) << kept;
    EXPECT_EQ(tags.value(QStringLiteral("GPS:GPSLongitudeRef")), before.value(QStringLiteral("GPS:GPSLongitudeRef")));
}

TEST_F(EditorApplyTest, BadValuesAlertAndTheStoredTextsAreNotWrittenAgain)
{
    const QString photo = copyOf(QStringLiteral("et-GPS.jpg"));
    const QString artist = QStringLiteral("Someone");
    EXPECT_EQ(applyPhotoFieldChanges(select({photo}),
                                     changes({{PhotoField::Artist, artist}, {PhotoField::CameraDate, QStringLiteral("2015/06/01")}}),
                                     context())
                  .alert,
              Alerts::invalidDateFormat());
    EXPECT_EQ(applyPhotoFieldChanges(select({photo}),
                                     changes({{PhotoField::GpsLatitude, QStringLiteral("95")}, {PhotoField::GpsLongitude, QStringLiteral("1")}}),
                                     context())
                  .alert,
              Alerts::valueError());
    EXPECT_EQ(applyPhotoFieldChanges(select({photo}),
                                     changes({{PhotoField::GpsLatitude, QStringLiteral("5")}, {PhotoField::GpsLongitude, QString()}}),
                                     context())
                  .alert,
              Alerts::valueError());
    EXPECT_EQ(applyPhotoFieldChanges({}, changes({{PhotoField::Artist, artist}}), context()).alert, Alerts::noSelection());

    // The photo's own texts: nothing to write, and no word about it.
    const PhotoFieldChanges own = changes({{PhotoField::Title, QStringLiteral("Communications")},
                                           {PhotoField::GpsLatitude, photoFieldText(readPhotoProperties(photo).properties, PhotoField::GpsLatitude)}});
    const CommandResult unchanged = applyPhotoFieldChanges(select({photo}), own, context());
    EXPECT_TRUE(unchanged.succeeded());
    EXPECT_TRUE(unchanged.written.isEmpty());
    EXPECT_TRUE(storedFiles().isEmpty());

    PhotoFieldChanges fine = own;
    fine.fields.insert(PhotoField::Artist, artist);
    const CommandResult planned = applyPhotoFieldChanges(select({photo}), fine, context(true));
    ASSERT_EQ(planned.planned.size(), 1);
    EXPECT_EQ(planned.planned[0].property, QStringLiteral("{TIFF}/Artist"));
    EXPECT_EQ(planned.planned[0].after, artist);
    EXPECT_TRUE(storedFiles().isEmpty());
}

}  // namespace
}  // namespace pelorin

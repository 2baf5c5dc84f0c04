#include "dates/EditorApply.h"
#include "photo/PhotoProperties.h"

#include "PlistTestFixture.h"

#include <QJsonArray>

namespace pelorin {
namespace {

using test::exiftool;

class EditorApplyTest : public test::PlistTestFixture {
protected:
    static PhotoEditorFill fill(const QString& photo)
    {
        return fillPhotoEditorFields(readPhotoProperties(photo).properties, {QFileInfo(photo).fileName(), {}, {}, -1});
    }
};

TEST_F(EditorApplyTest, WritesOnlyChangedFieldsAndRemovesEmptiedOnes)
{
    const QString photo = copyOf(QStringLiteral("et-GPS.jpg"));
    PhotoEditorFill f = fill(photo);
    f.fields.artist = QStringLiteral("New Artist");
    f.fields.copyright.clear();
    f.fields.keywords = QStringLiteral("harbour, boats ,");
    f.fields.cameraDate = QStringLiteral("2015-06-01 10:00:00");
    // A field the user did not touch is not written, even where it differs from the photo
    // (the editor showed another photo when the selection changed).
    f.fields.title = f.old.title = QStringLiteral("Shown elsewhere");

    const CommandResult r = applyPhotoEditorChanges(f.fields, f.old, select({photo}), context());
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
    PhotoEditorFill f = fill(photo);
    f.fields.gpsLatitude = QStringLiteral("-33.5");
    f.fields.gpsLongitude = QStringLiteral("-70.25");
    f.fields.gpsDate = QStringLiteral("2015:06:01");
    ASSERT_TRUE(applyPhotoEditorChanges(f.fields, f.old, select({photo}), context()).succeeded());
    const QString out = stored(QStringLiteral("exiv2-nikon-d70.jpg"));
    QJsonObject tags = exiftool(out);
    EXPECT_DOUBLE_EQ(tags.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 33.5);
    EXPECT_EQ(tags.value(QStringLiteral("GPS:GPSLatitudeRef")).toString(), QStringLiteral("S"));
    EXPECT_EQ(tags.value(QStringLiteral("GPS:GPSLongitudeRef")).toString(), QStringLiteral("W"));
    EXPECT_EQ(tags.value(QStringLiteral("GPS:GPSDateStamp")).toString(), QStringLiteral("2015:06:01"));
    EXPECT_FALSE(tags.contains(QStringLiteral("GPS:GPSAltitude")));  // left empty

    // The output, edited again as a camera photo in place: every GPS field emptied.
    PhotoSelection camera = select({out}, PhotoSource::Camera);
    PhotoEditorFill g = fill(out);
    g.fields.gpsLatitude.clear();
    g.fields.gpsLongitude.clear();
    g.fields.gpsDate.clear();
    g.fields.gpsTime.clear();
    g.fields.gpsAltitude.clear();
    ASSERT_TRUE(applyPhotoEditorChanges(g.fields, g.old, camera, context()).succeeded());
    tags = exiftool(out);
    EXPECT_FALSE(tags.contains(QStringLiteral("GPS:GPSLatitude")));
    EXPECT_FALSE(tags.contains(QStringLiteral("XMP-exif:GPSLatitude")));
}

TEST_F(EditorApplyTest, BadValuesAlertAndUnchangedFieldsWriteNothing)
{
    const QString photo = copyOf(QStringLiteral("et-GPS.jpg"));
    const PhotoEditorFill f = fill(photo);
    PhotoEditorTexts badDate = f.fields;
    badDate.artist = QStringLiteral("Someone");
    badDate.cameraDate = QStringLiteral("2015/06/01");
    EXPECT_EQ(applyPhotoEditorChanges(badDate, f.old, select({photo}), context()).alert, Alerts::invalidDateFormat());
    PhotoEditorTexts badGps = f.fields;
    badGps.gpsLatitude = QStringLiteral("95");
    EXPECT_EQ(applyPhotoEditorChanges(badGps, f.old, select({photo}), context()).alert, Alerts::valueError());
    PhotoEditorTexts halfGps = f.fields;
    halfGps.gpsLongitude.clear();
    EXPECT_EQ(applyPhotoEditorChanges(halfGps, f.old, select({photo}), context()).alert, Alerts::valueError());

    const CommandResult unchanged = applyPhotoEditorChanges(f.fields, f.old, select({photo}), context());
    EXPECT_FALSE(unchanged.alert);
    EXPECT_TRUE(unchanged.written.isEmpty());
    EXPECT_EQ(applyPhotoEditorChanges(badDate, f.old, {}, context()).alert, Alerts::noSelection());
    EXPECT_TRUE(storedFiles().isEmpty());

    PhotoEditorTexts fine = f.fields;
    fine.artist = QStringLiteral("Someone");
    const CommandResult planned = applyPhotoEditorChanges(fine, f.old, select({photo}), context(true));
    ASSERT_EQ(planned.planned.size(), 1);
    EXPECT_EQ(planned.planned[0].property, QStringLiteral("{TIFF}/Artist"));
    EXPECT_EQ(planned.planned[0].after, QStringLiteral("Someone"));
    EXPECT_TRUE(storedFiles().isEmpty());
}

}  // namespace
}  // namespace pelorin

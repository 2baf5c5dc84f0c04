#include "dates/PlistExport.h"
#include "dates/TemplateExport.h"
#include "photo/PhotoProperties.h"

#include "PlistTestFixture.h"

namespace pelorin {
namespace {

using test::dataPath;

class PlistExportTest : public test::PlistTestFixture {};

TEST_F(PlistExportTest, AllMetadataKeepsEveryValueTypeForPlistlib)
{
    const QString gps = copyOf(QStringLiteral("et-GPS.jpg"));
    const QString nikon = copyOf(QStringLiteral("exiv2-nikon-d70.jpg"));
    const CommandResult r = exportPhotoPlist(PlistExport::AllMetadata, select({gps, nikon}), context());
    ASSERT_TRUE(r.succeeded()) << r.skipped.value(0).reason.toStdString();
    const QString file = stored(QStringLiteral("ExportAllMetadataInfo.plist"));
    EXPECT_EQ(r.written, QStringList{file});
    EXPECT_EQ(revealed, QStringList{file});

    EXPECT_TRUE(python(file, QStringLiteral("d['et-GPS.jpg']['{GPS}']['Latitude']")).startsWith(QStringLiteral("float 54.98")));
    EXPECT_EQ(python(file, QStringLiteral("d['et-GPS.jpg']['{GPS}']['LatitudeRef']")), QStringLiteral("str 'N'"));
    EXPECT_TRUE(python(file, QStringLiteral("d['et-GPS.jpg']['PixelWidth']")).startsWith(QStringLiteral("int ")));
    EXPECT_EQ(python(file, QStringLiteral("d['et-GPS.jpg']['{IPTC}']['Keywords']")), QStringLiteral("list ['Communications']"));
    EXPECT_EQ(python(file, QStringLiteral("d['et-GPS.jpg']['{TIFF}']['Artist']")), QStringLiteral("str 'Ian Britton'"));
    EXPECT_EQ(python(file, QStringLiteral("'{GPS}' in d['exiv2-nikon-d70.jpg']")), QStringLiteral("bool False"));
    // Every value read back equals what the photo reader gives, type for type.
    const QVariantMap expected = readPhotoProperties(nikon).properties;
    EXPECT_EQ(python(file, QStringLiteral("sorted(d['exiv2-nikon-d70.jpg']['{Exif}'].keys())")).count(QLatin1Char(',')) + 1,
              expected.value(QStringLiteral("{Exif}")).toMap().size());
}

TEST_F(PlistExportTest, AndExportsHoldEachPhotosOwnGroups)
{
    const QString gps = copyOf(QStringLiteral("et-GPS.jpg"));
    const QString nikon = copyOf(QStringLiteral("exiv2-nikon-d70.jpg"));
    ASSERT_TRUE(exportPhotoPlist(PlistExport::ExifAndGps, select({gps, nikon}), context()).succeeded());
    ASSERT_TRUE(exportPhotoPlist(PlistExport::ExifAndTiff, select({gps, nikon}), context()).succeeded());
    const QString exifGps = stored(QStringLiteral("ExportExifandGPSInfo.plist"));
    const QString exifTiff = stored(QStringLiteral("ExportExifandTiffInfo.plist"));

    EXPECT_EQ(python(exifGps, QStringLiteral("sorted(d['et-GPS.jpg'].keys())")), QStringLiteral("list ['{Exif}', '{GPS}']"));
    EXPECT_EQ(python(exifGps, QStringLiteral("sorted(d['exiv2-nikon-d70.jpg'].keys())")), QStringLiteral("list ['{Exif}']"));
    EXPECT_EQ(python(exifGps, QStringLiteral("d['exiv2-nikon-d70.jpg']['{Exif}']['DateTimeDigitized']")),
              QStringLiteral("str '2004:03:30 10:43:46'"));
    EXPECT_EQ(python(exifTiff, QStringLiteral("d['et-GPS.jpg']['{TIFF}']['Make']")), QStringLiteral("str 'FUJIFILM'"));
    EXPECT_EQ(python(exifTiff, QStringLiteral("d['exiv2-nikon-d70.jpg']['{TIFF}']['Make']")), QStringLiteral("str 'NIKON CORPORATION'"));
}

TEST_F(PlistExportTest, GroupExportsListUnreadablePhotosAsSkipped)
{
    const QString gps = copyOf(QStringLiteral("et-GPS.jpg"));
    QFile junk(inputs.filePath(QStringLiteral("junk.jpg")));
    ASSERT_TRUE(junk.open(QIODevice::WriteOnly));
    junk.write("not a photo at all, just some words");
    junk.close();
    const CommandResult r = exportPhotoPlist(PlistExport::Tiff, select({junk.fileName(), gps}), context());
    ASSERT_EQ(r.skipped.size(), 1);
    EXPECT_EQ(r.skipped[0].path, junk.fileName());
    EXPECT_FALSE(r.skipped[0].reason.isEmpty());
    const QString file = stored(QStringLiteral("ExportTiffInfo.plist"));
    EXPECT_EQ(python(file, QStringLiteral("list(d.keys())")), QStringLiteral("list ['et-GPS.jpg']"));
    EXPECT_EQ(python(file, QStringLiteral("d['et-GPS.jpg']['Model']")), QStringLiteral("str 'FinePixS1Pro'"));

    EXPECT_EQ(exportPhotoPlist(PlistExport::Exif, {}, context()).alert, Alerts::noSelection());
    EXPECT_FALSE(QFile::exists(stored(QStringLiteral("ExportExifInfo.plist"))));
}

TEST_F(PlistExportTest, CurrentPhotoIsNamedWithoutItsExtension)
{
    const PhotoProperties photo = readPhotoProperties(dataPath(QStringLiteral("et-GPS.jpg")));
    const CommandResult r = exportCurrentPhotoPlist(photo.properties, QStringLiteral("et-GPS.jpg"), context());
    ASSERT_TRUE(r.succeeded());
    EXPECT_EQ(r.written, QStringList{stored(QStringLiteral("et-GPS.plist"))});
    EXPECT_EQ(python(r.written.value(0), QStringLiteral("d['{TIFF}']['Artist']")), QStringLiteral("str 'Ian Britton'"));

    // A text XML cannot carry is reported, and no file is left.
    QVariantMap bad;
    bad.insert(QStringLiteral("Artist"), QStringLiteral("bell\x07"));
    const CommandResult refused = exportCurrentPhotoPlist(bad, QStringLiteral("bad.jpg"), context());
    ASSERT_EQ(refused.skipped.size(), 1);
    EXPECT_FALSE(QFile::exists(stored(QStringLiteral("bad.plist"))));
}

TEST_F(PlistExportTest, TemplateKeepsTypedCoordinatesAsSignedReals)
{
    PhotoEditorTexts f;
    f.artist = QStringLiteral("Ann");
    f.cameraMake = QStringLiteral("Leica");
    f.keywords = QStringLiteral("sea, sky");
    f.gpsLatitude = QStringLiteral("-33.5");
    f.gpsLongitude = QStringLiteral("151.25");
    f.gpsAltitude = QStringLiteral("-10");
    const CommandResult r = exportTemplatePlist(f, context());
    ASSERT_TRUE(r.succeeded());
    const QString file = stored(QStringLiteral("templatefile.plist"));
    EXPECT_EQ(python(file, QStringLiteral("d['Latitude']")), QStringLiteral("float -33.5"));
    EXPECT_EQ(python(file, QStringLiteral("(d['LatitudeRef'], d['LongitudeRef'])")), QStringLiteral("tuple ('S', 'E')"));
    EXPECT_EQ(python(file, QStringLiteral("d['Longitude']")), QStringLiteral("float 151.25"));
    EXPECT_EQ(python(file, QStringLiteral("(d['LensMake'], d['Make'], d['Keywords'], d['Altitude'])")),
              QStringLiteral("tuple ('Leica', 'Leica', 'sea, sky', '-10')"));
    EXPECT_EQ(python(file, QStringLiteral("len(d)")), QStringLiteral("int 18"));

    // An empty editor: all eighteen keys, the coordinates as empty texts that move no photo
    // to 0, 0.
    const QVariantMap empty = templateDictionary({}).values;
    EXPECT_EQ(empty.size(), 18);
    EXPECT_EQ(empty.value(QStringLiteral("Latitude")), QVariant(QString()));
    f.gpsLongitude = QStringLiteral("east");
    const CommandResult bad = exportTemplatePlist(f, context());
    EXPECT_EQ(bad.alert, Alerts::valueError());
    EXPECT_TRUE(bad.written.isEmpty());
}

TEST_F(PlistExportTest, DryRunWritesNothingAndCreatesNoFolder)
{
    CommandContext c = context(true);
    c.storageFolder = store.filePath(QStringLiteral("not/yet"));
    const CommandResult r = exportPhotoPlist(PlistExport::AllMetadata, select({dataPath(QStringLiteral("et-GPS.jpg"))}), c);
    EXPECT_TRUE(r.written.isEmpty());
    ASSERT_EQ(r.planned.size(), 1);
    EXPECT_EQ(r.planned[0].file, c.storageFolder + QStringLiteral("/ExportAllMetadataInfo.plist"));
    EXPECT_TRUE(exportTemplatePlist({}, c).written.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(store.filePath(QStringLiteral("not"))));
    EXPECT_TRUE(revealed.isEmpty());
}

}  // namespace
}  // namespace pelorin

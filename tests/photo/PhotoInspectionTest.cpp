#include "photo/PhotoEditorFields.h"
#include "photo/PhotoProperties.h"
#include "photo/PropertyTree.h"

#include "ExifTool.h"
#include "QtPrinters.h"
#include "TestPaths.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <gtest/gtest.h>

#include <cmath>

namespace pelorin {
namespace {

using test::dataPath;

// The tree reads as a person reads: coordinates to 6 places, versions and the colour space as
// exiftool prints them, and every date and time in one form whichever group holds it.
TEST(PropertyTree, ValuesReadAsPeopleWriteThem)
{
    const auto leaf = [](const QList<PropertyTreeNode>& tree, const QString& group, const QString& key) {
        for (const PropertyTreeNode& node : tree) {
            if (node.key != group)
                continue;
            for (const PropertyTreeNode& child : node.children) {
                if (child.key == key)
                    return child.text;
            }
        }
        return QStringLiteral("<none>");
    };
    // exiftool's "0232" is read 2.32, "0220" 2.2.
    const auto version = [](const QString& digits) {
        QString minor = digits.mid(2);
        while (minor.size() > 1 && minor.endsWith(QLatin1Char('0')))
            minor.chop(1);
        return QString::number(digits.left(2).toInt()) + QLatin1Char('.') + minor;
    };
    for (const char* name : {"exiv2-FurnaceCreekInn_gps.jpg", "exiv2-Reagan_all.jpg", "et-Apple.jpg",
                             "mde-Sony_Cybershot_orient6.jpg", "exiv2-iPhoneXR_orient6.heic"}) {
        SCOPED_TRACE(name);
        const QString path = dataPath(QString::fromLatin1(name));
        const PhotoProperties photo = readPhotoProperties(path);
        ASSERT_TRUE(photo.ok()) << photo.error.toStdString();
        const QList<PropertyTreeNode> tree = propTree(photo.properties);
        QProcess exiftool;  // exiftool's printed values, not its numbers
        exiftool.start(QStringLiteral("exiftool"), {QStringLiteral("-j"), QStringLiteral("-G1"), path});
        ASSERT_TRUE(exiftool.waitForFinished(60000));
        const QJsonObject printed = QJsonDocument::fromJson(exiftool.readAllStandardOutput()).array().at(0).toObject();
        const QJsonObject numbers = test::exiftool(path);
        EXPECT_EQ(leaf(tree, QStringLiteral("Exif"), QStringLiteral("Exif Version")),
                  version(printed.value(QStringLiteral("ExifIFD:ExifVersion")).toString()));
        EXPECT_EQ(leaf(tree, QStringLiteral("Exif"), QStringLiteral("Color Space")),
                  printed.value(QStringLiteral("ExifIFD:ColorSpace")).toString());
        if (printed.contains(QStringLiteral("GPS:GPSVersionID"))) {
            EXPECT_EQ(leaf(tree, QStringLiteral("GPS"), QStringLiteral("GPS Version")),
                      printed.value(QStringLiteral("GPS:GPSVersionID")).toString());  // "2.2.0.0"
            const double latitude = std::abs(numbers.value(QStringLiteral("GPS:GPSLatitude")).toDouble());
            const QString shown = leaf(tree, QStringLiteral("GPS"), QStringLiteral("Latitude"));
            EXPECT_LE(shown.section(QLatin1Char('.'), 1).size(), 6) << shown.toStdString();
            EXPECT_NEAR(shown.toDouble(), latitude, 5e-7);
        }
    }
    // IPTC's compact forms and XMP's ISO form in the form of the EXIF dates, zones kept.
    const QList<PropertyTreeNode> reagan = propTree(readPhotoProperties(dataPath(QStringLiteral("exiv2-Reagan_all.jpg"))).properties);
    EXPECT_EQ(leaf(reagan, QStringLiteral("IPTC"), QStringLiteral("Date Created")), QStringLiteral("2004:06:21"));
    EXPECT_EQ(leaf(reagan, QStringLiteral("IPTC"), QStringLiteral("Digital Creation Time")), QStringLiteral("23:37:53-04:00"));
    EXPECT_EQ(leaf(reagan, QStringLiteral("XMP"), QStringLiteral("xmp:CreateDate")), QStringLiteral("2004:06:21 23:37:53+01:00"));
    EXPECT_EQ(leaf(reagan, QStringLiteral("Exif"), QStringLiteral("Date Time Original")), QStringLiteral("2004:06:21 23:37:53"));
}

TEST(PhotoProperties, JpegGroupsCarryTheModelsKeysAndTypes)
{
    const QString path = dataPath(QStringLiteral("et-GPS.jpg"));
    const PhotoProperties photo = readPhotoProperties(path);
    ASSERT_TRUE(photo.ok()) << photo.error.toStdString();
    EXPECT_EQ(photo.format.typeName, QStringLiteral("public.jpeg"));
    EXPECT_EQ(photo.imageCount, 1);
    const QVariantMap& p = photo.properties;
    const QJsonObject oracle = test::exiftool(path);

    EXPECT_EQ(p.value(QStringLiteral("PixelWidth")).toInt(), oracle.value(QStringLiteral("File:ImageWidth")).toInt());
    EXPECT_EQ(p.value(QStringLiteral("PixelHeight")).toInt(), oracle.value(QStringLiteral("File:ImageHeight")).toInt());
    EXPECT_EQ(p.value(QStringLiteral("DPIWidth")).toDouble(), 300.0);
    const QVariantMap gps = p.value(QStringLiteral("{GPS}")).toMap();
    EXPECT_NEAR(gps.value(QStringLiteral("Latitude")).toDouble(), oracle.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 1e-9);
    EXPECT_EQ(gps.value(QStringLiteral("Latitude")).typeId(), QMetaType::Double);
    EXPECT_EQ(gps.value(QStringLiteral("LongitudeRef")).toString(), QStringLiteral("W"));
    EXPECT_EQ(gps.value(QStringLiteral("GPSVersion")).typeId(), QMetaType::QVariantList);
    const QVariantMap exif = p.value(QStringLiteral("{Exif}")).toMap();
    EXPECT_EQ(exif.value(QStringLiteral("ISOSpeedRatings")).typeId(), QMetaType::QVariantList);
    EXPECT_EQ(exif.value(QStringLiteral("DateTimeOriginal")).toString(), QStringLiteral("2002:07:13 15:58:28"));
    const QVariantMap iptc = p.value(QStringLiteral("{IPTC}")).toMap();
    EXPECT_EQ(iptc.value(QStringLiteral("Keywords")).toList(), QVariantList{QStringLiteral("Communications")});
    EXPECT_EQ(iptc.value(QStringLiteral("ObjectName")).toString(), QStringLiteral("Communications"));
    EXPECT_EQ(p.value(QStringLiteral("{TIFF}")).toMap().value(QStringLiteral("Make")).toString(),
              oracle.value(QStringLiteral("IFD0:Make")).toString());
    EXPECT_TRUE(p.contains(QStringLiteral("{JFIF}")) || !oracle.contains(QStringLiteral("JFIF:JFIFVersion")));
}

TEST(PhotoProperties, HeicAndRawAndXmpAreRead)
{
    const PhotoProperties heic = readPhotoProperties(dataPath(QStringLiteral("exiv2-Stonehenge.heic")));
    ASSERT_TRUE(heic.ok()) << heic.error.toStdString();
    EXPECT_EQ(heic.format.kind, QStringLiteral("HEIC"));
    EXPECT_EQ(heic.properties.value(QStringLiteral("{TIFF}")).toMap().value(QStringLiteral("Model")).toString(),
              QStringLiteral("NIKON D5300"));
    EXPECT_EQ(heic.properties.value(QStringLiteral("PixelWidth")).toInt(), 300);

    const PhotoProperties raf = readPhotoProperties(dataPath(QStringLiteral("et-Fuji_S5Pro.raf")));
    ASSERT_TRUE(raf.ok()) << raf.error.toStdString();
    EXPECT_FALSE(raf.format.metadataWritable);
    EXPECT_TRUE(raf.properties.contains(QStringLiteral("{Exif}")));

    const PhotoProperties png = readPhotoProperties(dataPath(QStringLiteral("et-PNG.png")));
    ASSERT_TRUE(png.ok());
    EXPECT_EQ(png.properties.value(QStringLiteral("{XMP}")).toMap().value(QStringLiteral("dc:creator")).toList(),
              QVariantList{QStringLiteral("Phil Harvey")});

    for (const char* name : {"pil-truncated_jpeg.jpg", "libheif-github_15.heic", "et-MP3.mp3"}) {
        const PhotoProperties broken = readPhotoProperties(dataPath(QString::fromLatin1(name)));
        if (!broken.ok()) {
            EXPECT_FALSE(broken.error.isEmpty()) << name;
        }
    }
    EXPECT_FALSE(readPhotoProperties(dataPath(QStringLiteral("no-such-file.jpg"))).ok());
}

TEST(PropertyTree, GroupsBecomeNodesSortedByRawKeyWithDisplayNames)
{
    const QVariantMap properties{
        {QStringLiteral("{Exif}"), QVariantMap{{QStringLiteral("FNumber"), 2.8},
                                               {QStringLiteral("DateTimeOriginal"), QStringLiteral("2019:05:06 07:08:09")},
                                               {QStringLiteral("ISOSpeedRatings"), QVariantList{100}}}},
        {QStringLiteral("PixelWidth"), 4000},
        {QStringLiteral("{XMP}"), QVariantMap{{QStringLiteral("xmp:CreateDate"), QStringLiteral("2019-05-06T07:08:09")}}},
        {QStringLiteral("{MakerCanon}"), QVariantMap{{QStringLiteral("0x0001"), 7}}},
    };
    const QList<PropertyTreeNode> tree = propTree(properties);
    ASSERT_EQ(tree.size(), 4);
    EXPECT_EQ(tree[0].key, QStringLiteral("Pixel Width"));
    EXPECT_EQ(tree[1].key, QStringLiteral("Exif"));
    EXPECT_TRUE(tree[1].isGroup);
    EXPECT_EQ(tree[1].val.toString(), QString());
    ASSERT_EQ(tree[1].children.size(), 3);
    EXPECT_EQ(tree[1].children[0].key, QStringLiteral("Date Time Original"));
    EXPECT_EQ(tree[1].children[1].key, QStringLiteral("F Number"));
    EXPECT_EQ(tree[1].children[2].key, QStringLiteral("ISO Speed Ratings"));
    EXPECT_EQ(tree[1].children[2].val.toList(), QVariantList{100});
    EXPECT_EQ(tree[2].key, QStringLiteral("Canon Maker Note"));
    EXPECT_EQ(tree[2].children[0].key, QStringLiteral("0x0001"));
    EXPECT_EQ(tree[3].children[0].key, QStringLiteral("xmp:CreateDate"));
    EXPECT_TRUE(propTree({}).isEmpty());
}

TEST(PhotoEditorFields, FieldsAndMapFollowTheProperties)
{
    QVariantMap properties{
        {QStringLiteral("PixelWidth"), 4000}, {QStringLiteral("PixelHeight"), 3000},
        {QStringLiteral("DPIWidth"), 72}, {QStringLiteral("DPIHeight"), 72},
        {QStringLiteral("{TIFF}"), QVariantMap{{QStringLiteral("Artist"), QStringLiteral("Ana")},
                                               {QStringLiteral("Model"), QStringLiteral("X100")}}},
        {QStringLiteral("{Exif}"), QVariantMap{{QStringLiteral("LensMake"), QStringLiteral("Fujifilm")},
                                               {QStringLiteral("LensModel"), QStringLiteral("XF23")},
                                               {QStringLiteral("DateTimeDigitized"), QStringLiteral("2020:01:02 03:04:05")},
                                               {QStringLiteral("UserComment"), QStringLiteral("sunset")}}},
        {QStringLiteral("{GPS}"), QVariantMap{{QStringLiteral("Latitude"), 33.5}, {QStringLiteral("LatitudeRef"), QStringLiteral("S")},
                                              {QStringLiteral("Longitude"), 70.6}, {QStringLiteral("LongitudeRef"), QStringLiteral("W")},
                                              {QStringLiteral("Altitude"), 5.0}, {QStringLiteral("AltitudeRef"), 1}}},
        {QStringLiteral("{IPTC}"), QVariantMap{{QStringLiteral("Keywords"), QVariantList{QStringLiteral("sea"), QStringLiteral("sky")}},
                                               {QStringLiteral("ObjectName"), QStringLiteral("Evening")}}},
    };
    PhotoFileFacts facts;
    facts.fileName = QStringLiteral("a.jpg");
    facts.size = 1536;
    const PhotoEditorFill fill = fillPhotoEditorFields(properties, facts);
    const PhotoEditorTexts& f = fill.fields;
    EXPECT_EQ(f.cameraMake, QStringLiteral("Fujifilm"));  // no TIFF Make: the lens maker stands in
    EXPECT_EQ(f.cameraModel, QStringLiteral("XF23"));
    EXPECT_EQ(f.cameraDate, QStringLiteral("2020:01:02 03:04:05"));
    EXPECT_EQ(f.dpi, QStringLiteral("72 x 72"));
    EXPECT_EQ(f.imageSize, QStringLiteral("4000 x 3000"));
    EXPECT_EQ(f.fileSize, QStringLiteral("1.54 KB (1536 bytes)"));
    EXPECT_EQ(f.gpsLatitude, QStringLiteral("-33.5"));
    EXPECT_EQ(f.gpsLongitude, QStringLiteral("-70.6"));
    EXPECT_EQ(f.gpsAltitude, QStringLiteral("-5"));
    EXPECT_EQ(f.keywords, QStringLiteral("sea, sky"));
    EXPECT_EQ(f.title, QStringLiteral("Evening"));
    EXPECT_EQ(f.comments, QStringLiteral("sunset"));
    EXPECT_TRUE(fill.hasGps);
    EXPECT_DOUBLE_EQ(fill.latitude, -33.5);
    EXPECT_DOUBLE_EQ(fill.longitude, -70.6);

    // A photo without GPS or IPTC: empty fields, no map; nothing of the previous photo remains.
    properties.remove(QStringLiteral("{GPS}"));
    properties.remove(QStringLiteral("{IPTC}"));
    const PhotoEditorFill plain = fillPhotoEditorFields(properties, facts);
    EXPECT_FALSE(plain.hasGps);
    EXPECT_TRUE(plain.fields.gpsLatitude.isEmpty());
    EXPECT_TRUE(plain.fields.keywords.isEmpty());
    EXPECT_TRUE(plain.fields.title.isEmpty());
}

}  // namespace
}  // namespace pelorin

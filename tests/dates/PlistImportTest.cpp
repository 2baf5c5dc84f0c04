#include "dates/PlistExport.h"
#include "dates/PlistImport.h"
#include "dates/TemplateExport.h"
#include "model/FileDates.h"

#include "PlistTestFixture.h"

#include <QJsonArray>

namespace pelorin {
namespace {

using test::exiftool;
using test::exiftoolWrite;

class PlistImportTest : public test::PlistTestFixture {
protected:
    // Exports from one photo, then moves the export out of the storage folder so that the
    // import's outputs are the only files there.
    QString exported(PlistExport what, const QStringList& photos)
    {
        EXPECT_TRUE(exportPhotoPlist(what, select(photos), context()).succeeded());
        const QString moved = exports.filePath(plistExportFileName(what));
        QFile::rename(stored(plistExportFileName(what)), moved);
        revealed.clear();
        return moved;
    }
    QTemporaryDir exports;
};

TEST_F(PlistImportTest, GroupImportsReproduceTheExportedValuesOnAnotherPhoto)
{
    const QString fuji = copyOf(QStringLiteral("et-GPS.jpg"));
    const QString nikon = copyOf(QStringLiteral("exiv2-nikon-d70.jpg"));
    const QString tiff = exported(PlistExport::Tiff, {fuji});
    const CommandResult r = importPhotoPlist(PlistImport::Tiff, tiff, select({nikon}), context());
    ASSERT_TRUE(r.succeeded()) << r.skipped.value(0).reason.toStdString();
    const QString out = stored(QStringLiteral("exiv2-nikon-d70.jpg"));
    EXPECT_EQ(r.written, QStringList{out});
    EXPECT_EQ(revealed, QStringList{out});
    const QJsonObject tags = exiftool(out);
    EXPECT_EQ(tags.value(QStringLiteral("IFD0:Artist")).toString(), QStringLiteral("Ian Britton"));
    EXPECT_EQ(tags.value(QStringLiteral("IFD0:Make")).toString(), QStringLiteral("FUJIFILM"));
    // Only the TIFF group was replaced: the photo's own EXIF date stays.
    EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:CreateDate")).toString(), QStringLiteral("2004:03:30 10:43:46"));
    EXPECT_EQ(tag(nikon, QStringLiteral("IFD0:Make")), QStringLiteral("NIKON CORPORATION"));  // original untouched

    const QString exifGps = exported(PlistExport::ExifAndGps, {fuji});
    ASSERT_TRUE(importPhotoPlist(PlistImport::ExifAndGps, exifGps, select({nikon}), context()).succeeded());
    const QJsonObject located = exiftool(out);
    EXPECT_NEAR(located.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 54.9897, 1e-3);
    EXPECT_EQ(located.value(QStringLiteral("ExifIFD:CreateDate")).toString(), QStringLiteral("2002:07:13 15:58:28"));
}

TEST_F(PlistImportTest, AllMetadataImportSetsWritableGroupsAndIgnoresImageFacts)
{
    const QString fuji = copyOf(QStringLiteral("et-GPS.jpg"));
    const QString nikon = copyOf(QStringLiteral("exiv2-nikon-d70.jpg"));
    const QString all = exported(PlistExport::AllMetadata, {fuji});
    const CommandResult r = importPhotoPlist(PlistImport::AllMetadata, all, select({nikon}), context());
    ASSERT_TRUE(r.succeeded()) << r.skipped.value(0).reason.toStdString();
    const QJsonObject tags = exiftool(stored(QStringLiteral("exiv2-nikon-d70.jpg")));
    EXPECT_EQ(tags.value(QStringLiteral("IFD0:Model")).toString(), QStringLiteral("FinePixS1Pro"));
    EXPECT_EQ(tags.value(QStringLiteral("IPTC:ObjectName")).toString(), QStringLiteral("Communications"));
    EXPECT_NEAR(tags.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 54.9897, 1e-3);
    // Pixel facts come from the photo itself, not the file.
    EXPECT_EQ(tags.value(QStringLiteral("File:ImageWidth")).toInt(), exiftool(nikon).value(QStringLiteral("File:ImageWidth")).toInt());
}

TEST_F(PlistImportTest, BinaryPlistImportsLikeItsXmlForm)
{
    const QString tiff = exported(PlistExport::Tiff, {copyOf(QStringLiteral("et-GPS.jpg"))});
    const QString binary = exports.filePath(QStringLiteral("binary.plist"));
    ASSERT_EQ(QProcess::execute(QStringLiteral("plistutil"), {QStringLiteral("-i"), tiff, QStringLiteral("-o"), binary,
                                                               QStringLiteral("-f"), QStringLiteral("bin")}), 0);
    QFile bin(binary);
    ASSERT_TRUE(bin.open(QIODevice::ReadOnly));
    ASSERT_TRUE(bin.read(6) == "bplist");
    const QString nikon = copyOf(QStringLiteral("exiv2-nikon-d70.jpg"));
    const QString nikon2 = copyOf(QStringLiteral("exiv2-nikon-d70.jpg"), QStringLiteral("second.jpg"));
    ASSERT_TRUE(importPhotoPlist(PlistImport::Tiff, tiff, select({nikon}), context()).succeeded());
    ASSERT_TRUE(importPhotoPlist(PlistImport::Tiff, binary, select({nikon2}), context()).succeeded());
    const QStringList groups{QStringLiteral("IFD0")};
    EXPECT_EQ(test::tagsOf(exiftool(stored(QStringLiteral("exiv2-nikon-d70.jpg"))), groups),
              test::tagsOf(exiftool(stored(QStringLiteral("second.jpg"))), groups));
}

TEST_F(PlistImportTest, UnusableFilesGiveAReasonAndWriteNothing)
{
    const QString nikon = copyOf(QStringLiteral("exiv2-nikon-d70.jpg"));
    auto file = [&](const QString& name, const QByteArray& bytes) {
        QFile f(exports.filePath(name));
        f.open(QIODevice::WriteOnly);
        f.write(bytes);
        return f.fileName();
    };
    const QByteArray emptyDict = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict/></plist>";
    const QByteArray groupsForTiff = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>a.jpg</key><dict>"
                                     "<key>{TIFF}</key><dict/></dict></dict></plist>";
    const QList<std::pair<PlistImport, QString>> cases{
        {PlistImport::Tiff, file(QStringLiteral("garbage.plist"), "\x01\x02 nonsense")},
        {PlistImport::Exif, file(QStringLiteral("empty.plist"), {})},
        {PlistImport::AllMetadata, file(QStringLiteral("nodict.plist"), emptyDict)},
        {PlistImport::Template, file(QStringLiteral("nodict2.plist"), emptyDict)},
        {PlistImport::Tiff, file(QStringLiteral("groups.plist"), groupsForTiff)},
        {PlistImport::ExifAndGps, file(QStringLiteral("groups2.plist"), groupsForTiff)},
        {PlistImport::Template, file(QStringLiteral("notemplate.plist"), groupsForTiff)},
        {PlistImport::Exif, exports.filePath(QStringLiteral("missing.plist"))},
    };
    for (const auto& [what, plist] : cases) {
        const CommandResult r = importPhotoPlist(what, plist, select({nikon}), context());
        ASSERT_EQ(r.skipped.size(), 1) << plist.toStdString();
        EXPECT_EQ(r.skipped[0].path, plist);
        EXPECT_FALSE(r.skipped[0].reason.isEmpty());
    }
    EXPECT_TRUE(storedFiles().isEmpty());
    EXPECT_EQ(importPhotoPlist(PlistImport::Tiff, cases[0].second, {}, context()).alert, Alerts::noSelection());
}

TEST_F(PlistImportTest, SeveralEntriesApplyTheOneWhoseNameSortsFirst)
{
    // "et-GPS.jpg" sorts before "exiv2-nikon-d70.jpg", whatever the list order.
    const QString tiff = exported(PlistExport::Tiff, {copyOf(QStringLiteral("exiv2-nikon-d70.jpg")),
                                                       copyOf(QStringLiteral("et-GPS.jpg"))});
    const QString target = copyOf(QStringLiteral("exiv2-Reagan_all.jpg"));
    ASSERT_TRUE(importPhotoPlist(PlistImport::Tiff, tiff, select({target}), context()).succeeded());
    EXPECT_EQ(tag(stored(QStringLiteral("exiv2-Reagan_all.jpg")), QStringLiteral("IFD0:Make")), QStringLiteral("FUJIFILM"));
}

TEST_F(PlistImportTest, TemplateAppliesNonEmptyValuesAndDatesOutputsLikeTheTemplate)
{
    const QString fuji = copyOf(QStringLiteral("et-GPS.jpg"));
    ASSERT_TRUE(exiftoolWrite(fuji, {QStringLiteral("-ExifIFD:UserComment=keep me")}));
    PhotoEditorTexts f;
    f.artist = QStringLiteral("Ann Other");
    f.title = QStringLiteral("Harbour");
    f.keywords = QStringLiteral("sea,  sky");
    f.cameraDate = QStringLiteral("2015-06-01 10:00:00");
    f.gpsLatitude = QStringLiteral("-33.5");
    f.gpsLongitude = QStringLiteral("151.25");
    f.gpsAltitude = QStringLiteral("-10");
    ASSERT_TRUE(exportTemplatePlist(f, context()).succeeded());
    const QString templ = exports.filePath(QStringLiteral("templatefile.plist"));
    QFile::rename(stored(QStringLiteral("templatefile.plist")), templ);
    const QDateTime when(QDate(2019, 4, 5), QTime(6, 7, 8), Qt::UTC);
    ASSERT_TRUE(setFileModificationDate(templ, when));

    const CommandResult r = importPhotoPlist(PlistImport::Template, templ, select({fuji}), context());
    ASSERT_TRUE(r.succeeded()) << r.skipped.value(0).reason.toStdString();
    const QString out = stored(QStringLiteral("et-GPS.jpg"));
    const QJsonObject tags = exiftool(out);
    EXPECT_EQ(tags.value(QStringLiteral("IFD0:Artist")).toString(), QStringLiteral("Ann Other"));
    EXPECT_EQ(tags.value(QStringLiteral("IFD0:Copyright")).toString(), QStringLiteral("ian Britton - FreeFoto.com"));
    EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:UserComment")).toString(), QStringLiteral("keep me"));
    EXPECT_EQ(tags.value(QStringLiteral("ExifIFD:CreateDate")).toString(), QStringLiteral("2015:06:01 10:00:00"));
    EXPECT_EQ(tags.value(QStringLiteral("IPTC:ObjectName")).toString(), QStringLiteral("Harbour"));
    EXPECT_EQ(tags.value(QStringLiteral("IPTC:Keywords")).toArray(), (QJsonArray{QStringLiteral("sea"), QStringLiteral("sky")}));
    EXPECT_DOUBLE_EQ(tags.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 33.5);
    EXPECT_EQ(tags.value(QStringLiteral("GPS:GPSLatitudeRef")).toString(), QStringLiteral("S"));
    EXPECT_DOUBLE_EQ(tags.value(QStringLiteral("GPS:GPSAltitude")).toDouble(), 10.0);
    EXPECT_EQ(tags.value(QStringLiteral("GPS:GPSAltitudeRef")).toInt(), 1);
    EXPECT_EQ(readFileDates(out).modified, when);

    // A template date that is no date is refused before anything is written.
    QFile::remove(out);
    QFile bad(exports.filePath(QStringLiteral("bad.plist")));
    ASSERT_TRUE(bad.open(QIODevice::WriteOnly));
    bad.write("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>DateTimeDigitized</key>"
              "<string>June 1st</string></dict></plist>");
    bad.close();
    EXPECT_EQ(importPhotoPlist(PlistImport::Template, bad.fileName(), select({fuji}), context()).alert,
              Alerts::invalidDateFormat());
    EXPECT_TRUE(storedFiles().isEmpty());
}

TEST_F(PlistImportTest, DryRunPlansAndWritesNothing)
{
    const QString tiff = exported(PlistExport::Tiff, {copyOf(QStringLiteral("et-GPS.jpg"))});
    const QString nikon = copyOf(QStringLiteral("exiv2-nikon-d70.jpg"));
    const CommandResult r = importPhotoPlist(PlistImport::Tiff, tiff, select({nikon}), context(true));
    EXPECT_TRUE(r.written.isEmpty());
    EXPECT_TRUE(r.skipped.isEmpty());
    bool makePlanned = false;
    for (const PlannedChange& c : r.planned)
        makePlanned = makePlanned || (c.property == QStringLiteral("{TIFF}/Make") && c.after == QStringLiteral("FUJIFILM"));
    EXPECT_TRUE(makePlanned);
    EXPECT_TRUE(storedFiles().isEmpty());
    EXPECT_TRUE(revealed.isEmpty());
}

}  // namespace
}  // namespace pelorin

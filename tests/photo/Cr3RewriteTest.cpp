#include "isobmff/BoxTree.h"
#include "photo/Cr3Exif.h"
#include "photo/PhotoProperties.h"
#include "photo/PhotoRewrite.h"

#include "Cr3Samples.h"
#include "ExifTool.h"
#include "ImageMagick.h"
#include "QtPrinters.h"
#include "TestPaths.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

using Outcome = PhotoWriteResult::Outcome;
using test::canonTableTargets;
using test::sharedFixture;

const QString kCanonM50 = QStringLiteral("et-Canon_M50.cr3");

// What exiftool shows; the Exif copies in the media's timed metadata (track data, which every
// command keeps) under their own "DocN:" prefix.
QJsonObject exiftool(const QString& path, const QStringList& extra = {})
{
    return test::exiftool(path, QStringList{QStringLiteral("-G3:1")} + extra);
}

// Tags as text, so that a failed comparison shows which differ.
std::string text(const QJsonObject& tags)
{
    return QJsonDocument(tags).toJson().toStdString();
}

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QByteArray hashOf(const QString& path)
{
    return QCryptographicHash::hash(readAll(path), QCryptographicHash::Sha256);
}

// exiftool's warnings about a file, as a set of texts.
QStringList validationWarnings(const QString& path)
{
    QStringList warnings;
    const QJsonValue value = exiftool(path, {QStringLiteral("-validate"), QStringLiteral("-warning")})
                                 .value(QStringLiteral("ExifTool:Warning"));
    if (value.isArray()) {
        for (const QJsonValue& v : value.toArray())
            warnings << v.toString();
    } else if (value.isString()) {
        warnings << value.toString();
    }
    return warnings;
}

// Every tag exiftool shows but the file's own facts and the tags named (exact keys or group
// prefixes ending in ':').
QJsonObject tagsBut(const QJsonObject& all, const QStringList& changed)
{
    QJsonObject out;
    for (auto it = all.begin(); it != all.end(); ++it) {
        const QString& key = it.key();
        bool skip = key.startsWith(QLatin1String("System:")) || key == QLatin1String("SourceFile");
        for (const QString& c : changed)
            skip = skip || (c.endsWith(QLatin1Char(':')) ? key.startsWith(c) : key == c);
        if (!skip)
            out.insert(key, it.value());
    }
    return out;
}

// The top-level boxes of a file by type and extended type, with their bytes.
QMap<QByteArray, QByteArray> topLevelBoxes(const QString& path)
{
    const QByteArray bytes = readAll(path);
    MemoryByteSource source(bytes);
    QMap<QByteArray, QByteArray> boxes;
    for (const Box& box : readBoxTree(source).boxes)
        boxes.insert(box.type + box.userType.toHex(), bytes.mid(box.offset, box.size));
    return boxes;
}

class Cr3RewriteTest : public ::testing::Test {
protected:
    QString copyOf(const QString& path)
    {
        const QString copy = inputs.filePath(QFileInfo(path).fileName());
        QFile::copy(path, copy);
        QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner);
        return copy;
    }
    QString outputFor(const QString& source) { return store.filePath(QFileInfo(source).fileName()); }
    // The samples at hand: the small one always, the larger one when the shared folder is there.
    QStringList samples()
    {
        QStringList paths{copyOf(test::dataPath(kCanonM50))};
        const QString r6 = sharedFixture(QStringLiteral("raw/exiv2-Canon_R6_pruned.cr3"));
        if (!r6.isEmpty())
            paths << copyOf(r6);
        return paths;
    }
    QTemporaryDir inputs;
    QTemporaryDir store;
};

TEST_F(Cr3RewriteTest, DatesAndGpsAreWrittenIntoTheFileAndEverythingElseStays)
{
    for (const QString& source : samples()) {
        SCOPED_TRACE(source.toStdString());
        const QByteArray sourceHash = hashOf(source);
        const QJsonObject before = exiftool(source);
        const QStringList warningsBefore = validationWarnings(source);
        const PhotoProperties current = readPhotoProperties(source);
        ASSERT_TRUE(current.error.isEmpty()) << current.error.toStdString();
        ASSERT_TRUE(current.format.metadataWritable);

        PhotoChanges changes;
        QVariantMap exif = current.properties.value(QStringLiteral("{Exif}")).toMap();
        ASSERT_FALSE(exif.value(QStringLiteral("DateTimeOriginal")).toString().isEmpty());
        exif.insert(QStringLiteral("DateTimeOriginal"), QStringLiteral("2015:06:01 10:00:00"));
        exif.insert(QStringLiteral("DateTimeDigitized"), QStringLiteral("2015:06:01 10:00:05"));
        changes.groups.insert(QStringLiteral("{Exif}"), exif);
        QVariantMap tiff = current.properties.value(QStringLiteral("{TIFF}")).toMap();
        tiff.insert(QStringLiteral("DateTime"), QStringLiteral("2015:06:01 10:00:00"));
        changes.groups.insert(QStringLiteral("{TIFF}"), tiff);
        changes.groups.insert(QStringLiteral("{GPS}"), QVariantMap{
            {QStringLiteral("Latitude"), 48.8583}, {QStringLiteral("LatitudeRef"), QStringLiteral("N")},
            {QStringLiteral("Longitude"), 2.2945}, {QStringLiteral("LongitudeRef"), QStringLiteral("W")},
            {QStringLiteral("Altitude"), 35.0}, {QStringLiteral("AltitudeRef"), 0}});

        const QString output = outputFor(source);
        const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
        ASSERT_EQ(result.outcome, Outcome::Rewritten) << result.reason.toStdString();
        EXPECT_EQ(result.written, QStringList{output});
        EXPECT_FALSE(QFile::exists(output + QStringLiteral(".xmp")));
        EXPECT_EQ(hashOf(source), sourceHash);

        const QJsonObject after = exiftool(output);
        EXPECT_EQ(after.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("2015:06:01 10:00:00"));
        EXPECT_EQ(after.value(QStringLiteral("ExifIFD:CreateDate")).toString(), QStringLiteral("2015:06:01 10:00:05"));
        EXPECT_EQ(after.value(QStringLiteral("IFD0:ModifyDate")).toString(), QStringLiteral("2015:06:01 10:00:00"));
        EXPECT_NEAR(after.value(QStringLiteral("Composite:GPSLatitude")).toDouble(), 48.8583, 1e-6);
        EXPECT_NEAR(after.value(QStringLiteral("Composite:GPSLongitude")).toDouble(), -2.2945, 1e-6);
        EXPECT_NEAR(after.value(QStringLiteral("Composite:GPSAltitude")).toDouble(), 35.0, 1e-6);
        const QStringList changed{QStringLiteral("ExifIFD:DateTimeOriginal"), QStringLiteral("ExifIFD:CreateDate"),
                                  QStringLiteral("IFD0:ModifyDate"), QStringLiteral("GPS:"),
                                  QStringLiteral("Composite:")};
        EXPECT_EQ(text(tagsBut(after, changed)), text(tagsBut(before, changed)));
        for (const QString& warning : validationWarnings(output))
            EXPECT_TRUE(warningsBefore.contains(warning)) << warning.toStdString();

        // The maker notes, the previews and the media keep every byte.
        const QByteArray sourceBytes = readAll(source);
        const QByteArray outputBytes = readAll(output);
        for (const char* kept : {"CMT3", "THMB", "CNCV", "CCTP"}) {
            const qsizetype at = sourceBytes.indexOf(kept);
            ASSERT_GT(at, 0);
            const qsizetype size = qsizetype(readU32(sourceBytes, at - 4));
            EXPECT_TRUE(outputBytes.contains(sourceBytes.mid(at - 4, size))) << kept;
        }
        const auto sourceBoxes = topLevelBoxes(source);
        const auto outputBoxes = topLevelBoxes(output);
        for (auto it = sourceBoxes.cbegin(); it != sourceBoxes.cend(); ++it) {
            if (it.key() != "moov" && !it.key().startsWith("uuidbe7acfcb")) {
                EXPECT_EQ(outputBoxes.value(it.key()), it.value()) << it.key().constData();
            }
        }
        EXPECT_EQ(canonTableTargets(output), canonTableTargets(source));

        // Our own reader sees what exiftool sees.
        const PhotoProperties reread = readPhotoProperties(output);
        EXPECT_EQ(reread.properties.value(QStringLiteral("{Exif}")).toMap().value(QStringLiteral("DateTimeOriginal")),
                  QVariant(QStringLiteral("2015:06:01 10:00:00")));
    }
}

TEST_F(Cr3RewriteTest, GpsRemovalLeavesNoLocationInExifOrXmp)
{
    const QString source = copyOf(test::dataPath(kCanonM50));
    ASSERT_TRUE(test::exiftoolWrite(source, {QStringLiteral("-GPSLatitude=36.46"), QStringLiteral("-GPSLatitudeRef=N"),
                                             QStringLiteral("-GPSLongitude=116.87"), QStringLiteral("-GPSLongitudeRef=W"),
                                             QStringLiteral("-XMP-exif:GPSLatitude=36.46"),
                                             QStringLiteral("-XMP-exif:GPSLongitude=-116.87"),
                                             QStringLiteral("-XMP-dc:Title=Furnace Creek")}));
    const QJsonObject before = exiftool(source);
    ASSERT_TRUE(before.contains(QStringLiteral("GPS:GPSLatitude")));
    ASSERT_TRUE(before.contains(QStringLiteral("XMP-exif:GPSLatitude")));
    const QStringList warningsBefore = validationWarnings(source);

    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{GPS}"), QVariant());
    const QString output = outputFor(source);
    const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
    ASSERT_EQ(result.outcome, Outcome::Rewritten) << result.reason.toStdString();

    const QJsonObject after = exiftool(output);
    EXPECT_TRUE(test::tagsOf(after, {QStringLiteral("GPS:"), QStringLiteral("XMP-exif:GPS"), QStringLiteral("Composite:GPS")}).isEmpty());
    EXPECT_EQ(after.value(QStringLiteral("XMP-dc:Title")).toString(), QStringLiteral("Furnace Creek"));
    const QStringList changed{QStringLiteral("GPS:"), QStringLiteral("XMP-exif:"), QStringLiteral("Composite:"),
                              QStringLiteral("XMP-x:XMPToolkit")};
    EXPECT_EQ(text(tagsBut(after, changed)), text(tagsBut(before, changed)));
    for (const QString& warning : validationWarnings(output))
        EXPECT_TRUE(warningsBefore.contains(warning)) << warning.toStdString();
    EXPECT_EQ(canonTableTargets(output), canonTableTargets(source));
}

TEST_F(Cr3RewriteTest, XmpDatesFollowTheExifDatesTheyMirror)
{
    // exiftool lays out the file anew and pads its XMP packet, as photo managers do.
    const QString source = copyOf(test::dataPath(kCanonM50));
    ASSERT_TRUE(test::exiftoolWrite(source, {QStringLiteral("-XMP-exif:DateTimeOriginal=2018:02:21 12:08:56"),
                                             QStringLiteral("-XMP-xmp:CreateDate=2018:02:21 12:08:56+01:00")}));
    PhotoChanges changes;
    QVariantMap exif = readPhotoProperties(source).properties.value(QStringLiteral("{Exif}")).toMap();
    exif.insert(QStringLiteral("DateTimeOriginal"), QStringLiteral("2018:02:22 12:08:56"));
    exif.insert(QStringLiteral("DateTimeDigitized"), QStringLiteral("2018:02:22 12:08:56"));
    changes.groups.insert(QStringLiteral("{Exif}"), exif);
    const QString output = outputFor(source);
    const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
    ASSERT_EQ(result.outcome, Outcome::Rewritten) << result.reason.toStdString();

    const QJsonObject after = exiftool(output);
    EXPECT_EQ(after.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("2018:02:22 12:08:56"));
    EXPECT_EQ(after.value(QStringLiteral("XMP-exif:DateTimeOriginal")).toString(), QStringLiteral("2018:02:22 12:08:56"));
    EXPECT_EQ(after.value(QStringLiteral("XMP-xmp:CreateDate")).toString(), QStringLiteral("2018:02:22 12:08:56+01:00"));
    EXPECT_EQ(QFileInfo(output).size(), QFileInfo(source).size());
    EXPECT_EQ(canonTableTargets(output), canonTableTargets(source));
}

// A CR3 holds no IPTC record: the title and keywords the editor keeps in IPTC go into the
// XMP packet, where photo managers read them, and nothing says they were dropped.
TEST_F(Cr3RewriteTest, TitleAndKeywordsGoIntoTheXmpPacket)
{
    const QString source = copyOf(test::dataPath(kCanonM50));
    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{IPTC}"),
                          QVariantMap{{QStringLiteral("ObjectName"), QStringLiteral("Harbour")},
                                      {QStringLiteral("Keywords"), QVariantList{QStringLiteral("sea"), QStringLiteral("boats")}}});
    const QString output = outputFor(source);
    const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
    ASSERT_EQ(result.outcome, Outcome::Rewritten) << result.reason.toStdString();
    EXPECT_TRUE(result.warnings.isEmpty()) << result.warnings.join(QLatin1Char('\n')).toStdString();

    const QJsonObject after = exiftool(output);
    EXPECT_EQ(after.value(QStringLiteral("XMP-dc:Title")).toString(), QStringLiteral("Harbour"));
    EXPECT_EQ(after.value(QStringLiteral("XMP-dc:Subject")).toVariant(), (QVariantList{QStringLiteral("sea"), QStringLiteral("boats")}));
    EXPECT_EQ(after.value(QStringLiteral("XMP-xmp:Rating")), exiftool(source).value(QStringLiteral("XMP-xmp:Rating")));
    EXPECT_EQ(validationWarnings(output), validationWarnings(source));
}

TEST_F(Cr3RewriteTest, GrowingMetadataMovesTheMediaAndTheOffsetsFollowIt)
{
    const QString source = copyOf(test::dataPath(kCanonM50));
    const QJsonObject before = exiftool(source);
    const QString description = QStringLiteral("A long description of a holiday photo. ").repeated(20);
    PhotoChanges changes;
    QVariantMap tiff = readPhotoProperties(source).properties.value(QStringLiteral("{TIFF}")).toMap();
    tiff.insert(QStringLiteral("ImageDescription"), description);
    changes.groups.insert(QStringLiteral("{TIFF}"), tiff);
    const QString output = outputFor(source);
    const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
    ASSERT_EQ(result.outcome, Outcome::Rewritten) << result.reason.toStdString();

    const QJsonObject after = exiftool(output);
    EXPECT_EQ(after.value(QStringLiteral("IFD0:ImageDescription")).toString(), description);
    EXPECT_GT(after.value(QStringLiteral("QuickTime:MediaDataOffset")).toInt(),
              before.value(QStringLiteral("QuickTime:MediaDataOffset")).toInt());
    const QStringList changed{QStringLiteral("IFD0:ImageDescription"), QStringLiteral("QuickTime:MediaDataOffset")};
    EXPECT_EQ(text(tagsBut(after, changed)), text(tagsBut(before, changed)));
    // exiftool finds the raw image through the moved chunk offsets, the previews in their boxes.
    for (const QString& image : {QStringLiteral("JpgFromRaw"), QStringLiteral("PreviewImage"), QStringLiteral("ThumbnailImage")}) {
        const QByteArray was = test::exiftoolExtract(source, image);
        ASSERT_FALSE(was.isEmpty()) << image.toStdString();
        EXPECT_EQ(test::exiftoolExtract(output, image), was) << image.toStdString();
    }
    const QList<QByteArray> targets = canonTableTargets(output);
    EXPECT_EQ(targets, canonTableTargets(source));
    EXPECT_TRUE(targets.contains("mdat"));
}

TEST_F(Cr3RewriteTest, RemovingEverythingKeepsTheMakerNotesAndWhatRawDevelopersNeed)
{
    const QString source = copyOf(test::dataPath(kCanonM50));
    const QJsonObject before = exiftool(source);
    PhotoChanges changes;
    changes.removeAllMetadata = true;
    const QString output = outputFor(source);
    const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
    ASSERT_EQ(result.outcome, Outcome::Rewritten) << result.reason.toStdString();
    EXPECT_TRUE(result.warnings.join(QLatin1Char('\n')).contains(QStringLiteral("maker notes")));

    const QJsonObject after = exiftool(output);
    EXPECT_TRUE(test::tagsOf(after, {QStringLiteral("ExifIFD:"), QStringLiteral("GPS:"), QStringLiteral("XMP")}).isEmpty());
    for (const QString& kept : {QStringLiteral("IFD0:Make"), QStringLiteral("IFD0:Model"), QStringLiteral("IFD0:Orientation"),
                                QStringLiteral("IFD0:ImageWidth")})
        EXPECT_EQ(after.value(kept), before.value(kept)) << kept.toStdString();
    EXPECT_FALSE(after.contains(QStringLiteral("IFD0:ModifyDate")));
    EXPECT_EQ(text(test::tagsOf(after, {QStringLiteral("Canon:")})), text(test::tagsOf(before, {QStringLiteral("Canon:")})));
    EXPECT_FALSE(test::tagsOf(after, {QStringLiteral("Canon:")}).isEmpty());
    EXPECT_TRUE(validationWarnings(output).isEmpty());
}

TEST_F(Cr3RewriteTest, AStreamHoldingMoreThanItsOwnDirectoryIsNotRewritten)
{
    // ImageMagick writes a two-page TIFF: a second directory follows the first, which a CMT box
    // never has and whose values would be lost if the stream were encoded anew.
    const QString twoPages = inputs.filePath(QStringLiteral("two.tif"));
    ASSERT_TRUE(test::imageMagick({QStringLiteral("-size"), QStringLiteral("8x8"), QStringLiteral("xc:red"),
                                   QStringLiteral("xc:blue"), twoPages}));
    Cr3Metadata metadata;
    metadata.tiff[Cr3Metadata::Ifd0] = readAll(twoPages);
    Cr3Exiv2Data data;
    QString error;
    ASSERT_TRUE(decodeCr3Metadata(metadata, &data, &error)) << error.toStdString();

    data.exif["Exif.GPSInfo.GPSLatitudeRef"] = "N";
    Cr3Metadata gpsOnly = metadata;
    ASSERT_TRUE(encodeCr3Metadata(data, &gpsOnly, &error)) << error.toStdString();
    EXPECT_EQ(gpsOnly.tiff[Cr3Metadata::Ifd0], metadata.tiff[Cr3Metadata::Ifd0]);
    EXPECT_FALSE(gpsOnly.tiff[Cr3Metadata::GpsIfd].isEmpty());

    data.exif["Exif.Image.Artist"] = "Jane";
    Cr3Metadata withArtist = metadata;
    EXPECT_FALSE(encodeCr3Metadata(data, &withArtist, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("'CMT1'"))) << error.toStdString();
    EXPECT_EQ(withArtist.tiff[Cr3Metadata::Ifd0], metadata.tiff[Cr3Metadata::Ifd0]);
}

TEST_F(Cr3RewriteTest, DamagedFilesAreRefusedWithAReasonAndWriteNothing)
{
    // Cut off inside its media data, as an interrupted copy leaves it.
    const QString cut = inputs.filePath(QStringLiteral("cut.cr3"));
    {
        QFile f(cut);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(readAll(test::dataPath(kCanonM50)).left(30000));
    }
    QStringList damaged{cut};
    const QString truncated = sharedFixture(QStringLiteral("broken/ft-truncated_EOS_R.cr3"));
    if (!truncated.isEmpty())
        damaged << copyOf(truncated);
    for (const QString& source : damaged) {
        SCOPED_TRACE(source.toStdString());
        const QByteArray hash = hashOf(source);
        for (const bool removal : {true, false}) {
            PhotoChanges changes;
            if (removal)
                changes.groups.insert(QStringLiteral("{GPS}"), QVariant());
            else
                changes.groups.insert(QStringLiteral("{TIFF}"), QVariantMap{{QStringLiteral("Artist"), QStringLiteral("Jane")}});
            const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, outputFor(source));
            EXPECT_EQ(result.outcome, Outcome::Skipped);
            EXPECT_EQ(result.reason, QStringLiteral("the file is damaged or incomplete"));
        }
        EXPECT_EQ(hashOf(source), hash);
    }
    EXPECT_TRUE(QDir(store.path()).entryList(QDir::Files | QDir::Hidden).isEmpty());
}

TEST_F(Cr3RewriteTest, TracksPointingPastTheEndAreNotMovedButRefused)
{
    // The pruned sample keeps its tracks' chunk offsets while their media is gone: growing its
    // movie box would move data that is not there.
    const QString pruned = sharedFixture(QStringLiteral("raw/exiv2-Canon_R6_pruned.cr3"));
    if (pruned.isEmpty())
        GTEST_SKIP() << "the shared sample folder is not at hand";
    const QString source = copyOf(pruned);
    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{TIFF}"),
                          QVariantMap{{QStringLiteral("ImageDescription"), QStringLiteral("x").repeated(2000)}});
    const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, outputFor(source));
    EXPECT_EQ(result.outcome, Outcome::Failed);
    EXPECT_TRUE(result.reason.contains(QStringLiteral("chunk offset"))) << result.reason.toStdString();
    EXPECT_TRUE(QDir(store.path()).entryList(QDir::Files | QDir::Hidden).isEmpty());
}

}  // namespace
}  // namespace pelorin

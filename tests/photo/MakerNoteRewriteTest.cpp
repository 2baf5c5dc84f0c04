#include "photo/ExifTiffTree.h"
#include "photo/JpegMakerNote.h"
#include "photo/PhotoProperties.h"
#include "photo/PhotoReadBack.h"
#include "photo/PhotoRewrite.h"

#include "EncodedPicture.h"
#include "ExifTool.h"
#include "FileBytes.h"
#include "QtPrinters.h"
#include "TestPaths.h"

#include <QFile>
#include <QJsonDocument>
#include <QtEndian>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

using test::dataPath;
using test::readAll;

// Cameras whose maker notes exiv2 moves without their contents following: Olympus E-1
// (directories in undefined blocks pointing into the rest of the note), Nintendo 3DS (unknown to
// exiv2, offsets from the TIFF header), Canon S330 (little-endian note in a big-endian EXIF,
// which exiv2 cannot read and wrote empty) and Nikon P6000 (values past the note's declared end).
// And one whose note points outside itself, which only exiv2's own layout keeps: the Pentax
// K10D's preview lies behind the thumbnail.
const QStringList kMakerNoteSamples{QStringLiteral("et-OlympusE1.jpg"), QStringLiteral("pil-sugarshack_first_image.jpg"),
                                    QStringLiteral("mde-Canon_PowerShot_S330.jpg"), QStringLiteral("exs-Nikon_P6000_gps.jpg"),
                                    QStringLiteral("et-Pentax_K10D.jpg")};

// The maker-note tags exiftool reads, as text so that a failed comparison shows them. Where an
// embedded preview starts is given from the start of the file, which moves with the segments
// before the EXIF; its bytes are compared instead.
std::string makerNotes(const QString& path)
{
    QJsonObject tags = test::exiftool(path, {QStringLiteral("-MakerNotes:all"), QStringLiteral("-b")});
    tags.remove(QStringLiteral("SourceFile"));
    for (const QString& key : tags.keys()) {
        if (key.endsWith(QLatin1String("ImageStart")))
            tags.remove(key);
    }
    return QJsonDocument(tags).toJson().toStdString();
}

QVariantMap groupOf(const QString& path, const QString& group)
{
    return readPhotoProperties(path).properties.value(group).toMap();
}

// The changes of the commands that rewrite a JPEG's EXIF, each made to fit the sample.
QList<QPair<QString, PhotoChanges>> exifRewrites(const QString& source)
{
    PhotoChanges artist;
    QVariantMap tiff = groupOf(source, QStringLiteral("{TIFF}"));
    tiff.insert(QStringLiteral("Artist"), QStringLiteral("Zoë Someone"));
    artist.groups.insert(QStringLiteral("{TIFF}"), tiff);
    PhotoChanges date;
    QVariantMap exif = groupOf(source, QStringLiteral("{Exif}"));
    exif.insert(QStringLiteral("DateTimeOriginal"), QStringLiteral("2001:02:03 04:05:06"));
    date.groups.insert(QStringLiteral("{Exif}"), exif);
    PhotoChanges noGps;
    noGps.groups.insert(QStringLiteral("{GPS}"), QVariant());
    PhotoChanges noIptc;
    noIptc.groups.insert(QStringLiteral("{IPTC}"), QVariant());
    return {{QStringLiteral("artist"), artist}, {QStringLiteral("date"), date},
            {QStringLiteral("no GPS"), noGps}, {QStringLiteral("no IPTC"), noIptc}};
}

TEST(MakerNoteRewrite, EveryExifRewriteKeepsTheMakerNotesAsExiftoolReadsThem)
{
    QTemporaryDir out;
    for (const QString& name : kMakerNoteSamples) {
        const QString source = dataPath(name);
        const std::string before = makerNotes(source);
        ASSERT_GT(before.size(), 100u) << name.toStdString() << ": exiftool finds no maker notes";
        for (const auto& [label, changes] : exifRewrites(source)) {
            SCOPED_TRACE(QStringLiteral("%1, %2").arg(name, label).toStdString());
            const QString output = out.filePath(label + QLatin1Char('-') + name);
            const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
            ASSERT_EQ(result.outcome, PhotoWriteResult::Outcome::Rewritten) << result.reason.toStdString();
            EXPECT_EQ(makerNotes(output), before);
            EXPECT_EQ(test::newValidationWarnings(source, output), QStringList());
        }
    }
}

TEST(MakerNoteRewrite, SmallCopiesCarryTheMakerNotesIntact)
{
    QTemporaryDir out;
    for (const QString& name : kMakerNoteSamples) {
        SCOPED_TRACE(name.toStdString());
        const QString source = dataPath(name);
        const QByteArray small = test::plainJpeg(64, 48, Qt::darkCyan);
        ASSERT_FALSE(small.isEmpty());
        PhotoChanges upright;
        upright.groups.insert(QStringLiteral("Orientation"), 1);
        QString error;
        const auto carried = carryMetadataOver(readAll(source), small, upright, &error);
        ASSERT_TRUE(carried) << error.toStdString();
        const QString output = out.filePath(name);
        ASSERT_TRUE(test::writeAll(output, *carried));
        EXPECT_EQ(makerNotes(output), makerNotes(source));
    }
}

// A HEIF's Exif item is rewritten by the same EXIF writer: the E-1's maker note, copied into
// one by exiftool, comes through an edit as it was.
TEST(MakerNoteRewrite, HeifExifItemsKeepTheMakerNotes)
{
    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("olympus.heic"));
    ASSERT_TRUE(QFile::copy(dataPath(QStringLiteral("exiv2-Stonehenge.heic")), source));
    QFile::setPermissions(source, QFile::ReadOwner | QFile::WriteOwner);
    ASSERT_TRUE(test::exiftoolWrite(source, {QStringLiteral("-tagsfromfile"), dataPath(QStringLiteral("et-OlympusE1.jpg")),
                                             QStringLiteral("-exif:all")}));
    const std::string before = makerNotes(source);
    ASSERT_NE(before.find("LensSerialNumber"), std::string::npos);
    const QString output = dir.filePath(QStringLiteral("edited.heic"));
    const PhotoWriteResult result = CopyPhotoWithProperties(source, exifRewrites(source).first().second, output);
    ASSERT_EQ(result.outcome, PhotoWriteResult::Outcome::Rewritten) << result.reason.toStdString();
    EXPECT_EQ(makerNotes(output), before);
    EXPECT_EQ(test::newValidationWarnings(source, output), QStringList());
}

// The read-back refuses an output whose maker note moved, or lost its values, even where the
// output is otherwise what the command asked.
TEST(MakerNoteRewrite, ReadBackRefusesMakerNotesThatMovedOrWentMissing)
{
    QTemporaryDir out;
    const QString source = dataPath(QStringLiteral("et-OlympusE1.jpg"));
    const QByteArray sourceBytes = readAll(source);
    const QString kept = out.filePath(QStringLiteral("kept.jpg"));
    ASSERT_TRUE(CopyPhotoWithProperties(source, exifRewrites(source).first().second, kept).ok());
    const QByteArray keptBytes = readAll(kept);

    PhotoExpectation expected{sourceBytes, detectPhotoFormat(sourceBytes.left(64), QStringLiteral("jpg")),
                              QStringLiteral("jpg"), {}, {}, {}, true, {}};
    EXPECT_EQ(photoReadBackProblem(expected, kept), QString());

    // The same maker note, sixteen bytes further on: every offset in it now points elsewhere.
    const auto tree = ExifTiffTree::parse(jpegExifBlock(keptBytes));
    ASSERT_TRUE(tree);
    auto makerNote = tree->exifDirectoryValue(0x927C);
    ASSERT_TRUE(makerNote);
    makerNote->offset += 16;
    const auto movedBlock = tree->withExifValuePinned(0x927C, *makerNote);
    ASSERT_TRUE(movedBlock);
    QByteArray moved = keptBytes;
    const qsizetype at = moved.indexOf(jpegExifBlock(keptBytes));
    moved.replace(at, jpegExifBlock(keptBytes).size(), *movedBlock);
    const quint16 length = quint16(2 + 6 + movedBlock->size());
    moved[at - 8] = char(length >> 8);
    moved[at - 7] = char(length & 0xFF);
    const QString movedPath = out.filePath(QStringLiteral("moved.jpg"));
    ASSERT_TRUE(test::writeAll(movedPath, moved));
    EXPECT_NE(makerNotes(movedPath), makerNotes(source));  // the damage the check is about
    EXPECT_EQ(photoReadBackProblem(expected, movedPath),
              QStringLiteral("the maker notes could not be kept where the source has them"));

    // Values exiv2 reads: an output whose maker notes exiftool removed is refused.
    const QString stripped = out.filePath(QStringLiteral("stripped.jpg"));
    ASSERT_TRUE(QFile::copy(kept, stripped));
    ASSERT_TRUE(test::exiftoolWrite(stripped, {QStringLiteral("-MakerNotes:all=")}));
    expected.makerNoteInPlace = false;
    expected.makerNotes = photoMakerNoteValues(sourceBytes);
    ASSERT_FALSE(expected.makerNotes.isEmpty());
    EXPECT_EQ(photoReadBackProblem(expected, kept), QString());
    EXPECT_TRUE(photoReadBackProblem(expected, stripped)
                    .startsWith(QStringLiteral("the maker notes do not read back as the source has them (Exif.Olympus.")))
        << photoReadBackProblem(expected, stripped).toStdString();
}

TEST(ExifTiffTree, HostileBlocksAreRefusedWithoutReadingPastThem)
{
    const QByteArray block = jpegExifBlock(readAll(dataPath(QStringLiteral("et-OlympusE1.jpg"))));
    ASSERT_TRUE(ExifTiffTree::parse(block));
    for (qsizetype cut : {qsizetype(0), qsizetype(7), qsizetype(20), block.size() / 2, block.size() - 1}) {
        // Parsing a cut block must not crash; the cut before the thumbnail is refused.
        const auto tree = ExifTiffTree::parse(block.left(cut));
        if (cut < 20) {
            EXPECT_FALSE(tree) << cut;
        }
    }
    // IFD0 pointing at itself as its next directory: a loop, refused.
    QByteArray loop("II*\0\x08\0\0\0\x01\0\x0e\x01\x02\0\x02\0\0\0a\0\0\0\x08\0\0\0", 26);
    EXPECT_FALSE(ExifTiffTree::parse(loop));
    loop[22] = 0;  // no next directory: a valid one-entry block
    EXPECT_TRUE(ExifTiffTree::parse(loop));
    // A thousand strips, each of them the whole block: refused rather than copied a thousand times.
    QByteArray strips(8 + 2 + 2 * 12 + 4 + 2 * 4000, '\0');
    strips.replace(0, 4, QByteArray("II*\0", 4));
    const auto put16 = [&](qsizetype at, quint16 v) { qToLittleEndian(v, strips.data() + at); };
    const auto put32 = [&](qsizetype at, quint32 v) { qToLittleEndian(v, strips.data() + at); };
    put32(4, 8);
    put16(8, 2);
    const quint32 offsetsAt = 38, lengthsAt = 38 + 4000;
    for (const auto& [index, tag, at] : {std::tuple{0, 0x0111, offsetsAt}, std::tuple{1, 0x0117, lengthsAt}}) {
        put16(10 + 12 * index, quint16(tag));
        put16(12 + 12 * index, 4);
        put32(14 + 12 * index, 1000);
        put32(18 + 12 * index, at);
    }
    for (int i = 0; i < 1000; ++i)
        put32(lengthsAt + 4 * i, quint32(strips.size()));
    EXPECT_FALSE(ExifTiffTree::parse(strips));
    // An Exif directory pointer far past the end.
    QByteArray far("MM\0*\0\0\0\x08\0\x01\x87\x69\0\x04\0\0\0\x01\x7f\xff\xff\xff\0\0\0\0", 26);
    EXPECT_FALSE(ExifTiffTree::parse(far));
}

}  // namespace
}  // namespace pelorin

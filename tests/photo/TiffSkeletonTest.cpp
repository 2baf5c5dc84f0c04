#include "photo/PhotoCompleteness.h"
#include "photo/PhotoProperties.h"
#include "photo/PhotoRewrite.h"
#include "photo/TiffPieces.h"
#include "photo/TiffSkeleton.h"

#include "ExifTool.h"
#include "FileBytes.h"
#include "ImageMagick.h"
#include "QtPrinters.h"
#include "TestPaths.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

using test::readAll;
using test::writeAll;

// Noise, which does not compress, as ImageMagick writes it with the options given, then
// exiftool's GPS, capture date and title.
QString taggedNoiseTiff(const QTemporaryDir& dir, const QString& name, const QStringList& options)
{
    const QString path = dir.filePath(name);
    QStringList args{QStringLiteral("-size"), QStringLiteral("1200x900"), QStringLiteral("xc:"), QStringLiteral("+noise"),
                     QStringLiteral("Random"), QStringLiteral("-depth"), QStringLiteral("8")};
    args << options << path;
    if (!test::imageMagick(args))
        return {};
    const bool tagged = test::exiftoolWrite(
        path, {QStringLiteral("-GPSLatitude=48.85"), QStringLiteral("-GPSLatitudeRef=N"), QStringLiteral("-GPSLongitude=2.29"),
               QStringLiteral("-GPSLongitudeRef=E"), QStringLiteral("-DateTimeOriginal=2021:06:01 10:00:00"),
               QStringLiteral("-XMP-dc:Title=Noise")});
    return tagged ? path : QString();
}

// The pixel difference ImageMagick counts between every page of two files.
QString pixelDifference(const QString& a, const QString& b, int pages)
{
    QStringList counts;
    for (int page = 0; page < pages; ++page) {
        QProcess compare;
        compare.start(QStringLiteral("compare"), {QStringLiteral("-metric"), QStringLiteral("AE"),
                                                  QStringLiteral("%1[%2]").arg(a).arg(page),
                                                  QStringLiteral("%1[%2]").arg(b).arg(page), QStringLiteral("null:")});
        if (!compare.waitForFinished(60000))
            return QStringLiteral("compare did not finish");
        counts << QString::fromUtf8(compare.readAllStandardError().trimmed().split('\n').last());
    }
    return counts.join(u' ');
}

PhotoWriteResult rewritten(const QString& source, const QString& output, const QString& group, const QVariant& value)
{
    PhotoChanges changes;
    changes.groups.insert(group, value);
    return CopyPhotoWithProperties(source, changes, output);
}

// TIFFs in strips and tiles, in both byte orders, of one and of two pages: their metadata is read
// (and that of a single page rewritten) without their image data passing through the process. A removal and a value of
// the same length keep the layout; a description longer than all the metadata had room for makes
// exiv2 lay the metadata out anew, and the strips and tiles go after it. Each time exiftool reads
// the change, finds nothing new to warn of, and ImageMagick the same pixels on every page.
TEST(TiffSkeleton, MetadataIsRewrittenWithoutTheImageDataInStripsTilesBothOrdersAndPages)
{
    QTemporaryDir dir;
    struct Kind {
        const char* name;
        QStringList options;
        int pages;
    };
    const QList<Kind> kinds{
        {"strips.tif", {}, 1},
        {"tiles-msb.tif", {QStringLiteral("-define"), QStringLiteral("tiff:tile-geometry=256x256"), QStringLiteral("-endian"),
                           QStringLiteral("MSB")}, 1},
        {"pages.tif", {QStringLiteral("("), QStringLiteral("+clone"), QStringLiteral("-negate"), QStringLiteral(")")}, 2},
    };
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        const QString source = taggedNoiseTiff(dir, QString::fromLatin1(kind.name), kind.options);
        ASSERT_FALSE(source.isEmpty());
        QFile file(source);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const auto skeleton = readTiffSkeleton(file);
        ASSERT_TRUE(skeleton.has_value());
        qint64 imageBytes = 0;
        for (const CopiedRange& piece : skeleton->pieces)
            imageBytes += piece.length;
        EXPECT_GT(imageBytes, 1200 * 900 * 3 * kind.pages - 1);
        const qint64 readBefore = test::bytesReadByThisProcess();
        const PhotoProperties info = readPhotoProperties(source);
        EXPECT_LT(test::bytesReadByThisProcess() - readBefore, 200'000);
        ASSERT_TRUE(info.ok());
        EXPECT_EQ(info.properties, readPhotoProperties(readAll(source), QStringLiteral("tif")).properties);

        const QString noGps = dir.filePath(QStringLiteral("no-gps-") + QString::fromLatin1(kind.name));
        PhotoWriteResult result = rewritten(source, noGps, QStringLiteral("{GPS}"), QVariant());
        ASSERT_EQ(result.outcome, PhotoWriteResult::Outcome::Rewritten) << result.reason.toStdString();
        const QJsonObject tags = test::exiftool(noGps);
        EXPECT_TRUE(test::tagsOf(tags, {QStringLiteral("GPS")}).isEmpty());
        EXPECT_EQ(tags.value(QStringLiteral("XMP-dc:Title")).toString(), QStringLiteral("Noise"));
        EXPECT_TRUE(test::newValidationWarnings(source, noGps).isEmpty()) << test::newValidationWarnings(source, noGps).join(u'\n').toStdString();
        const QByteArray latitude = QByteArray::fromHex(readAll(source).startsWith("II") ? "300000000100000033000000"
                                                                                         : "000000300000000100000033");
        EXPECT_TRUE(readAll(source).contains(latitude));
        EXPECT_FALSE(readAll(noGps).contains(latitude));  // no latitude left behind

        const QString described = dir.filePath(QStringLiteral("described-") + QString::fromLatin1(kind.name));
        const QString description = QString(20000, u'd');
        QVariantMap tiff = info.properties.value(QStringLiteral("{TIFF}")).toMap();
        tiff.insert(QStringLiteral("ImageDescription"), description);
        result = rewritten(source, described, QStringLiteral("{TIFF}"), tiff);
        ASSERT_EQ(result.outcome, PhotoWriteResult::Outcome::Rewritten) << result.reason.toStdString();
        EXPECT_EQ(test::exiftool(described).value(QStringLiteral("IFD0:ImageDescription")).toString(), description);
        EXPECT_TRUE(photoFileComplete(described));

        for (const QString& output : {noGps, described}) {
            SCOPED_TRACE(output.toStdString());
            EXPECT_EQ(pixelDifference(source, output, kind.pages), kind.pages == 1 ? QStringLiteral("0") : QStringLiteral("0 0"));
            QFile written(output);
            ASSERT_TRUE(written.open(QIODevice::ReadOnly));
            const auto out = readTiffSkeleton(written);
            ASSERT_TRUE(out.has_value());
            ASSERT_EQ(out->pieces.size(), skeleton->pieces.size());
            const QByteArray in = readAll(source), bytes = readAll(output);
            for (qsizetype i = 0; i < out->pieces.size(); ++i) {
                const CopiedRange& from = skeleton->pieces[i];
                const CopiedRange& to = out->pieces[i];
                ASSERT_EQ(bytes.mid(to.sourceOffset, to.length), in.mid(from.sourceOffset, from.length)) << "piece " << i;
                // Copied, not laid out by exiv2: a large piece keeps its place within a block, so
                // that a file system that clones can share it. (exiv2 takes a second page for a
                // thumbnail and copies its strips as one block: such a file is rewritten whole.)
                if (from.length >= 64 * 1024 && kind.pages == 1)
                    EXPECT_EQ(to.sourceOffset % 4096, from.sourceOffset % 4096) << "piece " << i;
            }
        }
        EXPECT_GT(QFileInfo(described).size(), QFileInfo(source).size());
    }
}

// A skeleton only where the strips lie apart from each other and from the places that say
// where they are; a rewrite's pieces go back only where it kept every strip as a stand-in.
TEST(TiffSkeleton, OnlyForStripsApartFromEachOtherAndFromTheirTables)
{
    QTemporaryDir dir;
    const QString source = taggedNoiseTiff(dir, QStringLiteral("plain.tif"), {});
    ASSERT_FALSE(source.isEmpty());
    const QByteArray whole = readAll(source);
    QList<TiffPieceSlots> found;
    ASSERT_TRUE(walkTiffPieceSlots(whole, [&found](const TiffPieceSlots& s) { found.append(s); }));
    ASSERT_GE(found.size(), 2);
    ASSERT_EQ(found[0].offsetSize, 4);
    const auto skeletonOf = [&](const QByteArray& bytes) {
        const QString path = dir.filePath(QStringLiteral("odd.tif"));
        EXPECT_TRUE(writeAll(path, bytes));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return readTiffSkeleton(file);
    };
    const auto little32 = [](quint32 v) {
        const char bytes[4] = {char(v & 0xff), char((v >> 8) & 0xff), char((v >> 16) & 0xff), char(v >> 24)};
        return QByteArray(bytes, 4);
    };
    QByteArray overlapping = whole;  // the second strip starts inside the first
    overlapping.replace(found[1].offsetAt, 4, little32(found[0].offset + 1));
    EXPECT_FALSE(skeletonOf(overlapping).has_value());
    QByteArray overTheTable = whole;  // the first strip covers the table of offsets
    overTheTable.replace(found[0].offsetAt, 4, little32(quint32(found[0].offsetAt & ~3)));
    EXPECT_FALSE(skeletonOf(overTheTable).has_value());

    const auto skeleton = skeletonOf(whole);
    ASSERT_TRUE(skeleton.has_value());
    EXPECT_TRUE(tiffPiecesAround(*skeleton, skeleton->bytes).has_value());
    EXPECT_FALSE(tiffPiecesAround(*skeleton, whole).has_value());  // strips at full length: not the stand-ins
    QByteArray oneLess = skeleton->bytes;  // a strip dropped from the rewrite
    QList<TiffPieceSlots> standIns;
    walkTiffPieceSlots(oneLess, [&standIns](const TiffPieceSlots& s) { standIns.append(s); });
    oneLess.replace(standIns.last().lengthAt, 4, little32(0));
    EXPECT_FALSE(tiffPiecesAround(*skeleton, oneLess).has_value());
}

}  // namespace
}  // namespace pelorin

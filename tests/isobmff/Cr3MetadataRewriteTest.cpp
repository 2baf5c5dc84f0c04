#include "isobmff/Cr3MetadataRewrite.h"

#include "Cr3Samples.h"
#include "ExifTool.h"
#include "TestPaths.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

using namespace pelorin;

namespace {

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QByteArray withSpacesBeforeTrailer(QByteArray packet, int count)
{
    packet.insert(packet.lastIndexOf("<?xpacket end"), QByteArray(count, ' '));
    return packet;
}

class Cr3MetadataRewriteTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        source = dir.filePath(QStringLiteral("source.cr3"));
        ASSERT_TRUE(QFile::copy(test::dataPath(QStringLiteral("et-Canon_M50.cr3")), source));
        target = dir.filePath(QStringLiteral("target.cr3"));
    }
    RewriteReport rewrite(const std::function<void(Cr3Metadata&)>& change)
    {
        return rewriteCr3Metadata(source, target, [&](Cr3Metadata& metadata, QString*) {
            change(metadata);
            return true;
        });
    }
    QTemporaryDir dir;
    QString source;
    QString target;
};

TEST_F(Cr3MetadataRewriteTest, GrowingBoxesMoveWhatFollowsAndTheOffsetsFollowThem)
{
    QString error;
    const std::optional<Cr3Metadata> before = readCr3Metadata(source, &error);
    ASSERT_TRUE(before) << error.toStdString();
    ASSERT_TRUE(before->hasXmpBox);
    const QJsonObject tagsBefore = test::exiftool(source);
    // The XMP packet alone, then the movie box as well (trailing bytes after a TIFF structure
    // are no part of it).
    const std::vector<std::function<void(Cr3Metadata&)>> changes = {
        [](Cr3Metadata& m) { m.xmp = withSpacesBeforeTrailer(m.xmp, 3000); },
        [](Cr3Metadata& m) {
            m.xmp = withSpacesBeforeTrailer(m.xmp, 700);
            m.tiff[Cr3Metadata::Ifd0].append(QByteArray(900, '\0'));
        },
    };
    for (const auto& change : changes) {
        QFile::remove(target);
        const RewriteReport report = rewrite(change);
        ASSERT_TRUE(report.written) << report.error.toStdString();
        EXPECT_TRUE(report.offsetsShifted);

        Cr3Metadata expected = *before;
        change(expected);
        const std::optional<Cr3Metadata> after = readCr3Metadata(target, &error);
        ASSERT_TRUE(after) << error.toStdString();
        EXPECT_EQ(after->tiff, expected.tiff);
        EXPECT_EQ(after->xmp, expected.xmp);

        // exiftool finds the raw image through the moved chunk offsets and the previews in their
        // moved boxes; every tag reads as before.
        for (const QString& image : {QStringLiteral("JpgFromRaw"), QStringLiteral("PreviewImage")}) {
            const QByteArray was = test::exiftoolExtract(source, image);
            ASSERT_FALSE(was.isEmpty());
            EXPECT_EQ(test::exiftoolExtract(target, image), was) << image.toStdString();
        }
        QJsonObject tagsAfter = test::exiftool(target);
        EXPECT_GT(tagsAfter.value(QStringLiteral("QuickTime:MediaDataOffset")).toInt(),
                  tagsBefore.value(QStringLiteral("QuickTime:MediaDataOffset")).toInt());
        for (const char* fact : {"QuickTime:MediaDataOffset", "System:FileName", "System:FileSize", "System:FileModifyDate",
                                 "System:FileAccessDate", "System:FileInodeChangeDate", "SourceFile"})
            tagsAfter.insert(QLatin1String(fact), tagsBefore.value(QLatin1String(fact)));
        EXPECT_EQ(tagsAfter, tagsBefore);
        EXPECT_EQ(test::canonTableTargets(target), test::canonTableTargets(source));
        EXPECT_TRUE(test::canonTableTargets(target).contains("mdat"));
    }
}

TEST_F(Cr3MetadataRewriteTest, AShorterStreamIsPaddedSoThatNothingElseMoves)
{
    const QByteArray emptyGps("II\x2A\0\x08\0\0\0\0\0\0\0\0\0", 14);
    const RewriteReport report = rewrite([&](Cr3Metadata& m) { m.tiff[Cr3Metadata::GpsIfd] = emptyGps; });
    ASSERT_TRUE(report.written) << report.error.toStdString();
    EXPECT_FALSE(report.offsetsShifted);
    const QByteArray was = readAll(source);
    const QByteArray now = readAll(target);
    ASSERT_EQ(now.size(), was.size());
    const qsizetype gps = was.indexOf("CMT4") + 4;
    const qsizetype gpsSize = qsizetype(readU32(was, gps - 8)) - 8;
    EXPECT_EQ(now.mid(gps, 14), emptyGps);
    EXPECT_EQ(now.mid(gps + 14, gpsSize - 14), QByteArray(gpsSize - 14, '\0'));
    EXPECT_EQ(now.left(gps), was.left(gps));
    EXPECT_EQ(now.mid(gps + gpsSize), was.mid(gps + gpsSize));
    EXPECT_FALSE(test::tagsOf(test::exiftool(source), {QStringLiteral("GPS:")}).isEmpty());
    EXPECT_TRUE(test::tagsOf(test::exiftool(target), {QStringLiteral("GPS:")}).isEmpty());
}

TEST_F(Cr3MetadataRewriteTest, WhatCannotBeKeptConsistentIsRefusedAndNothingIsWritten)
{
    RewriteReport report = rewrite([](Cr3Metadata& m) { m.tiff[Cr3Metadata::MakerNotes][20] = 'x'; });
    EXPECT_FALSE(report.written);
    EXPECT_TRUE(report.error.contains(QStringLiteral("CMT3"))) << report.error.toStdString();

    // No Canon box: a QuickTime movie is no CR3.
    const QString movie = dir.filePath(QStringLiteral("movie.mov"));
    ASSERT_TRUE(QFile::copy(test::dataPath(QStringLiteral("et-QuickTime.mov")), movie));
    report = rewriteCr3Metadata(movie, target, [](Cr3Metadata&, QString*) { return true; });
    EXPECT_FALSE(report.written);
    EXPECT_EQ(report.error, QStringLiteral("the file holds no Canon metadata box"));

    // The editor's own refusal stops the rewrite.
    report = rewriteCr3Metadata(source, target, [](Cr3Metadata&, QString* why) {
        *why = QStringLiteral("no");
        return false;
    });
    EXPECT_FALSE(report.written);
    EXPECT_EQ(report.error, QStringLiteral("no"));
    EXPECT_FALSE(QFile::exists(target));
}

}  // namespace

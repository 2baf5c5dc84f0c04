// HEIC, HEIF and AVIF photos rewritten in the file itself: phone and camera files, and files made
// by heif-enc and tagged by exiftool, checked with exiftool and libheif.
#include "photo/HeifFile.h"
#include "photo/HeifImage.h"
#include "photo/PhotoProperties.h"
#include "photo/PhotoRewrite.h"

#include "ExifTool.h"
#include "TestPaths.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

using Outcome = PhotoWriteResult::Outcome;

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray hashOf(const QString& path)
{
    return QCryptographicHash::hash(readAll(path), QCryptographicHash::Sha256);
}

QString processOutput(const QString& program, const QStringList& args)
{
    QProcess process;
    process.start(program, args);
    process.waitForFinished(60000);
    return QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError());
}

// exiftool's view without what a rewrite may change by design: the file system facts and the
// layout of the media data boxes.
QJsonObject stableTags(const QJsonObject& all)
{
    QJsonObject out;
    for (auto it = all.begin(); it != all.end(); ++it) {
        const QString key = it.key();
        // A rewritten XMP packet names its writer, as it does in a JPEG.
        if (key.startsWith(QLatin1String("System:")) || key.startsWith(QLatin1String("ExifTool:"))
            || key.startsWith(QLatin1String("SourceFile")) || key.contains(QLatin1String("MediaData"))
            || key == QLatin1String("XMP-x:XMPToolkit"))
            continue;
        out.insert(key, it.value());
    }
    return out;
}

QStringList gpsTags(const QJsonObject& all)
{
    QStringList found;
    for (auto it = all.begin(); it != all.end(); ++it) {
        if (it.key().contains(QLatin1String("GPS"), Qt::CaseInsensitive))
            found << it.key();
    }
    return found;
}

// The keys whose values differ, with both values, for a readable failure.
std::string differences(const QJsonObject& a, const QJsonObject& b)
{
    QStringList keys = a.keys() + b.keys();
    keys.removeDuplicates();
    QString out;
    for (const QString& key : keys) {
        if (a.value(key) != b.value(key))
            out += QStringLiteral("%1: %2 / %3\n").arg(key, QJsonDocument(QJsonArray{a.value(key)}).toJson(QJsonDocument::Compact),
                                                      QJsonDocument(QJsonArray{b.value(key)}).toJson(QJsonDocument::Compact));
    }
    return out.toStdString();
}

QString validationWarnings(const QString& path)
{
    return processOutput(QStringLiteral("exiftool"), {QStringLiteral("-validate"), QStringLiteral("-warning"), QStringLiteral("-a"), path});
}

QImage pixels(const QString& path)
{
    QString error;
    const QImage image = decodeHeifImage(path, 0, &error);
    EXPECT_FALSE(image.isNull()) << path.toStdString() << ": " << error.toStdString();
    return image.convertToFormat(QImage::Format_RGBA8888);
}

PhotoChanges removal(const char* group)
{
    PhotoChanges changes;
    changes.groups.insert(QString::fromLatin1(group), QVariant());
    return changes;
}

class HeifPhotoRewriteTest : public ::testing::Test {
protected:
    QString copyOf(const QString& name)
    {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(QFile::copy(test::dataPath(name), path));
        return path;
    }
    // A HEIC as heif-enc makes it, then tagged by exiftool: Exif GPS, XMP GPS and a few values
    // of both that must survive.
    QString encodedAndTagged(const QString& name, const QStringList& tags)
    {
        QImage picture(96, 64, QImage::Format_RGB32);
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                picture.setPixel(x, y, qRgb(x * 2, y * 3, 128));
        const QString png = dir.filePath(name + QStringLiteral(".png"));
        const QString heic = dir.filePath(name);
        EXPECT_TRUE(picture.save(png));
        processOutput(QStringLiteral("heif-enc"), {QStringLiteral("-q"), QStringLiteral("80"), QStringLiteral("-o"), heic, png});
        EXPECT_TRUE(QFileInfo(heic).size() > 0) << "heif-enc made nothing";
        if (!tags.isEmpty()) {
            EXPECT_TRUE(test::exiftoolWrite(heic, tags));
        }
        return heic;
    }
    QString out(const QString& name) const { return dir.filePath(QStringLiteral("out/") + name); }
    void SetUp() override { ASSERT_TRUE(QDir(dir.path()).mkpath(QStringLiteral("out"))); }

    QTemporaryDir dir;
};

TEST_F(HeifPhotoRewriteTest, GpsRemovalLeavesNoLocationAnywhereAndChangesNothingElse)
{
    const QStringList tags{QStringLiteral("-GPSLatitude=48.8584"), QStringLiteral("-GPSLatitudeRef=N"),
                           QStringLiteral("-GPSLongitude=2.2945"), QStringLiteral("-GPSLongitudeRef=E"),
                           QStringLiteral("-XMP-exif:GPSLatitude=48.8584"), QStringLiteral("-XMP-exif:GPSLongitude=2.2945"),
                           QStringLiteral("-Artist=Ana"), QStringLiteral("-XMP-dc:Title=Tower"),
                           QStringLiteral("-DateTimeOriginal=2019:05:06 07:08:09")};
    const QStringList sources{encodedAndTagged(QStringLiteral("tagged.heic"), tags),
                              copyOf(QStringLiteral("exiv2-iPhoneXR_orient6.heic")),
                              copyOf(QStringLiteral("exiv2-avif_exif_xmp.avif"))};
    for (const QString& source : sources) {
        SCOPED_TRACE(source.toStdString());
        const QByteArray sourceHash = hashOf(source);
        const QJsonObject before = test::exiftool(source);
        ASSERT_FALSE(gpsTags(before).isEmpty());
        const QString output = out(QFileInfo(source).fileName());

        const PhotoWriteResult result = CopyPhotoWithProperties(source, removal("{GPS}"), output);
        ASSERT_EQ(result.outcome, Outcome::Rewritten) << result.reason.toStdString();
        EXPECT_FALSE(QFileInfo::exists(output + QStringLiteral(".xmp")));

        const QJsonObject after = test::exiftool(output);
        EXPECT_EQ(gpsTags(after), QStringList());
        QJsonObject expected = stableTags(before);
        for (const QString& key : gpsTags(before))
            expected.remove(key);
        EXPECT_EQ(differences(stableTags(after), expected), "");
        EXPECT_EQ(validationWarnings(output), validationWarnings(source));
        EXPECT_EQ(pixels(output), pixels(source));
        EXPECT_EQ(hashOf(source), sourceHash);
        // The old Exif stream is gone from the file, not only unlinked.
        QString error;
        const std::optional<HeifMetadata> old = readHeifMetadata(source, &error);
        ASSERT_TRUE(old) << error.toStdString();
        EXPECT_FALSE(readAll(output).contains(old->exif));
    }
}

TEST_F(HeifPhotoRewriteTest, DatesAndLocationGoIntoTheFileAndAFileWithoutExifGetsOne)
{
    const QString iphone = copyOf(QStringLiteral("exiv2-iPhoneXR_orient6.heic"));
    PhotoChanges dates;
    dates.groups.insert(QStringLiteral("{Exif}"), QVariantMap{{QStringLiteral("DateTimeOriginal"), QStringLiteral("2020:01:02 03:04:05")},
                                                              {QStringLiteral("DateTimeDigitized"), QStringLiteral("2020:01:02 03:04:06")}});
    ASSERT_EQ(CopyPhotoWithProperties(iphone, dates, out(QStringLiteral("dated.heic"))).outcome, Outcome::Rewritten);
    const QJsonObject dated = test::exiftool(out(QStringLiteral("dated.heic")));
    EXPECT_EQ(dated.value(QStringLiteral("ExifIFD:DateTimeOriginal")).toString(), QStringLiteral("2020:01:02 03:04:05"));
    EXPECT_EQ(dated.value(QStringLiteral("ExifIFD:CreateDate")).toString(), QStringLiteral("2020:01:02 03:04:06"));
    EXPECT_EQ(dated.value(QStringLiteral("Apple:RunTimeScale")).toInt(), 1000000000);  // maker notes kept
    EXPECT_TRUE(QDir(dir.filePath(QStringLiteral("out"))).entryList({QStringLiteral("*.xmp")}).isEmpty());

    // heif-enc writes no Exif at all: the new one must be linked to the primary image.
    const QString bare = encodedAndTagged(QStringLiteral("bare.heic"), {});
    ASSERT_TRUE(readHeifMetadata(bare)->exif.isEmpty());
    PhotoChanges location;
    location.groups.insert(QStringLiteral("{GPS}"), QVariantMap{{QStringLiteral("Latitude"), 33.45}, {QStringLiteral("LatitudeRef"), QStringLiteral("S")},
                                                                {QStringLiteral("Longitude"), 70.66}, {QStringLiteral("LongitudeRef"), QStringLiteral("W")}});
    const QString located = out(QStringLiteral("bare.heic"));
    ASSERT_EQ(CopyPhotoWithProperties(bare, location, located).outcome, Outcome::Rewritten);
    const QJsonObject gps = test::exiftool(located);
    EXPECT_NEAR(gps.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 33.45, 1e-6);
    EXPECT_EQ(gps.value(QStringLiteral("GPS:GPSLongitudeRef")).toString(), QStringLiteral("W"));
    const QString info = processOutput(QStringLiteral("heif-info"), {located});
    EXPECT_TRUE(info.contains(QRegularExpression(QStringLiteral("metadata:\\s*\\n\\s*Exif: \\d+ bytes")))) << info.toStdString();
    EXPECT_EQ(pixels(located), pixels(bare));

    // Title and keywords, IPTC values in a JPEG, go into XMP, and read back as the same fields.
    PhotoChanges described;
    described.groups.insert(QStringLiteral("{IPTC}"), QVariantMap{{QStringLiteral("ObjectName"), QStringLiteral("Harbour at dawn")},
                                                                   {QStringLiteral("Keywords"), QVariantList{QStringLiteral("sea"), QStringLiteral("boats")}}});
    const QString titled = out(QStringLiteral("titled.heic"));
    const PhotoWriteResult result = CopyPhotoWithProperties(located, described, titled);
    ASSERT_EQ(result.outcome, Outcome::Rewritten) << result.reason.toStdString();
    EXPECT_TRUE(result.warnings.isEmpty()) << result.warnings.join(QLatin1Char(';')).toStdString();
    const QJsonObject xmp = test::exiftool(titled);
    EXPECT_EQ(xmp.value(QStringLiteral("XMP-dc:Title")).toString(), QStringLiteral("Harbour at dawn"));
    EXPECT_EQ(xmp.value(QStringLiteral("XMP-dc:Subject")).toArray(), (QJsonArray{QStringLiteral("sea"), QStringLiteral("boats")}));
    EXPECT_NEAR(xmp.value(QStringLiteral("GPS:GPSLatitude")).toDouble(), 33.45, 1e-6);
    const QVariantMap iptc = readPhotoProperties(titled).properties.value(QStringLiteral("{IPTC}")).toMap();
    EXPECT_EQ(iptc.value(QStringLiteral("ObjectName")).toString(), QStringLiteral("Harbour at dawn"));
}

TEST_F(HeifPhotoRewriteTest, RemovingEverythingKeepsWhatTheImageLooksLike)
{
    for (const QString& name : {QStringLiteral("exiv2-iPhoneXR_orient6.heic"), QStringLiteral("exiv2-avif_exif_xmp.avif")}) {
        SCOPED_TRACE(name.toStdString());
        const QString source = copyOf(name);
        PhotoChanges all;
        all.removeAllMetadata = true;
        const PhotoWriteResult result = CopyPhotoWithProperties(source, all, out(name));
        ASSERT_EQ(result.outcome, Outcome::Rewritten) << result.reason.toStdString();
        const QJsonObject before = test::exiftool(source);
        const QJsonObject after = test::exiftool(out(name));
        EXPECT_TRUE(test::tagsOf(after, {QStringLiteral("ExifIFD"), QStringLiteral("GPS"), QStringLiteral("XMP"),
                                         QStringLiteral("Apple"), QStringLiteral("Sony")}).isEmpty());
        EXPECT_EQ(after.value(QStringLiteral("IFD0:Orientation")), before.value(QStringLiteral("IFD0:Orientation")));
        EXPECT_EQ(test::tagsOf(after, {QStringLiteral("ICC"), QStringLiteral("QuickTime:Rotation")}),
                  test::tagsOf(before, {QStringLiteral("ICC"), QStringLiteral("QuickTime:Rotation")}));
        EXPECT_EQ(pixels(out(name)), pixels(source));
        EXPECT_EQ(readHeifMetadata(out(name))->iccProfile, readHeifMetadata(source)->iccProfile);
    }
}

TEST_F(HeifPhotoRewriteTest, EveryHeifSampleIsWrittenOrRefusedWithAReason)
{
    QStringList names{QStringLiteral("exiv2-Stonehenge.heic"), QStringLiteral("exiv2-avif_exif_xmp.avif"),
                      QStringLiteral("exiv2-Sony_ILCE-1.HIF"), QStringLiteral("exiv2-iPhoneXR_orient6.heic"),
                      QStringLiteral("exiv2-issue_1793_poc.heic"), QStringLiteral("exiv2-pr_2612_poc.heic"),
                      QStringLiteral("libheif-clap-overflow.heic"), QStringLiteral("libheif-clusterfuzz-5120279175102464.heic"),
                      QStringLiteral("libheif-github_15.heic"), QStringLiteral("mde-HeifReader_IllegalArgument.heif")};
    PhotoChanges dated;
    dated.groups.insert(QStringLiteral("{Exif}"), QVariantMap{{QStringLiteral("DateTimeOriginal"), QStringLiteral("2001:02:03 04:05:06")}});
    PhotoChanges all;
    all.removeAllMetadata = true;
    const std::vector<PhotoChanges> edits{removal("{GPS}"), removal("{Exif}"), all, dated};
    int written = 0;
    for (const QString& name : names) {
        const QString source = copyOf(name);
        const QByteArray sourceHash = hashOf(source);
        for (std::size_t e = 0; e < edits.size(); ++e) {
            SCOPED_TRACE(name.toStdString() + " edit " + std::to_string(e));
            const QString output = out(QString::number(e) + QLatin1Char('-') + name);
            const PhotoWriteResult result = CopyPhotoWithProperties(source, edits[e], output);
            if (result.outcome == Outcome::Rewritten) {
                ++written;
                QString error;
                const std::optional<HeifMetadata> read = readHeifMetadata(output, &error);
                ASSERT_TRUE(read) << error.toStdString();
                EXPECT_EQ(read->width, readHeifMetadata(source)->width);
                EXPECT_FALSE(test::exiftool(output).isEmpty());
            } else {
                EXPECT_FALSE(result.reason.isEmpty());
                EXPECT_FALSE(QFileInfo::exists(output));
            }
        }
        EXPECT_EQ(hashOf(source), sourceHash);
    }
    EXPECT_GE(written, 4 * 4);  // the four sound samples take every edit
}

}  // namespace
}  // namespace pelorin

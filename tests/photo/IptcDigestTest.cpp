// Photoshop's IPTCDigest after rewrites of photos Photoshop saved, checked with exiftool.
#include "photo/PhotoRewrite.h"

#include "ExifTool.h"
#include "TestPaths.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

using test::exiftool;

class IptcDigestTest : public ::testing::Test {
protected:
    QString copyOf(const QString& name)
    {
        const QString path = dir.filePath(QStringLiteral("in-") + name);
        QFile::copy(test::dataPath(name), path);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
        return path;
    }
    QString rewrite(const QString& source, const PhotoChanges& changes)
    {
        const QString output = dir.filePath(QStringLiteral("out-%1.jpg").arg(++outputs));
        const PhotoWriteResult result = CopyPhotoWithProperties(source, changes, output);
        EXPECT_TRUE(result.ok()) << result.reason.toStdString();
        return output;
    }
    static bool digestCurrent(const QJsonObject& tags)
    {
        const QString digest = tags.value(QStringLiteral("Photoshop:IPTCDigest")).toString();
        return !digest.isEmpty() && digest == tags.value(QStringLiteral("File:CurrentIPTCDigest")).toString();
    }
    QTemporaryDir dir;
    int outputs = 0;
};

// Photoshop Elements saved this photo with its IPTC, XMP and a current digest.
TEST_F(IptcDigestTest, EditedIptcGetsACurrentDigestAndTheXmpMirrorsFollow)
{
    const QString source = copyOf(QStringLiteral("exiv2-Reagan_all.jpg"));
    ASSERT_TRUE(digestCurrent(exiftool(source)));
    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{IPTC}"),
                          QVariantMap{{QStringLiteral("ObjectName"), QStringLiteral("New title")},
                                      {QStringLiteral("Keywords"), QVariantList{QStringLiteral("alpha"), QStringLiteral("beta")}}});
    const QJsonObject after = exiftool(rewrite(source, changes));
    EXPECT_EQ(after.value(QStringLiteral("IPTC:ObjectName")).toString(), QStringLiteral("New title"));
    // Photoshop takes the XMP for up to date while the digest is current: it must say the same.
    EXPECT_EQ(after.value(QStringLiteral("XMP-dc:Title")).toString(), QStringLiteral("New title"));
    EXPECT_EQ(after.value(QStringLiteral("XMP-dc:Subject")).toVariant(), (QVariantList{QStringLiteral("alpha"), QStringLiteral("beta")}));
    EXPECT_TRUE(digestCurrent(after));
    for (const QString& warning : test::validationWarnings(dir.filePath(QStringLiteral("out-1.jpg"))))
        EXPECT_FALSE(warning.contains(QLatin1String("IPTCDigest"))) << warning.toStdString();
}

TEST_F(IptcDigestTest, RewritesThatLeaveTheIptcAloneKeepTheDigestCurrentAndRemovalDropsIt)
{
    const QString source = copyOf(QStringLiteral("exiv2-Reagan_all.jpg"));
    PhotoChanges gps;
    gps.groups.insert(QStringLiteral("{GPS}"), QVariant());
    EXPECT_TRUE(digestCurrent(exiftool(rewrite(source, gps))));

    PhotoChanges noIptc;
    noIptc.groups.insert(QStringLiteral("{IPTC}"), QVariant());
    const QJsonObject stripped = exiftool(rewrite(source, noIptc));
    EXPECT_TRUE(test::tagsOf(stripped, {QStringLiteral("IPTC:")}).isEmpty());
    EXPECT_FALSE(stripped.contains(QStringLiteral("Photoshop:IPTCDigest")));
    // The other Photoshop resources stay.
    EXPECT_EQ(stripped.value(QStringLiteral("Photoshop:WriterName")).toString(), QStringLiteral("Adobe Photoshop Elements"));
}

// A digest that was already out of date still says the IPTC is the newer.
TEST_F(IptcDigestTest, ADigestOutOfDateInTheSourceIsLeftAsItWas)
{
    const QString source = copyOf(QStringLiteral("exiv2-FurnaceCreekInn_gps.jpg"));
    const QJsonObject before = exiftool(source);
    ASSERT_FALSE(digestCurrent(before));
    PhotoChanges gps;
    gps.groups.insert(QStringLiteral("{GPS}"), QVariant());
    const QJsonObject after = exiftool(rewrite(source, gps));
    EXPECT_EQ(after.value(QStringLiteral("Photoshop:IPTCDigest")), before.value(QStringLiteral("Photoshop:IPTCDigest")));
}

}  // namespace
}  // namespace pelorin

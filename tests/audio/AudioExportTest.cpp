#include "AudioTestSupport.h"
#include "audio/AudioExports.h"
#include "model/PropertyList.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace pelorin;
using pelorin::test::dataPath;

namespace {

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

QByteArray encoded(const char* format)
{
    QImage image(8, 6, QImage::Format_ARGB32);
    image.fill(QColor(0, 0, 255, 128));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

TEST(AudioExportTest, ArtworkIsWrittenAsJpegUnderTheFullFileName)
{
    QTemporaryDir dir;
    CommandContext context;
    context.storageFolder = dir.filePath(QStringLiteral("out"));
    const CommandResult none = exportAudioArtwork({dataPath(QStringLiteral("mutagen-no-tags.mp3"))}, context);
    ASSERT_EQ(none.skipped.size(), 1);
    EXPECT_FALSE(QFileInfo::exists(context.storageFolder));

    // The file's picture is the record's one: the last of the tag's pictures.
    const CommandResult mp3 = exportAudioArtwork({dataPath(QStringLiteral("atl-id3v23_utf16_apic.mp3"))}, context);
    ASSERT_EQ(mp3.written, QStringList{context.storageFolder + QStringLiteral("/atl-id3v23_utf16_apic.mp3.jpg")});
    EXPECT_TRUE(readAll(mp3.written.first()).startsWith("\xFF\xD8\xFF"));

    for (const char* format : {"JPEG", "PNG"}) {
        const QByteArray picture = encoded(format);
        CommandContext staging;
        staging.storageFolder = dir.filePath(QString::fromLatin1(format));
        ASSERT_TRUE(test::saveSongTags(dataPath(QStringLiteral("mutagen-no-tags.mp3")), {}, staging, picture).succeeded());
        const CommandResult result =
            exportAudioArtwork({staging.storageFolder + QStringLiteral("/mutagen-no-tags.mp3")}, context);
        ASSERT_EQ(result.written.size(), 1);
        const QByteArray jpeg = readAll(result.written.first());
        if (QByteArray(format) == "JPEG") {
            EXPECT_EQ(jpeg, picture);  // a JPEG keeps its bytes
        }
        EXPECT_TRUE(jpeg.startsWith("\xFF\xD8\xFF"));
        EXPECT_EQ(QImage::fromData(jpeg, "JPEG").size(), QSize(8, 6));
    }
}

TEST(AudioExportTest, MetadataPlistHoldsSetEntriesAndTheLaterOfTwoNames)
{
    QTemporaryDir dir;
    CommandContext context;
    context.storageFolder = dir.filePath(QStringLiteral("out"));
    // A second file of the same name with a different title, listed later.
    const QString source = dataPath(QStringLiteral("atl-id3v23_utf16_apic.mp3"));
    CommandContext staging;
    staging.storageFolder = dir.filePath(QStringLiteral("staging"));
    ASSERT_TRUE(test::saveSongTags(source, {{AudioField::Title, QStringLiteral("later")}}, staging).succeeded());

    const CommandResult result = exportAudioMetadata(
        {source, staging.storageFolder + QStringLiteral("/atl-id3v23_utf16_apic.mp3"),
         dataPath(QStringLiteral("mutagen-no-tags.mp3"))},
        context);
    ASSERT_TRUE(result.succeeded());
    const PropertyListResult plist = readPropertyListFile(context.storageFolder + QStringLiteral("/metadata.plist"));
    ASSERT_TRUE(plist.value) << plist.error.toStdString();
    const QVariantMap all = plist.value->toMap();
    const QVariantMap entry = all.value(QStringLiteral("atl-id3v23_utf16_apic.mp3")).toMap();
    EXPECT_EQ(entry.value(QStringLiteral("Title")).toString(), QStringLiteral("later"));
    EXPECT_EQ(entry.value(QStringLiteral("Track Number")).toString(), QStringLiteral("01/02"));
    EXPECT_EQ(entry.value(QStringLiteral("Band")).toString(), QStringLiteral("aaᱬbb"));
    EXPECT_FALSE(entry.contains(QStringLiteral("Subtitle")));
    // An untagged file has at most its created date.
    const QVariantMap bare = all.value(QStringLiteral("mutagen-no-tags.mp3")).toMap();
    for (const QString& key : bare.keys())
        EXPECT_EQ(key, QStringLiteral("Created Date"));
}

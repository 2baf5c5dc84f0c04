// M4A files whose tags are QuickTime keys, as FFmpeg's use_metadata_tags writes them, checked by
// ffprobe, mutagen and exiftool.
#include "AudioTestSupport.h"
#include "ExifTool.h"
#include "ToolMovies.h"
#include "audio/AudioTagChanges.h"
#include "audio/AudioRecord.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace pelorin;

TEST(M4aKeys, AnEditChangesOneKeyAndKeepsEveryOther)
{
    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("keys.m4a"));
    ASSERT_TRUE(test::makeFfmpegFile(source, {"-movflags", "use_metadata_tags", "-metadata", "title=T",
                                              "-metadata", "artist=A", "-metadata", "comment=C"},
                                     false, true));
    // The editor opens the song with its title and artist.
    const IKImageItem opened = readAudioRecord(source);
    EXPECT_EQ(opened.fileTitle, "T");
    EXPECT_EQ(opened.fileArist, "A");
    EXPECT_EQ(opened.fileComments, "C");

    CommandContext context;
    context.storageFolder = dir.filePath(QStringLiteral("out"));
    const QString output = context.storageFolder + QStringLiteral("/keys.m4a");
    AudioTagChanges changes;
    changes.fields = {{AudioField::Album, QStringLiteral("X")}, {AudioField::Comments, QString()}};
    const CommandResult result = saveAudioTags({source}, changes, context);
    ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();

    const QMap<QString, QString> before = test::ffprobeTags(source);
    const QMap<QString, QString> after = test::ffprobeTags(output);
    EXPECT_EQ(after.value("title"), "T");
    EXPECT_EQ(after.value("artist"), "A");
    EXPECT_EQ(after.value("album"), "X");
    EXPECT_FALSE(after.contains("comment"));
    EXPECT_EQ(after.value("encoder"), before.value("encoder"));
    EXPECT_EQ(test::exiftool(output).value("Keys:Album").toString(), "X");
    // Every list entry is named by the key table: title, artist, encoder and album, in order.
    EXPECT_EQ(test::mutagen("import sys, mutagen.mp4 as m; t = m.MP4(sys.argv[1]).tags; "
                            "print(' '.join(str(t[k][0]) for k in sorted(t.keys())))", output),
              "T A " + before.value("encoder") + " X");
    EXPECT_EQ(test::audioStreamHash(output), test::audioStreamHash(source));
    EXPECT_EQ(readAudioRecord(output).fileAblumName, "X");

    // Removal clears the keys along with their values.
    context.outputNames = std::make_shared<OutputNames>();  // a second command on the same name
    ASSERT_TRUE(removeAudioTags({source}, context).succeeded());
    const QMap<QString, QString> removed = test::ffprobeTags(output);
    EXPECT_FALSE(removed.contains("title") || removed.contains("artist") || removed.contains("encoder"));
    EXPECT_EQ(test::mutagen("import sys, mutagen.mp4 as m; print(len(m.MP4(sys.argv[1]).tags or []))", output), "0");
    EXPECT_EQ(test::audioStreamHash(output), test::audioStreamHash(source));
}

#include "AudioTestSupport.h"
#include "ExifTool.h"
#include "QtPrinters.h"
#include "audio/AudioTagChanges.h"
#include "audio/AudioRecord.h"
#include "model/FileDates.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace pelorin;
using pelorin::test::dataPath;

namespace {

// Edits a sample into a scoped storage folder.
class AudioWritingTest : public test::AudioStorageTest {
protected:
    CommandResult setField(const QString& name, AudioField field, const QString& text,
                           const QByteArray& artwork = {})
    {
        return test::saveSongTags(dataPath(name), {{field, text}}, context(), artwork);
    }
};

// Prints the output's tag version, then every frame that differs between the two files.
const char* const kId3Compare =
    "import sys, mutagen.id3 as m\n"
    "a, b = m.ID3(sys.argv[1]), m.ID3(sys.argv[2])\n"
    "print(b.version)\n"
    "for k in sorted(set(a.keys()) | set(b.keys())):\n"
    "    if k not in a or k not in b or a[k] != b[k] or getattr(a[k], 'data', 0) != getattr(b[k], 'data', 0):\n"
    "        print(k, b[k] if k in b else '<gone>')\n";

}  // namespace

TEST_F(AudioWritingTest, Mp3TitleChangeKeepsEveryOtherFrameAndTheAudio)
{
    const QString name = QStringLiteral("atl-id3v23_utf16_apic.mp3");
    const QByteArray sourceHash = test::fileHash(dataPath(name));
    const CommandResult result = setField(name, AudioField::Title, QStringLiteral("Neuer Titel"));
    ASSERT_TRUE(result.succeeded()) << result.skipped.value(0).reason.toStdString();
    EXPECT_EQ(result.written, QStringList{output(name)});
    EXPECT_EQ(test::fileHash(dataPath(name)), sourceHash);

    // mutagen compares each frame's content (TagLib may re-encode a frame's text).
    const QString differing = test::runTool(
        QStringLiteral("/usr/bin/python3"),
        {QStringLiteral("-c"), QString::fromLatin1(kId3Compare), dataPath(name), output(name)});
    EXPECT_EQ(differing, QStringLiteral("(2, 3, 0)\nTIT2 Neuer Titel"));
    EXPECT_EQ(test::audioStreamHash(output(name)), test::audioStreamHash(dataPath(name)));
}

TEST_F(AudioWritingTest, EachContainerStaysItselfWithTheNewTitle)
{
    // exiftool's names: the file type, the container's own title chunk (written beside the ID3
    // chunk), and a chunk the edit must leave alone.
    struct Case {
        const char* file;
        const char* fileType;
        const char* ownTitle;
        const char* kept;
    };
    for (const Case c : {Case{"atl-audacity_info_id3.wav", "WAV", "RIFF:Title", nullptr},
                         Case{"atl-aifc_ANNO_id3.aif", "AIFC", "AIFF:Name", "AIFF:Annotation"},
                         Case{"beets-image.m4a", "M4A", nullptr, nullptr},
                         Case{"beets-image.flac", "FLAC", nullptr, nullptr}}) {
        const QString name = QString::fromLatin1(c.file);
        ASSERT_TRUE(setField(name, AudioField::Title, QStringLiteral("Saved Title")).succeeded()) << c.file;
        const QJsonObject tags = test::exiftool(output(name));
        EXPECT_EQ(tags.value(QStringLiteral("File:FileType")).toString(), QString::fromLatin1(c.fileType));
        if (c.ownTitle)
            EXPECT_EQ(tags.value(QLatin1String(c.ownTitle)).toString(), QStringLiteral("Saved Title")) << c.file;
        if (c.kept)
            EXPECT_FALSE(tags.value(QLatin1String(c.kept)).toString().isEmpty()) << c.file;
        bool found = false;
        for (auto it = tags.begin(); it != tags.end(); ++it)
            found = found || (it.key().endsWith(QLatin1String(":Title")) && it.value().toString() == QLatin1String("Saved Title"));
        EXPECT_TRUE(found) << c.file;
        EXPECT_EQ(test::audioStreamHash(output(name)), test::audioStreamHash(dataPath(name))) << c.file;
        EXPECT_EQ(readAudioRecord(output(name)).fileTitle, QStringLiteral("Saved Title")) << c.file;
    }
    // A WAV's title is readable by mutagen through the ID3 chunk too.
    EXPECT_EQ(test::mutagen(QStringLiteral("import sys, mutagen.wave as w; print(w.WAVE(sys.argv[1]).tags['TIT2'])"),
                            output(QStringLiteral("atl-audacity_info_id3.wav"))),
              QStringLiteral("Saved Title"));
}

TEST_F(AudioWritingTest, CafKeepsItsContainerAndOtherChunks)
{
    const QString name = QStringLiteral("atl-lpcm.caf");
    ASSERT_TRUE(setField(name, AudioField::Album, QStringLiteral("Album Ü")).succeeded());
    EXPECT_TRUE(test::runTool(QStringLiteral("ffprobe"),
                              {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
                               QStringLiteral("format=format_name:format_tags=album"), QStringLiteral("-of"),
                               QStringLiteral("compact"), output(name)})
                    .contains(QStringLiteral("format_name=caf|tag:album=Album Ü")));
    EXPECT_EQ(test::audioStreamHash(output(name)), test::audioStreamHash(dataPath(name)));
    // The info chunk reaches the record through the same table as AIFF's text chunks.
    EXPECT_EQ(readAudioRecord(output(name)).fileAblumName, QStringLiteral("Album Ü"));
}

TEST_F(AudioWritingTest, FlacKeepsOtherCommentsAndPictures)
{
    // A first save gives the sample a title; the second, from that copy, changes the comment.
    const QString name = QStringLiteral("beets-image.flac");
    ASSERT_TRUE(setField(name, AudioField::Title, QStringLiteral("kept title")).succeeded());
    const QString titled = dir.filePath(QStringLiteral("titled.flac"));
    ASSERT_TRUE(QFile::rename(output(name), titled));
    const char* dump = "import sys, mutagen.flac as f\n"
                       "x = f.FLAC(sys.argv[1])\n"
                       "print(sorted((k, v) for k, v in (x.tags or []) if k.upper() != 'COMMENT'))\n"
                       "print([(p.type, p.mime, len(p.data)) for p in x.pictures])\n"
                       "print(x.get('comment'))\n";
    ASSERT_TRUE(test::saveSongTags(titled, {{AudioField::Comments, QStringLiteral("new comment")}}, context()).succeeded());
    const QStringList before = test::mutagen(QString::fromLatin1(dump), titled).split('\n');
    const QString out = output(QStringLiteral("titled.flac"));
    const QStringList after = test::mutagen(QString::fromLatin1(dump), out).split('\n');
    ASSERT_EQ(after.size(), 3);
    EXPECT_EQ(after[0], QStringLiteral("[('TITLE', 'kept title')]"));
    EXPECT_TRUE(after[1].startsWith(QLatin1String("[(3, 'image/")));
    EXPECT_EQ(after[0], before[0]);
    EXPECT_EQ(after[1], before[1]);
    EXPECT_EQ(after[2], QStringLiteral("['new comment']"));
}

TEST_F(AudioWritingTest, EmptiedFieldIsRemovedAndUnnamedFieldsAreLeftAlone)
{
    const QString name = QStringLiteral("atl-id3v23_utf16_apic.mp3");
    ASSERT_TRUE(test::saveSongTags(dataPath(name), {{AudioField::Band, QString()}}, context()).succeeded());
    const IKImageItem r = readAudioRecord(output(name));
    EXPECT_TRUE(r.fileBand.isEmpty());
    EXPECT_EQ(r.fileTitle, QStringLiteral("aa父bb"));
}

TEST_F(AudioWritingTest, NewArtworkIsAFrontCoverWithItsOwnType)
{
    const QByteArray png = test::smallPng();
    ASSERT_TRUE(setField(QStringLiteral("beets-image.m4a"), AudioField::Title, QStringLiteral("x"), png).succeeded());
    EXPECT_EQ(test::mutagen(QStringLiteral("import sys, mutagen.mp4 as m; c = m.MP4(sys.argv[1])['covr'][0]; "
                                           "print(c.imageformat == m.MP4Cover.FORMAT_PNG, len(c))"),
                            output(QStringLiteral("beets-image.m4a"))),
              QStringLiteral("True %1").arg(png.size()));
    ASSERT_TRUE(setField(QStringLiteral("atl-id3v23_utf16_apic.mp3"), AudioField::Title, QStringLiteral("x"), png).succeeded());
    EXPECT_EQ(test::mutagen(QStringLiteral("import sys, mutagen.id3 as m; "
                                           "p = m.ID3(sys.argv[1]).getall('APIC'); "
                                           "print([(x.mime, len(x.data)) for x in p if x.type == 3], len(p))"),
                            output(QStringLiteral("atl-id3v23_utf16_apic.mp3"))),
              QStringLiteral("[('image/png', %1)] 2").arg(png.size()));  // the other picture stays
}

TEST_F(AudioWritingTest, RemovalLeavesNoTagAndTheSameAudio)
{
    for (const char* file : {"atl-id3v23_utf16_apic.mp3", "beets-image.flac", "atl-audacity_info_id3.wav",
                             "atl-aifc_ANNO_id3.aif", "beets-image.m4a", "atl-lpcm.caf"}) {
        const QString name = QString::fromLatin1(file);
        const CommandResult result = removeAudioTags({dataPath(name)}, context());
        ASSERT_TRUE(result.succeeded()) << file;
        AudioReading reading;
        const IKImageItem r = readAudioRecord(output(name), nullptr, &reading);
        EXPECT_TRUE(reading.items.isEmpty()) << file << " " << reading.items.value(0).identifier.toStdString();
        EXPECT_TRUE(r.fileImage.isNull()) << file;
        EXPECT_EQ(test::audioStreamHash(output(name)), test::audioStreamHash(dataPath(name))) << file;
        EXPECT_EQ(test::runTool(QStringLiteral("ffprobe"),
                                {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
                                 QStringLiteral("format_tags=title,artist,album,comment,track,date"),
                                 QStringLiteral("-of"), QStringLiteral("csv=p=0"),
                                 output(name)}),
                  QString()) << file;
    }
    EXPECT_EQ(test::mutagen(QStringLiteral("import sys, mutagen; f = mutagen.File(sys.argv[1]); "
                                           "print(f.tags is None or len(f.tags) == 0)"),
                            output(QStringLiteral("atl-id3v23_utf16_apic.mp3"))),
              QStringLiteral("True"));
}

TEST_F(AudioWritingTest, DryRunPlansAndWritesNothing)
{
    CommandContext c = context();
    c.dryRun = true;
    const QString source = dataPath(QStringLiteral("beets-image.flac"));
    // The plan shows the stored text; removing a field the song does not hold is no change.
    const CommandResult result = test::saveSongTags(
        source, {{AudioField::Title, QStringLiteral("new")}, {AudioField::Artist, QString()}}, c);
    ASSERT_GE(result.planned.size(), 2);  // the title, then the output's dates
    EXPECT_EQ(result.planned.first().property, QStringLiteral("title"));
    EXPECT_EQ(result.planned.first().before, readAudioRecord(source).fileTitle);
    EXPECT_EQ(result.planned.first().after, QStringLiteral("new"));
    for (const PlannedChange& change : result.planned)
        EXPECT_NE(change.property, QStringLiteral("artist"));
    EXPECT_FALSE(QFileInfo::exists(storage()));
    EXPECT_TRUE(removeAudioTags({source}, c).written.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(storage()));
}

TEST_F(AudioWritingTest, CreatedDateTextDatesTheOutputAndBadFilesAreSkipped)
{
    const QString created = QStringLiteral("2020:01:02 03:04:05");
    const CommandResult result = test::saveSongTags(dataPath(QStringLiteral("beets-image.m4a")), {}, context(), {}, created);
    ASSERT_TRUE(result.succeeded());
    const QDateTime modified = readFileDates(output(QStringLiteral("beets-image.m4a"))).modified.toLocalTime();
    EXPECT_EQ(modified.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")), created);

    const CommandResult bad = removeAudioTags({dataPath(QStringLiteral("mde-Mp3Reader_6bytes.mp3"))}, context());
    ASSERT_EQ(bad.skipped.size(), 1);
    EXPECT_FALSE(bad.skipped.first().reason.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(output(QStringLiteral("mde-Mp3Reader_6bytes.mp3"))));
    // No scratch copies are left behind.
    EXPECT_EQ(QDir(storage()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

TEST_F(AudioWritingTest, NewMp3TagIsId3v23InUtf16AndId3v1FollowsTheEdit)
{
    ASSERT_TRUE(setField(QStringLiteral("mutagen-no-tags.mp3"), AudioField::Title, QStringLiteral("Tïtle ✓")).succeeded());
    EXPECT_EQ(test::mutagen(QStringLiteral("import sys, mutagen.id3 as m; t = m.ID3(sys.argv[1]); "
                                           "print(t.version, t['TIT2'].encoding, t['TIT2'])"),
                            output(QStringLiteral("mutagen-no-tags.mp3"))),
              QStringLiteral("(2, 3, 0) Encoding.UTF16 Tïtle ✓"));

    const QString combined = QStringLiteral("mutagen-id3v1v2-combined.mp3");
    ASSERT_TRUE(setField(combined, AudioField::Title, QStringLiteral("Both Tags")).succeeded());
    QFile out(output(combined));
    ASSERT_TRUE(out.open(QIODevice::ReadOnly));
    const QByteArray written = out.readAll();
    EXPECT_TRUE(written.right(128).startsWith("TAGBoth Tags"));
    // The MPEG frames between the two tags are the source's bytes.
    QFile source(dataPath(combined));
    ASSERT_TRUE(source.open(QIODevice::ReadOnly));
    const QByteArray original = source.readAll();
    const QByteArray firstFrame = original.mid(2225, 4);  // behind the source's ID3v2 tag
    const qsizetype start = written.indexOf(firstFrame);
    ASSERT_GT(start, 0);
    EXPECT_EQ(written.mid(start).chopped(128), original.mid(2225).chopped(128));
}

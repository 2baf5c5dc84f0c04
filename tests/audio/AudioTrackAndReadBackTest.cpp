// Track totals across containers, and outputs that must be read back before they are linked:
// sample files made at test time by sox, lame, flac and ffmpeg, tagged by mutagen and read back
// by mutagen.
#include "ToolRun.h"
#include "AudioTestSupport.h"
#include "audio/AudioTagChanges.h"
#include "audio/AudioRecord.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <utility>

using namespace pelorin;

namespace {

using pelorin::test::runs;

class AudioTrackAndReadBackTest : public test::AudioStorageTest {
protected:
    QStringList storedFiles() const { return QDir(storage()).entryList(QDir::Files | QDir::Hidden); }

    QString tone(const QString& name) const
    {
        const QString wav = dir.filePath(QStringLiteral("tone.wav"));
        if (!QFileInfo::exists(wav)) {
            EXPECT_TRUE(runs(QStringLiteral("sox"), {QStringLiteral("-n"), QStringLiteral("-r"), QStringLiteral("44100"),
                                                   QStringLiteral("-c"), QStringLiteral("2"), wav, QStringLiteral("synth"),
                                                   QStringLiteral("0.5"), QStringLiteral("sine"), QStringLiteral("440")}));
        }
        const QString path = dir.filePath(name);
        const QString suffix = QFileInfo(name).suffix();
        if (suffix == QLatin1String("mp3"))
            EXPECT_TRUE(runs(QStringLiteral("lame"), {QStringLiteral("--quiet"), wav, path}));
        else if (suffix == QLatin1String("flac"))
            EXPECT_TRUE(runs(QStringLiteral("flac"), {QStringLiteral("--silent"), QStringLiteral("-o"), path, wav}));
        else
            EXPECT_TRUE(runs(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"),
                                                       wav, path}));
        return path;
    }
    // mutagen runs the script on the file; sys.argv[1] is its path.
    static void tagWithMutagen(const QString& path, const QString& script)
    {
        test::mutagen(QStringLiteral("import sys\n") + script, path);
    }
    CommandResult setTrack(const QString& source, const QString& text) const
    {
        return test::saveSongTags(source, {{AudioField::TrackNumber, text}}, context());
    }
};

TEST_F(AudioTrackAndReadBackTest, ANewTrackNumberKeepsTheStoredTotal)
{
    struct Case {
        QString file;
        QString tag;    // mutagen script that gives the file track 3 of 12
        QString check;  // mutagen script that prints what the output holds
        QString expected;
    };
    const Case cases[] = {
        {QStringLiteral("v23.mp3"),
         QStringLiteral("import mutagen.id3 as m\nt = m.ID3(); t.add(m.TRCK(encoding=1, text='3/12'))\n"
                        "t.save(sys.argv[1], v2_version=3)"),
         QStringLiteral("import mutagen.id3 as m\nt = m.ID3(sys.argv[1]); print(t.version[1], t['TRCK'].text[0])"),
         QStringLiteral("3 7/12")},
        {QStringLiteral("v24.mp3"),
         QStringLiteral("import mutagen.id3 as m\nt = m.ID3(); t.add(m.TRCK(encoding=3, text='3/12'))\nt.save(sys.argv[1])"),
         QStringLiteral("import mutagen.id3 as m\nt = m.ID3(sys.argv[1]); print(t.version[1], t['TRCK'].text[0])"),
         QStringLiteral("4 7/12")},
        {QStringLiteral("song.m4a"),
         QStringLiteral("import mutagen.mp4 as m\nf = m.MP4(sys.argv[1]); f['trkn'] = [(3, 12)]; f['disk'] = [(1, 2)]; f.save()"),
         QStringLiteral("import mutagen.mp4 as m\nf = m.MP4(sys.argv[1]); print(f['trkn'], f['disk'])"),
         QStringLiteral("[(7, 12)] [(1, 2)]")},
        {QStringLiteral("song.flac"),
         QStringLiteral("import mutagen.flac as m\nf = m.FLAC(sys.argv[1]); f['TRACKNUMBER'] = '3'; f['TRACKTOTAL'] = '12'; f.save()"),
         QStringLiteral("import mutagen.flac as m\nf = m.FLAC(sys.argv[1]); print(f['TRACKNUMBER'], f['TRACKTOTAL'])"),
         QStringLiteral("['7'] ['12']")},
        {QStringLiteral("song.ogg"),
         QStringLiteral("import mutagen.oggvorbis as m\nf = m.OggVorbis(sys.argv[1]); f['TRACKNUMBER'] = '3/12'; f.save()"),
         QStringLiteral("import mutagen.oggvorbis as m\nf = m.OggVorbis(sys.argv[1]); print(f['TRACKNUMBER'])"),
         QStringLiteral("['7/12']")},
    };
    for (const Case& c : cases) {
        const QString source = tone(c.file);
        tagWithMutagen(source, c.tag);
        const CommandResult result = setTrack(source, QStringLiteral("7"));
        ASSERT_TRUE(result.succeeded()) << c.file.toStdString() << ": " << result.skipped.value(0).reason.toStdString();
        EXPECT_EQ(test::mutagen(QStringLiteral("import sys\n") + c.check, output(source)), c.expected) << c.file.toStdString();
    }

    // A typed total replaces the stored one; in Vorbis comments it goes to TRACKTOTAL.
    const QString flac = dir.filePath(QStringLiteral("song.flac"));
    ASSERT_TRUE(setTrack(flac, QStringLiteral("5/9")).succeeded());
    EXPECT_EQ(test::mutagen(QStringLiteral("import sys, mutagen.flac as m\nf = m.FLAC(sys.argv[1]); "
                                           "print(f['TRACKNUMBER'], f['TRACKTOTAL'])"),
                            output(flac)),
              QStringLiteral("['5'] ['9']"));
}

TEST_F(AudioTrackAndReadBackTest, OutputsWithoutAudioAreNeverLinkedIntoPlace)
{
    // Each file keeps its tags but loses every audio frame: cut right after the tag (MP3, by
    // mutagen's tag size), after the metadata blocks (FLAC) or header pages (Ogg), after the
    // format chunk (AIFF's COMM, CAF's desc) or inside the header (WAV, M4A).
    struct Case {
        QString file;
        qint64 keep;  // bytes kept; 0: the size of mutagen's ID3 tag
    };
    const Case cases[] = {{QStringLiteral("cut.mp3"), 0},  {QStringLiteral("cut.flac"), 0},
                          {QStringLiteral("cut.ogg"), 0},  {QStringLiteral("cut.wav"), 30},
                          {QStringLiteral("cut.m4a"), 40}, {QStringLiteral("cut.aiff"), 38},
                          {QStringLiteral("cut.caf"), 52}};
    for (const Case& c : cases) {
        const QString source = tone(c.file);
        qint64 keep = c.keep;
        if (c.file.endsWith(QLatin1String(".mp3"))) {
            tagWithMutagen(source, QStringLiteral("import mutagen.id3 as m\nt = m.ID3(); t.add(m.TIT2(encoding=3, text='t'))\n"
                                                  "t.add(m.APIC(encoding=3, mime='image/png', type=3, data=b'x' * 5000))\n"
                                                  "t.save(sys.argv[1])"));
            keep = test::mutagen(QStringLiteral("import sys, mutagen.id3 as m\nprint(m.ID3(sys.argv[1]).size)"), source).toLongLong();
        } else if (c.file.endsWith(QLatin1String(".flac"))) {
            tagWithMutagen(source, QStringLiteral("import mutagen.flac as m\nf = m.FLAC(sys.argv[1]); f['TITLE'] = 't'; f.save()"));
            // The end of the last metadata block, where the first audio frame starts.
            keep = test::mutagen(QStringLiteral("import sys\nd = open(sys.argv[1], 'rb').read(); p = 4\n"
                                                "while True:\n"
                                                "    h = d[p]; p += 4 + int.from_bytes(d[p + 1:p + 4], 'big')\n"
                                                "    if h & 0x80: break\n"
                                                "print(p)"),
                                 source).toLongLong();
        } else if (c.file.endsWith(QLatin1String(".ogg"))) {
            // The start of the first page with a granule position: the header pages stay.
            keep = test::mutagen(QStringLiteral("import sys, mutagen.ogg as o\nf = open(sys.argv[1], 'rb')\n"
                                                "while True:\n"
                                                "    at = f.tell(); p = o.OggPage(f)\n"
                                                "    if p.position > 0: break\n"
                                                "print(at)"),
                                 source).toLongLong();
        }
        ASSERT_GT(keep, 0) << c.file.toStdString();
        QFile file(source);
        ASSERT_TRUE(file.resize(keep)) << c.file.toStdString();

        for (const bool remove : {true, false}) {
            const CommandResult result = remove ? removeAudioTags({source}, context()) : setTrack(source, QStringLiteral("2"));
            EXPECT_TRUE(result.written.isEmpty()) << c.file.toStdString() << " remove=" << remove;
            EXPECT_EQ(result.skipped.size(), 1) << c.file.toStdString() << " remove=" << remove;
            EXPECT_TRUE(storedFiles().isEmpty()) << c.file.toStdString() << ": " << storedFiles().join(QLatin1Char(' ')).toStdString();
        }
    }
}

TEST_F(AudioTrackAndReadBackTest, M4aThatTagLibWouldSaveWithALossIsRefused)
{
    // Gracenote's item name holds a ':' of its own; TagLib drops such items on saving.
    const QString gracenote = tone(QStringLiteral("gracenote.m4a"));
    tagWithMutagen(gracenote, QStringLiteral("import mutagen.mp4 as m\nf = m.MP4(sys.argv[1])\n"
                                             "f['----:com.apple.iTunes:UFIDhttp://www.cddb.com/id3/taginfo1.html'] = [b'3CD3N77Q']\n"
                                             "f.save()"));
    // A file cut inside its last box (TagLib's own sample is cut inside a 'free' box after
    // 'moov'); TagLib saves its tags where no reader finds them.
    const QString cut = tone(QStringLiteral("cut-free.m4a"));
    QFile file(cut);
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write(QByteArray::fromHex("00001000") + "free" + QByteArray(100, '\0'));
    file.close();
    const QString infloop = test::dataPath(QStringLiteral("taglib-infloop.m4a"));

    for (const auto& [source, reason] : {std::pair{gracenote, "UFIDhttp://www.cddb.com"}, std::pair{cut, "damaged"},
                                          std::pair{infloop, "damaged"}}) {
        const CommandResult result = setTrack(source, QStringLiteral("2"));
        EXPECT_TRUE(result.written.isEmpty()) << source.toStdString();
        ASSERT_EQ(result.skipped.size(), 1) << source.toStdString();
        EXPECT_TRUE(result.skipped.first().reason.contains(QLatin1String(reason)))
            << result.skipped.first().reason.toStdString();
        EXPECT_TRUE(storedFiles().isEmpty()) << storedFiles().join(QLatin1Char(' ')).toStdString();
    }
    // Removing every tag loses nothing the user keeps, so the Gracenote item may go.
    EXPECT_TRUE(removeAudioTags({gracenote}, context()).succeeded());
}

TEST_F(AudioTrackAndReadBackTest, WmaWithABrokenHeaderIsRefused)
{
    const QString whole = tone(QStringLiteral("whole.wma"));
    tagWithMutagen(whole, QStringLiteral("import mutagen.asf as a\nf = a.ASF(sys.argv[1]); f['Title'] = ['t']; f.save()"));
    const CommandResult written = setTrack(whole, QStringLiteral("2"));
    ASSERT_TRUE(written.succeeded()) << written.skipped.value(0).reason.toStdString();
    EXPECT_EQ(test::mutagen(QStringLiteral("import sys, mutagen.asf as a\nprint(a.ASF(sys.argv[1])['WM/TrackNumber'][0])"),
                            output(whole)),
              QStringLiteral("2"));
    QDir(storage()).removeRecursively();

    // The second object of the header gets size 0, as in the CWE-835 sample beside it.
    const QString broken = dir.filePath(QStringLiteral("broken.wma"));
    ASSERT_TRUE(QFile::copy(whole, broken));
    test::mutagen(QStringLiteral("import sys, struct\nf = open(sys.argv[1], 'r+b'); d = f.read(4096)\n"
                                 "first = struct.unpack_from('<Q', d, 30 + 16)[0]\n"
                                 "f.seek(30 + first + 16); f.write(struct.pack('<Q', 0))"),
                  broken);
    for (const QString& source : {broken, test::dataPath(QStringLiteral("mm-CWE-835.wma"))}) {
        for (const bool remove : {false, true}) {
            const CommandResult result = remove ? removeAudioTags({source}, context()) : setTrack(source, QStringLiteral("2"));
            ASSERT_EQ(result.skipped.size(), 1) << source.toStdString();
            EXPECT_TRUE(result.skipped.first().reason.contains(QLatin1String("invalid size (0)")))
                << result.skipped.first().reason.toStdString();
            EXPECT_TRUE(storedFiles().isEmpty()) << storedFiles().join(QLatin1Char(' ')).toStdString();
        }
    }
}

TEST_F(AudioTrackAndReadBackTest, WholeFilesStillPassTheReadBack)
{
    // The same kinds of file, whole, are written and read back by mutagen with their audio.
    for (const QString& name : {QStringLiteral("whole.mp3"), QStringLiteral("whole.flac"), QStringLiteral("whole.wav"),
                                QStringLiteral("whole.m4a"), QStringLiteral("whole.ogg"), QStringLiteral("whole.aiff")}) {
        const QString source = tone(name);
        const CommandResult removed = removeAudioTags({source}, context());
        ASSERT_TRUE(removed.succeeded()) << name.toStdString() << ": " << removed.skipped.value(0).reason.toStdString();
        EXPECT_EQ(test::audioStreamHash(output(source)), test::audioStreamHash(source)) << name.toStdString();
        EXPECT_EQ(test::mutagen(QStringLiteral("import sys, mutagen\nprint(mutagen.File(sys.argv[1]).info.channels)"),
                                output(source)),
                  QStringLiteral("2"))
            << name.toStdString();
    }
}

}  // namespace

// Files of the kinds tag writers get wrong: containers no writer here handles, WMA pictures,
// MP3s with more than one tag, ID3 tags with empty or v2.2-only frames, Broadcast Wave chunks.
// Every file is a tool's or another library's; every result is read back by mutagen, exiftool
// or ffprobe.
#include "AudioTestSupport.h"
#include "QtPrinters.h"
#include "audio/AudioTagChanges.h"

#include <QBuffer>
#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace pelorin;
using pelorin::test::dataPath;

namespace {

class AudioUncommonFilesWritingTest : public test::AudioStorageTest {
protected:
    CommandResult setTitle(const QString& source, const QString& title)
    {
        return test::saveSongTags(source, {{AudioField::Title, title}}, context());
    }

    CommandResult setArtwork(const QString& source, const QByteArray& image)
    {
        return test::saveSongTags(source, {}, context(), image);
    }

    QString writable(const QString& name)
    {
        const QString path = dir.filePath(name);
        QFile::copy(dataPath(name), path);
        QFile(path).setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        return path;
    }
};

QString exiftoolText(const QStringList& args)
{
    return test::runTool(QStringLiteral("exiftool"), args);
}

QString decodedAudioHash(const QString& path)
{
    return test::runTool(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"),
                                                    path, QStringLiteral("-f"), QStringLiteral("md5"), QStringLiteral("-")});
}

QByteArray tail(const QString& path, qint64 length)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(file.size() - length))
        return {};
    return file.read(length);
}

// The chunk names of a RIFF file, read by Python's own struct module.
QString riffChunks(const QString& path)
{
    return test::runTool(QStringLiteral("/usr/bin/python3"),
                         {QStringLiteral("-c"),
                          QStringLiteral("import sys, struct\n"
                                         "d = open(sys.argv[1], 'rb').read(); p = 12; n = []\n"
                                         "while p + 8 <= len(d):\n"
                                         "    c, s = struct.unpack('<4sI', d[p:p + 8]); n.append(c.decode('latin-1')); p += 8 + s + (s & 1)\n"
                                         "print(','.join(n))"),
                          path});
}

}  // namespace

// A big-endian RIFX WAVE or an RF64 file is no container TagLib writes; its PCM samples can
// even look like MPEG frames. It is refused by name, and no file is left behind.
TEST_F(AudioUncommonFilesWritingTest, WaveVariantsWithoutAWriterAreRefusedByName)
{
    const QString soxRifx = dir.filePath(QStringLiteral("sox-rifx.wav"));
    test::runTool(QStringLiteral("sox"), {QStringLiteral("-n"), QStringLiteral("-B"), QStringLiteral("-r"),
                                          QStringLiteral("8000"), QStringLiteral("-b"), QStringLiteral("16"),
                                          soxRifx, QStringLiteral("synth"), QStringLiteral("0.2"),
                                          QStringLiteral("sine"), QStringLiteral("440")});
    const QString rf64 = dir.filePath(QStringLiteral("ffmpeg-rf64.wav"));
    test::runTool(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"),
                                             QStringLiteral("lavfi"), QStringLiteral("-i"),
                                             QStringLiteral("sine=duration=0.2"), QStringLiteral("-rf64"),
                                             QStringLiteral("always"), rf64});
    const struct {
        QString path;
        const char* name;
    } cases[] = {{dataPath(QStringLiteral("atl-rifx_bigendian.wav")), "RIFX"},
                 {soxRifx, "RIFX"},
                 {rf64, "RF64"}};
    for (const auto& c : cases) {
        ASSERT_TRUE(QFileInfo::exists(c.path)) << c.path.toStdString();
        for (const CommandResult& result : {setTitle(c.path, QStringLiteral("T")), removeAudioTags({c.path}, context())}) {
            ASSERT_EQ(result.skipped.size(), 1) << c.path.toStdString();
            EXPECT_TRUE(result.skipped.front().reason.contains(QLatin1String(c.name))) << result.skipped.front().reason.toStdString();
            EXPECT_TRUE(result.written.isEmpty());
        }
        EXPECT_TRUE(QDir(storage()).entryList(QDir::Files).isEmpty()) << c.path.toStdString();
    }
}

// mutagen's WMA with two pictures: new artwork becomes the front cover, the other picture
// stays; removing all tags leaves no picture and no text.
TEST_F(AudioUncommonFilesWritingTest, WmaArtworkIsWrittenAndRemovalTakesThePicturesToo)
{
    const QString source = dataPath(QStringLiteral("beets-image.wma"));
    const QString pictures = QStringLiteral(
        "import sys, mutagen.asf as a\n"
        "f = a.ASF(sys.argv[1])\n"
        "for v in f.tags.get('WM/Picture', []):\n"
        "    raw = bytes(v.value); print(raw[0], raw.find(b'\\x89PNG') >= 0)\n"
        "print('title=%s' % ''.join(str(v) for v in f.tags.get('Title', [])))\n");
    const QString before = test::mutagen(pictures, source);
    const QByteArray png = test::smallPng();
    ASSERT_TRUE(setArtwork(source, png).succeeded());
    const QString after = test::mutagen(pictures, output(source));
    const QStringList lines = after.split(QLatin1Char('\n'));
    ASSERT_GE(lines.size(), 2) << after.toStdString();
    EXPECT_EQ(lines.front(), QStringLiteral("3 True")) << after.toStdString();  // type 3, the front cover
    // Every picture of the source that was not a front cover is still there.
    for (const QString& line : before.split(QLatin1Char('\n'))) {
        if (!line.startsWith(QLatin1String("3 ")) && !line.startsWith(QLatin1String("title="))) {
            EXPECT_TRUE(lines.contains(line)) << line.toStdString() << "\n" << after.toStdString();
        }
    }

    QDir(storage()).removeRecursively();
    ASSERT_TRUE(removeAudioTags({source}, context()).succeeded());
    EXPECT_EQ(test::mutagen(pictures, output(source)), QStringLiteral("title="));
}

// An MP3 with ID3v2, APE, Lyrics3 and ID3v1 tags (mutagen's sample): a picture edit touches
// only the ID3v2 tag, so the tags behind the audio stay byte for byte (TagLib would render the
// ID3v1 tag anew, trimmed). A title edit reaches an APE tag that holds a title.
TEST_F(AudioUncommonFilesWritingTest, TrailingTagsChangeOnlyWithTheirOwnFields)
{
    const QString layered = dataPath(QStringLiteral("mutagen-apev2-lyricsv2.mp3"));
    ASSERT_TRUE(setArtwork(layered, test::smallPng()).succeeded());
    constexpr qint64 kTrailingTags = 387;  // APE tag, Lyrics3v2 block and ID3v1 tag
    EXPECT_EQ(tail(output(layered), kTrailingTags), tail(layered, kTrailingTags));
    EXPECT_EQ(test::audioStreamHash(output(layered)), test::audioStreamHash(layered));

    const QString apeTitled = dataPath(QStringLiteral("taglib-ape-id3v1.mp3"));
    ASSERT_TRUE(setTitle(apeTitled, QStringLiteral("Neuer Titel")).succeeded());
    EXPECT_EQ(test::mutagen(QStringLiteral("import sys, mutagen.apev2 as a, mutagen.id3 as m\n"
                                           "t = a.APEv2(sys.argv[1])\n"
                                           "print(t['Title'], len(t))\n"),  // APE keys are case-blind
                            output(apeTitled)),
              QStringLiteral("Neuer Titel 1"));
    EXPECT_EQ(exiftoolText({QStringLiteral("-s3"), QStringLiteral("-ID3v1:Title"), output(apeTitled)}),
              QStringLiteral("Neuer Titel"));
}

// mutagen's sample whose ID3v2.4 tag starts with frames of no content (TENC, TCOP): TagLib
// stops reading at the first, and saving would drop every frame behind it.
TEST_F(AudioUncommonFilesWritingTest, EmptyId3FramesDoNotHideTheFramesBehindThem)
{
    const QString source = dataPath(QStringLiteral("mutagen-bad-POPM-frame.mp3"));
    ASSERT_TRUE(setTitle(source, QStringLiteral("Neu")).succeeded());
    EXPECT_EQ(test::mutagen(QStringLiteral("import sys, mutagen.id3 as m\n"
                                           "t = m.ID3(sys.argv[1])\n"
                                           "print(t['TIT2'], t['TALB'], t['TCOM'], t['TPE1'], t['TDRC'], t['TRCK'],\n"
                                           "      t.getall('COMM')[0], t.getall('POPM')[0].rating, t.getall('POPM')[0].count)\n"),
                            output(source)),
              QStringLiteral("Neu emit and exude pjat lain she 2004 4 häst 255 2709193061"));
}

// iTunes' ID3v2.2 tag keeps its volume adjustment (RVA) as v2.3's RVAD, which exiftool reads
// back as an unknown tag. Without the RVA frame the same tag holds only frames v2.4 defines
// (sort orders), so it is saved as v2.4 and exiftool finds no frame foreign to the version.
TEST_F(AudioUncommonFilesWritingTest, Id3v22FramesKeepTheirValuesInTheVersionWritten)
{
    const QString itunes = dataPath(QStringLiteral("taglib-itunes10_id3v22_apic.mp3"));
    const QString volume = exiftoolText({QStringLiteral("-s3"), QStringLiteral("-ID3v2_2:RelativeVolumeAdjustment"), itunes});
    ASSERT_FALSE(volume.isEmpty());
    ASSERT_TRUE(setTitle(itunes, QStringLiteral("Neu")).succeeded());
    EXPECT_EQ(exiftoolText({QStringLiteral("-b"), QStringLiteral("-u"), QStringLiteral("-ID3v2_3:ID3_RVAD"), output(itunes)}),
              volume);

    // The same tag less its RVA frame (v2.2 frame headers: three-letter ID, 24-bit size).
    const QString noVolume = dir.filePath(QStringLiteral("itunes-no-rva.mp3"));
    test::runTool(QStringLiteral("/usr/bin/python3"),
                  {QStringLiteral("-c"),
                   QStringLiteral("import sys\n"
                                  "d = open(sys.argv[1], 'rb').read()\n"
                                  "size = (d[6] << 21) | (d[7] << 14) | (d[8] << 7) | d[9]\n"
                                  "p, body = 10, b''\n"
                                  "while p + 6 <= 10 + size and d[p] != 0:\n"
                                  "    n = int.from_bytes(d[p + 3:p + 6], 'big')\n"
                                  "    if d[p:p + 3] != b'RVA': body += d[p:p + 6 + n]\n"
                                  "    p += 6 + n\n"
                                  "body += bytes(size - len(body))\n"
                                  "open(sys.argv[2], 'wb').write(d[:10] + body + d[10 + size:])\n"),
                   itunes, noVolume});
    QDir(storage()).removeRecursively();
    ASSERT_TRUE(setTitle(noVolume, QStringLiteral("Neu")).succeeded());
    EXPECT_EQ(test::mutagen(QStringLiteral("import sys, mutagen.id3 as m\n"
                                           "t = m.ID3(sys.argv[1], translate=False)\n"
                                           "print(t.version[1], t['TSOA'], t['TSOP'], t['TSOT'], t['TSO2'], t['TCMP'])\n"),
                            output(noVolume)),
              QStringLiteral("4 Sort Album Sort Artist Sort Name Sort Album Artist 1"));
    EXPECT_EQ(exiftoolText({QStringLiteral("-validate"), QStringLiteral("-warning"), QStringLiteral("-a"),
                              QStringLiteral("-s3"), output(noVolume)}),
              QStringLiteral("OK"));
}

// "Remove all tags" on a Broadcast Wave file: the descriptive texts of its 'bext' chunk go
// (ffprobe reads them as comment, date, encoded_by), its time reference stays; an XMP packet
// and a cart chunk go.
TEST_F(AudioUncommonFilesWritingTest, RemovalBlanksBroadcastWaveTextsButKeepsTheTimeReference)
{
    const QString bext = dataPath(QStringLiteral("atl-bext_info_id3.wav"));
    const QString timeReference = exiftoolText({QStringLiteral("-s3"), QStringLiteral("-RIFF:TimeReference"), bext});
    ASSERT_FALSE(timeReference.isEmpty());
    ASSERT_TRUE(removeAudioTags({bext}, context()).succeeded());
    EXPECT_EQ(test::runTool(QStringLiteral("ffprobe"),
                            {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
                             QStringLiteral("format_tags=comment,date,encoded_by,originator_reference,umid,title"),
                             QStringLiteral("-of"), QStringLiteral("csv=p=0"), output(bext)}),
              QString());
    EXPECT_EQ(exiftoolText({QStringLiteral("-s3"), QStringLiteral("-RIFF:TimeReference"), output(bext)}), timeReference);
    EXPECT_EQ(exiftoolText({QStringLiteral("-s3"), QStringLiteral("-RIFF:Description"), QStringLiteral("-RIFF:Originator"),
                              QStringLiteral("-RIFF:CodingHistory"), output(bext)}).trimmed(),
              QString());
    EXPECT_EQ(test::audioStreamHash(output(bext)), test::audioStreamHash(bext));

    const QString cart = dataPath(QStringLiteral("atl-cart.wav"));
    ASSERT_EQ(riffChunks(cart), QStringLiteral("fmt ,data,_PMX,cart"));
    ASSERT_TRUE(removeAudioTags({cart}, context()).succeeded());
    EXPECT_EQ(riffChunks(output(cart)), QStringLiteral("fmt ,data"));
}

// Removing the tags of APE-tagged containers: beets' Monkey's Audio file and a WavPack file
// tagged by ffmpeg. mutagen then finds no tag at all, and the audio is the same.
TEST_F(AudioUncommonFilesWritingTest, RemovalTakesTheApeTagOfMonkeysAudioAndWavPack)
{
    const QString wavpack = dir.filePath(QStringLiteral("ffmpeg.wv"));
    test::runTool(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"),
                                             QStringLiteral("lavfi"), QStringLiteral("-i"),
                                             QStringLiteral("sine=duration=0.3"), QStringLiteral("-metadata"),
                                             QStringLiteral("title=Sine"), QStringLiteral("-c:a"),
                                             QStringLiteral("wavpack"), wavpack});
    const QString hasTags = QStringLiteral("import sys, mutagen\n"
                                           "f = mutagen.File(sys.argv[1])\n"
                                           "print(f.tags is not None and len(f.tags) > 0)\n");
    for (const QString& source : {dataPath(QStringLiteral("beets-full.ape")), wavpack}) {
        ASSERT_EQ(test::mutagen(hasTags, source), QStringLiteral("True")) << source.toStdString();
        ASSERT_TRUE(removeAudioTags({source}, context()).succeeded()) << source.toStdString();
        EXPECT_EQ(test::mutagen(hasTags, output(source)), QStringLiteral("False")) << source.toStdString();
        // Decoded: ffmpeg counts a Monkey's Audio file's trailing tag into its last packet.
        EXPECT_EQ(decodedAudioHash(output(source)), decodedAudioHash(source)) << source.toStdString();
    }
}

// A container without a picture of its own (CAF) refuses new artwork with the reason and
// writes nothing, instead of a copy without the picture.
TEST_F(AudioUncommonFilesWritingTest, ArtworkIsRefusedWhereTheContainerHoldsNone)
{
    const CommandResult result = setArtwork(dataPath(QStringLiteral("atl-lpcm.caf")), test::smallPng());
    ASSERT_EQ(result.skipped.size(), 1);
    EXPECT_TRUE(result.skipped.front().reason.contains(QLatin1String("artwork"))) << result.skipped.front().reason.toStdString();
    EXPECT_TRUE(result.written.isEmpty());
    EXPECT_TRUE(QDir(storage()).entryList(QDir::Files).isEmpty());
}

#include "AudioTestSupport.h"
#include "audio/AudioContainer.h"
#include "audio/AudioRecord.h"
#include "audio/CafInfo.h"

#include <QBuffer>
#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace pelorin;
using pelorin::test::dataPath;

namespace {

QStringList identifiers(const AudioReading& reading)
{
    QStringList out;
    for (const MediaMetadataItem& item : reading.items)
        out << item.identifier;
    return out;
}

}  // namespace

TEST(AudioContainerTest, DetectsTheContainerByContentNotByName)
{
    QTemporaryDir dir;
    const QString disguised = dir.filePath(QStringLiteral("really-aiff.mp3"));
    ASSERT_TRUE(QFile::copy(dataPath(QStringLiteral("atl-aifc_ANNO_id3.aif")), disguised));
    EXPECT_EQ(detectAudioContainerOfFile(disguised), AudioContainer::Aiff);
    EXPECT_EQ(detectAudioContainerOfFile(dataPath(QStringLiteral("atl-lpcm.caf"))), AudioContainer::Caf);
    EXPECT_EQ(detectAudioContainerOfFile(dataPath(QStringLiteral("beets-image.m4a"))), AudioContainer::Mp4);
    EXPECT_EQ(detectAudioContainer(QByteArray("RIFF\0\0\0\0WAVEfmt ", 16)), AudioContainer::Wav);
    EXPECT_EQ(detectAudioContainer(QByteArray("RIFF\0\0\0\0AVI LIST", 16)), AudioContainer::Unknown);
    // An ID3 tag in front of FLAC is still FLAC.
    EXPECT_EQ(detectAudioContainer(QByteArray("ID3\x03\0\0\0\0\0\0fLaC", 14)), AudioContainer::Flac);
}

TEST(AudioRecordTest, Mp3FramesFillTheRecordInFileOrder)
{
    AudioReading reading;
    QString problem;
    const IKImageItem r = readAudioRecord(dataPath(QStringLiteral("atl-id3v23_utf16_apic.mp3")), &problem, &reading);
    EXPECT_TRUE(problem.isEmpty()) << problem.toStdString();
    EXPECT_EQ(reading.id3Version, 3);
    EXPECT_EQ(identifiers(reading).first(), QStringLiteral("id3/TALB"));
    EXPECT_TRUE(identifiers(reading).contains(QStringLiteral("id3/TYER")));  // not TagLib's TDRC
    EXPECT_EQ(r.fileTitle, QStringLiteral("aa父bb"));
    EXPECT_EQ(r.fileAlbumArist, QStringLiteral("01/02"));  // the track number's slot
    EXPECT_EQ(r.fileBand, QStringLiteral("aaᱬbb"));
    EXPECT_EQ(r.fileReleasedYear, QStringLiteral("1997"));
    EXPECT_FALSE(r.fileImage.isNull());
    EXPECT_EQ(r.fileBitRate, QStringLiteral("129000 bps"));
    EXPECT_EQ(r.fileSampleRate, QStringLiteral("44100 Hz"));
    EXPECT_EQ(r.fileChannels, QStringLiteral("2"));
    EXPECT_EQ(r.fileduratStr, QStringLiteral("3s"));
    EXPECT_EQ(r.fileType, QStringLiteral("MP3 audio"));
}

TEST(AudioRecordTest, InfoDictionaryAndChunkIdentifiers)
{
    AudioReading wav;
    const IKImageItem w = readAudioRecord(dataPath(QStringLiteral("atl-audacity_info_id3.wav")), nullptr, &wav);
    EXPECT_FALSE(w.fileTitle.isEmpty());
    EXPECT_TRUE(identifiers(wav).contains(QStringLiteral("title")));

    AudioReading flac;
    const IKImageItem f = readAudioRecord(dataPath(QStringLiteral("beets-image.flac")), nullptr, &flac);
    EXPECT_TRUE(identifiers(flac).contains(QStringLiteral("aart")));
    EXPECT_FALSE(f.fileImage.isNull());

    AudioReading aiff;
    const IKImageItem a = readAudioRecord(dataPath(QStringLiteral("atl-aifc_ANNO_id3.aif")), nullptr, &aiff);
    EXPECT_TRUE(identifiers(aiff).contains(QStringLiteral("caaf/info-comments")));
    EXPECT_FALSE(a.fileComments.isEmpty());

    AudioReading m4a;
    const IKImageItem m = readAudioRecord(dataPath(QStringLiteral("beets-image.m4a")), nullptr, &m4a);
    EXPECT_TRUE(identifiers(m4a).contains(QStringLiteral("itsk/covr")));
    EXPECT_FALSE(m.fileImage.isNull());

    // CAF facts come from our own chunk reader; ffprobe agrees on them.
    const QString caf = dataPath(QStringLiteral("atl-lpcm.caf"));
    const IKImageItem c = readAudioRecord(caf);
    const QString probed = test::runTool(QStringLiteral("ffprobe"),
                                         {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
                                          QStringLiteral("format=duration:stream=sample_rate,channels"),
                                          QStringLiteral("-of"), QStringLiteral("default=nw=1:nk=1"), caf});
    const QStringList facts = probed.split(QLatin1Char('\n'));
    ASSERT_EQ(facts.size(), 3);
    EXPECT_EQ(c.fileSampleRate, facts[0] + QStringLiteral(" Hz"));
    EXPECT_EQ(c.fileChannels, facts[1]);
    EXPECT_NEAR(c.fileduration, facts[2].toDouble(), 0.001);
}

TEST(AudioRecordTest, RecordingDateTextRule)
{
    IKImageItem a;
    applyRecordingDateText(QStringLiteral("2019-05-04T10:11:12+0200"), a);
    EXPECT_EQ(a.shootDateStr, QStringLiteral("2019-05-04 10:11:12"));
    EXPECT_TRUE(a.shootDate.isValid());
    IKImageItem b;
    applyRecordingDateText(QStringLiteral("2019-05-04T10:11:12-0700"), b);
    EXPECT_EQ(b.shootDateStr, QStringLiteral("2019-05-04 10:11:12"));
    EXPECT_EQ(b.shootDate, a.shootDate);
    IKImageItem c;
    applyRecordingDateText(QStringLiteral("2019"), c);
    EXPECT_EQ(c.shootDateStr, QStringLiteral("2019"));
    EXPECT_FALSE(c.shootDate.isValid());
}

TEST(AudioRecordTest, LocationKeepsTheCrosswisePairing)
{
    IKImageItem r;
    applyLocationText(QStringLiteral("+37.3317-122.0307+010.000/"), r);
    EXPECT_EQ(r.AtitudeFormat, QStringLiteral("+"));
    EXPECT_DOUBLE_EQ(r.fileAtitude, 37.3317);
    EXPECT_EQ(r.longtitudeFormat, QStringLiteral("-"));
    EXPECT_DOUBLE_EQ(r.filelongtitude, 122.0307);
    EXPECT_EQ(r.latitudeFormat, QStringLiteral("+"));
    EXPECT_DOUBLE_EQ(r.filelatitude, 10.0);
    IKImageItem single;
    applyLocationText(QStringLiteral("+37.3"), single);
    EXPECT_EQ(single.AtitudeFormat, QStringLiteral("+"));
    EXPECT_TRUE(single.longtitudeFormat.isEmpty());
}

TEST(AudioRecordTest, UnreadableFilesGiveAReasonAndARecord)
{
    QString problem;
    const IKImageItem r = readAudioRecord(dataPath(QStringLiteral("mde-Mp3Reader_6bytes.mp3")), &problem);
    EXPECT_FALSE(problem.isEmpty());
    EXPECT_EQ(r.fileName, QStringLiteral("mde-Mp3Reader_6bytes.mp3"));
    // Every sample cut short at many lengths: a reason or a reading, never a crash.
    QTemporaryDir dir;
    for (const char* name : {"atl-id3v23_utf16_apic.mp3", "beets-image.flac", "atl-audacity_info_id3.wav",
                             "atl-aifc_ANNO_id3.aif", "atl-lpcm.caf", "beets-image.m4a"}) {
        QFile source(dataPath(QString::fromLatin1(name)));
        ASSERT_TRUE(source.open(QIODevice::ReadOnly));
        const QByteArray bytes = source.readAll();
        for (const qsizetype length : {qsizetype(0), qsizetype(12), qsizetype(64), qsizetype(700),
                                       bytes.size() / 3, bytes.size() - 5}) {
            const QString cut = dir.filePath(QStringLiteral("cut-") + QString::fromLatin1(name));
            QFile out(cut);
            ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
            out.write(bytes.left(length));
            out.close();
            readAudioRecord(cut);
        }
    }
}

TEST(CafInfoTest, ParsesRendersAndRefusesBadSizes)
{
    const CafInfoEntries entries{{QStringLiteral("title"), QStringLiteral("Ünïcode")},
                                 {QStringLiteral("track number"), QStringLiteral("3/12")}};
    EXPECT_EQ(parseCafInfoBody(renderCafInfoBody(entries)), entries);
    QString problem;
    QByteArray cut = renderCafInfoBody(entries);
    cut.chop(3);
    EXPECT_EQ(parseCafInfoBody(cut, &problem).size(), 1);
    EXPECT_FALSE(problem.isEmpty());

    // A chunk claiming more bytes than the file has.
    QByteArray file("caff\x00\x01\x00\x00" "desc\x7f\xff\xff\xff\xff\xff\xff\xff", 20);
    QBuffer buffer(&file);
    ASSERT_TRUE(buffer.open(QIODevice::ReadOnly));
    EXPECT_FALSE(readCafLayout(buffer).ok());
}

// TagLib hands MP4 atoms and RIFF INFO fields over sorted by name; the items keep the file's order.
TEST(AudioRecordTest, AtomsAndInfoChunksKeepTheFilesOrder)
{
    QStringList m4a;
    for (const MediaMetadataItem& item : readAudioItems(test::dataPath(QStringLiteral("beets-image.m4a"))).items)
        m4a << item.identifier;
    EXPECT_EQ(m4a, (QStringList{QStringLiteral("itsk/covr"), QStringLiteral("itsk/covr"), QStringLiteral("itsk/%A9cmt")}));
    QStringList wav;
    for (const MediaMetadataItem& item : readAudioItems(test::dataPath(QStringLiteral("atl-audacity_info_id3.wav"))).items) {
        if (!item.identifier.startsWith(QLatin1String("id3/")))
            wav << item.identifier;
    }
    // INAM comes before IART in the file, against the alphabet.
    EXPECT_EQ(wav.mid(0, 2), (QStringList{QStringLiteral("title"), QStringLiteral("artist")}));
}

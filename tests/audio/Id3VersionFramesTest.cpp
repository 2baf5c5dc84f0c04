// Tags made by mutagen in ID3v2.3 and ID3v2.4, edited by our writer and read back by mutagen
// frame by frame (no translation between the versions, so each frame is seen as stored).
#include "AudioTestSupport.h"
#include "QtPrinters.h"
#include "audio/AudioTagChanges.h"
#include "audio/AudioRecord.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace pelorin;

namespace {

// Adds ID3 frames (sys.argv[3:] as ID=TEXT) to a copy of an MP3 or WAV, in ID3v2.<argv[2]>;
// mutagen writes each frame as given, even where it does not belong to that version.
const char* const kMakeTag =
    "import sys, shutil, mutagen, mutagen.id3 as m\n"
    "f = mutagen.File(sys.argv[1])\n"
    "if f.tags is None: f.add_tags()\n"
    "for frame in sys.argv[3:]:\n"
    "    key, text = frame.split('=', 1)\n"
    "    f.tags.add(getattr(m, key)(encoding=1, text=text))\n"
    "f.save(v2_version=int(sys.argv[2]))\n";

// The tag version, then every ID3v2 text frame as stored, wherever the tag is (at the start of
// an MP3, in the ID3 chunk of a WAV). mutagen shows a TDRC's 'T' as a space, printed as '_'.
const char* const kFrames =
    "import sys, io, re, mutagen.id3 as m\n"
    "data = open(sys.argv[1], 'rb').read()\n"
    "start = re.search(b'ID3[\\x03\\x04]\\x00', data).start()\n"
    "t = m.ID3(io.BytesIO(data[start:]), translate=False, load_v1=False)\n"
    "print(t.version[1], ' '.join('%s=%s' % (k, str(v).replace(' ', '_')) for k, v in t.items() if k[0] == 'T'))\n";

class Id3VersionFramesTest : public ::testing::Test {
protected:
    QTemporaryDir dir;

    QString storage() const { return dir.filePath(QStringLiteral("out")); }

    // A tool-made file: `base` from tests/data (MP3) or made by sox (WAV), tagged by mutagen.
    QString make(const QString& name, int version, const QStringList& frames)
    {
        const QString path = dir.filePath(name);
        if (name.endsWith(QLatin1String(".wav"))) {
            test::runTool(QStringLiteral("sox"), {QStringLiteral("-n"), QStringLiteral("-r"), QStringLiteral("8000"),
                                                  path, QStringLiteral("synth"), QStringLiteral("0.1"),
                                                  QStringLiteral("sine"), QStringLiteral("440")});
        } else {
            QFile::copy(test::dataPath(QStringLiteral("mutagen-no-tags.mp3")), path);
            QFile(path).setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        }
        test::runTool(QStringLiteral("/usr/bin/python3"),
                      QStringList{QStringLiteral("-c"), QString::fromLatin1(kMakeTag), path,
                                  QString::number(version)} + frames);
        return path;
    }

    // Saves one changed field into the storage folder and returns the output's frames.
    QString edit(const QString& source, AudioField field, const QString& text)
    {
        AudioTagChanges changes;
        changes.fields.insert(field, text);
        CommandContext context;
        context.storageFolder = storage();
        const CommandResult result = saveAudioTags({source}, changes, context);
        if (!result.succeeded())
            return QStringLiteral("skipped: ") + result.skipped.value(0).reason;
        return frames(result.written.value(0));
    }

    static QStringList sorted(const QString& frames)
    {
        QStringList list = frames.split(QLatin1Char(' '));
        std::sort(list.begin() + 1, list.end());
        return list;
    }

    static QString frames(const QString& path) { return test::mutagen(QString::fromLatin1(kFrames), path); }
};

}  // namespace

// v2.3 stays v2.3; the frames TagLib reads as outdated (TRDA, TSIZ, TDAT, TIME) are kept.
TEST_F(Id3VersionFramesTest, V23TagKeepsItsDateFramesAndTakesANewYearWhole)
{
    const QString source = make(QStringLiteral("v23.mp3"), 3,
                                {QStringLiteral("TIT2=Old"), QStringLiteral("TYER=1997"), QStringLiteral("TDAT=2006"),
                                 QStringLiteral("TIME=0404"), QStringLiteral("TORY=2003"),
                                 QStringLiteral("TRDA=June-20th"), QStringLiteral("TSIZ=1234")});
    ASSERT_EQ(sorted(frames(source)), sorted(QStringLiteral("3 TIT2=Old TYER=1997 TDAT=2006 TIME=0404 TORY=2003 TRDA=June-20th TSIZ=1234")));

    // Frames may move; each is there once (mutagen joins repeated frames with a NUL).
    EXPECT_EQ(sorted(edit(source, AudioField::Title, QStringLiteral("New"))),
              sorted(QStringLiteral("3 TIT2=New TYER=1997 TDAT=2006 TIME=0404 TORY=2003 TRDA=June-20th TSIZ=1234")));

    // A new year replaces the whole date: no day or time of the old one is left.
    QDir(storage()).removeRecursively();
    const QString dated = edit(source, AudioField::Year, QStringLiteral("2010-05-06"));
    EXPECT_TRUE(dated.contains(QLatin1String("TYER=2010 TDAT=0605"))) << dated.toStdString();
    EXPECT_FALSE(dated.contains(QLatin1String("TIME="))) << dated.toStdString();
    EXPECT_TRUE(dated.contains(QLatin1String("TRDA=June-20th"))) << dated.toStdString();
}

// A v2.4 tag holding v2.3 date frames (as iTunes wrote them) gets them as TDRC and TDOR.
TEST_F(Id3VersionFramesTest, V24TagTakesItsDatesInV24Frames)
{
    const QString source = make(QStringLiteral("v24.mp3"), 4,
                                {QStringLiteral("TYER=1997"), QStringLiteral("TDAT=2006"),
                                 QStringLiteral("TIME=0404"), QStringLiteral("TORY=2003")});
    ASSERT_EQ(sorted(frames(source)), sorted(QStringLiteral("4 TYER=1997 TDAT=2006 TIME=0404 TORY=2003")));
    EXPECT_EQ(sorted(edit(source, AudioField::Title, QStringLiteral("New"))),
              sorted(QStringLiteral("4 TIT2=New TDRC=1997-06-20_04:04 TDOR=2003")));

    // The sample from mutagen's own tests: a year edit leaves one year, in TDRC.
    QDir(storage()).removeRecursively();
    const QString combined = test::dataPath(QStringLiteral("mutagen-id3v1v2-combined.mp3"));
    const QString dated = edit(combined, AudioField::Year, QStringLiteral("2010"));
    EXPECT_TRUE(dated.startsWith(QLatin1String("4 "))) << dated.toStdString();
    EXPECT_TRUE(dated.contains(QLatin1String("TDRC=2010"))) << dated.toStdString();
    EXPECT_FALSE(dated.contains(QLatin1String("TYER"))) << dated.toStdString();
    EXPECT_EQ(readAudioRecord(QDir(storage()).filePath(QStringLiteral("mutagen-id3v1v2-combined.mp3"))).fileReleasedYear,
              QStringLiteral("2010"));
}

// The ID3 chunk of a WAV follows the same rules as an MP3's tag.
TEST_F(Id3VersionFramesTest, WavId3ChunkKeepsItsV23Frames)
{
    const QString source = make(QStringLiteral("v23.wav"), 3,
                                {QStringLiteral("TYER=1997"), QStringLiteral("TRDA=June-20th")});
    ASSERT_EQ(sorted(frames(source)), sorted(QStringLiteral("3 TYER=1997 TRDA=June-20th")));
    const QString titled = edit(source, AudioField::Title, QStringLiteral("New"));
    EXPECT_TRUE(titled.startsWith(QLatin1String("3 "))) << titled.toStdString();
    EXPECT_TRUE(titled.contains(QLatin1String("TYER=1997"))) << titled.toStdString();
    EXPECT_TRUE(titled.contains(QLatin1String("TRDA=June-20th"))) << titled.toStdString();
}

// A v2.3 year that is not a plain date (a span, two digits, a text) stays whole: TagLib would
// write only its first four characters, or nothing for a shorter one.
TEST_F(Id3VersionFramesTest, V23YearOfAnotherFormStaysWhole)
{
    for (const QString& year : {QStringLiteral("1995-2000"), QStringLiteral("95"), QStringLiteral("ca._1920")}) {
        QDir(storage()).removeRecursively();
        const QString source = make(QStringLiteral("odd-year.mp3"), 3, {QStringLiteral("TYER=") + year});
        ASSERT_EQ(frames(source), QStringLiteral("3 TYER=") + year);
        EXPECT_EQ(sorted(edit(source, AudioField::Title, QStringLiteral("New"))),
                  sorted(QStringLiteral("3 TIT2=New TYER=") + year));
        QFile::remove(source);
    }
}

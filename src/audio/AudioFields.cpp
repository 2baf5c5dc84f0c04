// The song's fields and their keys in every container. The keys of MP4 items are spelled once
// for songs and movies alike, in isobmff/ItemKeys.h. A year is TDRC in ID3v2.4 and TYER (with
// TDAT) in v2.3.
// The info dictionary (WAV, FLAC, Ogg and the other TagLib kinds on reading; CAF's own info
// chunk on writing) names the fields as the desktop's audio service does.
#include "audio/AudioFields.h"

#include "audio/AudioItems.h"
#include "isobmff/ItemKeys.h"

#include <QHash>

namespace pelorin {
namespace {

using F = AudioField;
using V = AudioValue;
using S = AudioSection;
using R = IKImageItem;

// clang-format off
constexpr AudioFieldRow kFields[] = {
//   field           name            option           label             editor name      section      export key       member               value           id3     riff    aiff     xiph             mp4                                    ffmpeg          info
    {F::Title,       "title",        "--title",       "Title",          "titlelab",      S::Track,   "Title",         &R::fileTitle,       V::Text,        "TIT2", "INAM", "NAME",  "TITLE",         itunesAtom::title,                     ffmpegKey::title,       "title"},
    {F::Subtitle,    "subtitle",     "--subtitle",    "Subtitle",       "subtitlelab",   S::Track,   "Subtitle",      &R::fileSubTitle,    V::Text,        "TIT3", "ISBJ", nullptr, "SUBTITLE",      itunesAtom::subtitle,                  ffmpegKey::subtitle,    "subtitle"},
    {F::Album,       "album",        "--album",       "Album",          "abulmlab",      S::Track,   "Album",         &R::fileAblumName,   V::Text,        "TALB", "IPRD", nullptr, "ALBUM",         itunesAtom::album,                     ffmpegKey::album,       "album"},
    {F::Artist,      "artist",       "--artist",      "Artist",         "artistlab",     S::Track,   "Artist",        &R::fileArist,       V::Text,        "TPE1", "IART", "AUTH",  "ARTIST",        itunesAtom::artist,                    ffmpegKey::artist,      "artist"},
    {F::TrackNumber, "track number", "--track",       "Track Number",   "ablumAristlab", S::Track,   "Track Number",  &R::fileAlbumArist,  V::TrackNumber, "TRCK", "ITRK", nullptr, "TRACKNUMBER",   itunesAtom::trackNumber,               ffmpegKey::track,       "track number"},
    {F::Composer,    "composer",     "--composer",    "Composer",       "composerlab",   S::Track,   "Composer",      &R::fileComposer,    V::Text,        "TCOM", "IMUS", nullptr, "COMPOSER",      itunesAtom::composer,                  ffmpegKey::composer,    "composer"},
    {F::RecordDate,  "recorded date","--record-date", "Recording Date", "recordDatelab", S::Release, "Record Date",   &R::shootDateStr,    V::RecordDate,  "TRDA", "ICRD", nullptr, "RECORDINGDATE", itunesAtom::recordingDate,             ffmpegKey::date,        "recorded date"},
    {F::Year,        "year",         "--year",        "Year",           "releaseYearlab",S::Release, "Release Year",  &R::fileReleasedYear,V::Year,        "TDRC", nullptr,nullptr, "DATE",          itunesAtom::date,                      ffmpegKey::year,        "year"},
    {F::Copyright,   "copyright",    "--copyright",   "Copyright",      "copyrightlab",  S::Release, "Copyright",     &R::fileCopyright,   V::Text,        "TCOP", "ICOP", "(c) ",  "COPYRIGHT",     itunesAtom::copyright,                 ffmpegKey::copyright,   "copyright"},
    {F::Publisher,   "publisher",    "--publisher",   "Publisher",      "publishlab",    S::Release, "Publisher",     &R::filePublisher,   V::Text,        "TPUB", nullptr,nullptr, "PUBLISHER",     itunesAtom::publisher,                 ffmpegKey::publisher,   nullptr},
    {F::Band,        "band",         "--band",        "Band",           "bandlab",       S::Release, "Band",          &R::fileBand,        V::Text,        "TPE2", nullptr,nullptr, "ALBUMARTIST",   itunesAtom::albumArtist,               ffmpegKey::albumArtist, nullptr},
    {F::Comments,    "comments",     "--comments",    "Comments",       "commentslab",   S::Release, "Comments",      &R::fileComments,    V::Text,        "COMM", "ICMT", "ANNO",  "COMMENT",       itunesAtom::comment,                   ffmpegKey::comment,     "comments"},
    {F::Lyrics,      "lyricist",     "--lyrics",      "Lyrics",         "lyricslab",     S::Release, "Lyrics",        &R::fileLyricist,    V::Text,        "TEXT", "IWRI", nullptr, "LYRICIST",      itunesAtom::lyrics,                    ffmpegKey::lyrics,      "lyricist"},
};
// clang-format on

constexpr AudioArtworkKeys kArtwork = {"APIC", itunesAtom::artwork, appleKey::artwork, "aart"};

// Container keys shown under an info name though no field writes them.
constexpr std::pair<const char*, const char*> kId3InfoExtras[] = {
    {"TBPM", "tempo"}, {"TKEY", "key signature"}, {"TYER", "year"}, {"TCON", "genre"},
    {"TENC", "encoding application"},
};
constexpr std::pair<const char*, const char*> kXiphInfoExtras[] = {
    {"DESCRIPTION", "comments"}, {"GENRE", "genre"}, {"BPM", "tempo"},
    {"ENCODEDBY", "encoding application"}, {"ISRC", "ISRC"},
};
constexpr std::pair<const char*, const char*> kRiffInfoExtras[] = {
    {"IPRT", "track number"}, {"IGNR", "genre"}, {"ISFT", "encoding application"},
};
constexpr std::pair<const char*, const char*> kAiffInfoExtras[] = {{"COMT", "comments"}};

// The identifier tables of the record (first matching row wins). The AIFF reader's table
// differs from the MP3 reader's on purpose: it takes the year and the track number only from
// the text chunks, and leaves out several iTunes atoms.
struct Row {
    AudioRecordRole role;
    QStringList identifiers;
};
AudioRecordRole field(AudioField f) { return {AudioRecordRole::Field, f}; }
constexpr AudioRecordRole kPicture{AudioRecordRole::Picture};
constexpr AudioRecordRole kLocation{AudioRecordRole::Location};
constexpr AudioRecordRole kDescription{AudioRecordRole::Description};

// The identifiers of a field's keys: "id3/TIT2", "itsk/%A9nam", "mdta/title", "caaf/info-title".
QString id3(F f) { return QStringLiteral("id3/") + QLatin1String(kFields[int(f)].id3); }
QString id3(const char* frame) { return QStringLiteral("id3/") + QLatin1String(frame); }
QString itsk(const char* atom) { return itemIdentifier(ItemKeySpace::ITunes, atom); }
QString itsk(F f) { return itsk(kFields[int(f)].mp4); }
QString mdta(const char* key) { return itemIdentifier(ItemKeySpace::QuickTimeKeys, key); }
QString ffmpeg(F f) { return mdta(kFields[int(f)].ffmpeg); }
QString caaf(F f) { return QStringLiteral("caaf/info-") + percentEncodeKey(kFields[int(f)].info); }
const QString kOriginalArtist = id3("TOPE");
const QString kYearOfV23 = id3("TYER");

// Where a song may hold its picture, place and description besides its fields.
QStringList pictures() { return {id3(kArtwork.id3), itsk(kArtwork.mp4)}; }
QStringList locations()
{
    return {itemIdentifier(ItemKeySpace::IsoUserData, threeGppBox::location), mdta(appleKey::location)};
}
QStringList recordingDates(F f) { return {itemIdentifier(ItemKeySpace::IsoUserData, threeGppBox::date), mdta(appleKey::creationDate), id3(f)}; }

const QList<Row>& mp3Rows()
{
    static const QList<Row> rows = {
        {field(F::Album), {id3(F::Album), itsk(F::Album)}},
        {field(F::Artist), {id3(F::Artist), itsk(F::Artist), kOriginalArtist}},
        {kPicture, pictures()},
        {field(F::Title), {id3(F::Title), itsk(F::Title)}},
        {kLocation, locations()},
        // TDRC took TYER's place in ID3v2.4.
        {field(F::Year), {kYearOfV23, itsk(F::Year), id3(F::Year)}},
        {field(F::Publisher), {mdta(appleKey::publisher), itsk(F::Publisher), id3(F::Publisher)}},
        {field(F::Copyright), {mdta(appleKey::copyright), itsk(F::Copyright), id3(F::Copyright)}},
        {kDescription, {mdta(appleKey::description)}},
        {field(F::Comments), {id3(F::Comments), itsk(F::Comments)}},
        {field(F::Subtitle), {id3(F::Subtitle), itsk(F::Subtitle)}},
        {field(F::Band), {id3(F::Band)}},
        {field(F::Lyrics), {id3(F::Lyrics), itsk(F::Lyrics)}},
        {field(F::Composer), {id3(F::Composer), itsk(F::Composer)}},
        {field(F::TrackNumber), {id3(F::TrackNumber), itsk(F::TrackNumber)}},
        {field(F::RecordDate), recordingDates(F::RecordDate)},
        // FFmpeg's key names, as M4A files made with use_metadata_tags hold them.
        {field(F::Title), {ffmpeg(F::Title)}}, {field(F::Subtitle), {ffmpeg(F::Subtitle)}},
        {field(F::Album), {ffmpeg(F::Album)}}, {field(F::Artist), {ffmpeg(F::Artist)}},
        {field(F::TrackNumber), {ffmpeg(F::TrackNumber)}}, {field(F::Composer), {ffmpeg(F::Composer)}},
        {field(F::RecordDate), {ffmpeg(F::RecordDate)}}, {field(F::Year), {ffmpeg(F::Year)}},
        {field(F::Copyright), {ffmpeg(F::Copyright)}}, {field(F::Publisher), {ffmpeg(F::Publisher)}},
        {field(F::Band), {ffmpeg(F::Band)}}, {field(F::Comments), {ffmpeg(F::Comments)}},
        {field(F::Lyrics), {ffmpeg(F::Lyrics)}}, {kPicture, {mdta(kArtwork.ffmpeg)}},
    };
    return rows;
}

const QList<Row>& aiffRows()
{
    static const QList<Row> rows = {
        {field(F::Album), {id3(F::Album), itsk(F::Album), caaf(F::Album)}},
        {field(F::Artist), {id3(F::Artist), itsk(F::Artist), caaf(F::Artist), kOriginalArtist}},
        {kPicture, pictures()},
        {field(F::Title), {id3(F::Title), itsk(F::Title), caaf(F::Title)}},
        {kLocation, locations()},
        {field(F::Year), {caaf(F::Year)}},
        {field(F::Publisher), {mdta(appleKey::publisher), itsk(F::Publisher), id3(F::Publisher)}},
        {field(F::Copyright), {mdta(appleKey::copyright), itsk(F::Copyright), id3(F::Copyright)}},
        {kDescription, {mdta(appleKey::description)}},
        {field(F::Comments), {id3(F::Comments), caaf(F::Comments)}},
        {field(F::Subtitle), {id3(F::Subtitle)}},
        {field(F::Band), {id3(F::Band)}},
        {field(F::Lyrics), {id3(F::Lyrics), itsk(F::Lyrics)}},
        {field(F::Composer), {id3(F::Composer), caaf(F::Composer)}},
        {field(F::TrackNumber), {caaf(F::TrackNumber)}},
        {field(F::RecordDate), recordingDates(F::RecordDate)},
    };
    return rows;
}

AudioRecordRole lookup(const QList<Row>& rows, const QString& identifier)
{
    for (const Row& row : rows)
        if (row.identifiers.contains(identifier))
            return row.role;
    return {};
}

// The info dictionary's keys are the fields' own info names, and "aart" for the picture.
AudioRecordRole infoRole(const QString& key)
{
    if (key == QLatin1String(kArtwork.info))
        return kPicture;
    for (const AudioFieldRow& row : kFields)
        if (row.info && key == QLatin1String(row.info))
            return field(row.field);
    return {};
}

// A container key -> info name map from one column of the table and its extras.
template <typename Key, std::size_t N>
QHash<Key, QString> infoMap(const char* AudioFieldRow::*column,
                            const std::pair<const char*, const char*> (&extras)[N])
{
    QHash<Key, QString> map;
    for (const AudioFieldRow& row : kFields)
        if (row.*column && row.info)
            map.insert(Key(row.*column), QString::fromLatin1(row.info));
    for (const auto& [key, info] : extras)
        map.insert(Key(key), QString::fromLatin1(info));
    return map;
}

}  // namespace

std::span<const AudioFieldRow> audioFieldRows() { return kFields; }

const AudioFieldRow& audioFieldRow(AudioField f) { return kFields[static_cast<int>(f)]; }

QString audioFieldName(AudioField f) { return QString::fromLatin1(audioFieldRow(f).name); }

std::optional<AudioField> audioFieldOfOption(const QString& option)
{
    for (const AudioFieldRow& row : kFields)
        if (option == QLatin1String(row.option))
            return row.field;
    return std::nullopt;
}

const AudioArtworkKeys& audioArtworkKeys() { return kArtwork; }

const char* id3CommentFrame() { return audioFieldRow(F::Comments).id3; }
QList<QByteArray> id3OlderDateFrames() { return {"TYER", "TDAT", "TIME"}; }
QList<QByteArray> xiphTrackTotalNames() { return {"TRACKTOTAL", "TOTALTRACKS"}; }
const char* xiphTrackTotalName() { return "TRACKTOTAL"; }

QList<QByteArray> aiffTagChunks()
{
    QList<QByteArray> chunks;
    for (const AudioFieldRow& row : kFields)
        if (row.aiff)
            chunks.append(row.aiff);
    for (const auto& [chunk, info] : kAiffInfoExtras)
        chunks.append(chunk);
    chunks << "ID3 " << "id3 ";
    return chunks;
}

QString infoKeyOfId3Frame(const QByteArray& frame)
{
    static const QHash<QByteArray, QString> map = infoMap<QByteArray>(&AudioFieldRow::id3, kId3InfoExtras);
    return map.value(frame);
}

QString infoKeyOfXiphName(const QString& name)
{
    static const QHash<QString, QString> map = infoMap<QString>(&AudioFieldRow::xiph, kXiphInfoExtras);
    return map.value(name.toUpper());
}

QString infoKeyOfRiffId(const QByteArray& id)
{
    static const QHash<QByteArray, QString> map = infoMap<QByteArray>(&AudioFieldRow::riff, kRiffInfoExtras);
    return map.value(id);
}

QString infoKeyOfAiffChunk(const QByteArray& chunk)
{
    static const QHash<QByteArray, QString> map = infoMap<QByteArray>(&AudioFieldRow::aiff, kAiffInfoExtras);
    return map.value(chunk);
}

AudioRecordRole audioRecordRole(const QString& identifier, bool infoSpace, AudioReaderRoute route)
{
    if (infoSpace)
        return infoRole(identifier);
    return route == AudioReaderRoute::Aiff ? lookup(aiffRows(), identifier) : lookup(mp3Rows(), identifier);
}

}  // namespace pelorin

// The song's fields and their keys in every container:
//   field          ID3v2 (MP3, WAV/AIFF ID3 chunk)  RIFF INFO  AIFF chunk  Xiph / TagLib property  MP4 atom
//   year           TDRC (TYER+TDAT in v2.3)
//   recorded date  TRDA                             ICRD       -           RECORDINGDATE           ----:com.apple.iTunes:RECORDINGDATE
// The info dictionary (WAV, FLAC, Ogg and the other TagLib kinds on reading; CAF's own info
// chunk on writing) names the fields as the desktop's audio service does.
#include "audio/AudioFields.h"

#include <QHash>

namespace pelorin {
namespace {

using F = AudioField;
using V = AudioValue;
using S = AudioSection;
using R = IKImageItem;

// clang-format off
constexpr AudioFieldSpec kFields[] = {
//   field           name            option           label             editor name      section      export key       member               value           id3     riff    aiff     xiph             mp4                                    ffmpeg          info
    {F::Title,       "title",        "--title",       "Title",          "titlelab",      S::Track,   "Title",         &R::fileTitle,       V::Text,        "TIT2", "INAM", "NAME",  "TITLE",         "\251nam",                             "title",        "title"},
    {F::Subtitle,    "subtitle",     "--subtitle",    "Subtitle",       "subtitlelab",   S::Track,   "Subtitle",      &R::fileSubTitle,    V::Text,        "TIT3", "ISBJ", nullptr, "SUBTITLE",      "\251st3",                             "subtitle",     "subtitle"},
    {F::Album,       "album",        "--album",       "Album",          "abulmlab",      S::Track,   "Album",         &R::fileAblumName,   V::Text,        "TALB", "IPRD", nullptr, "ALBUM",         "\251alb",                             "album",        "album"},
    {F::Artist,      "artist",       "--artist",      "Artist",         "artistlab",     S::Track,   "Artist",        &R::fileArist,       V::Text,        "TPE1", "IART", "AUTH",  "ARTIST",        "\251ART",                             "artist",       "artist"},
    {F::TrackNumber, "track number", "--track",       "Track Number",   "ablumAristlab", S::Track,   "Track Number",  &R::fileAlbumArist,  V::TrackNumber, "TRCK", "ITRK", nullptr, "TRACKNUMBER",   "trkn",                                "track",        "track number"},
    {F::Composer,    "composer",     "--composer",    "Composer",       "composerlab",   S::Track,   "Composer",      &R::fileComposer,    V::Text,        "TCOM", "IMUS", nullptr, "COMPOSER",      "\251wrt",                             "composer",     "composer"},
    {F::RecordDate,  "recorded date","--record-date", "Recording Date", "recordDatelab", S::Release, "Record Date",   &R::shootDateStr,    V::RecordDate,  "TRDA", "ICRD", nullptr, "RECORDINGDATE", "----:com.apple.iTunes:RECORDINGDATE", "date",         "recorded date"},
    {F::Year,        "year",         "--year",        "Year",           "releaseYearlab",S::Release, "Release Year",  &R::fileReleasedYear,V::Year,        "TDRC", nullptr,nullptr, "DATE",          "\251day",                             "year",         "year"},
    {F::Copyright,   "copyright",    "--copyright",   "Copyright",      "copyrightlab",  S::Release, "Copyright",     &R::fileCopyright,   V::Text,        "TCOP", "ICOP", "(c) ",  "COPYRIGHT",     "cprt",                                "copyright",    "copyright"},
    {F::Publisher,   "publisher",    "--publisher",   "Publisher",      "publishlab",    S::Release, "Publisher",     &R::filePublisher,   V::Text,        "TPUB", nullptr,nullptr, "PUBLISHER",     "\251pub",                             "publisher",    nullptr},
    {F::Band,        "band",         "--band",        "Band",           "bandlab",       S::Release, "Band",          &R::fileBand,        V::Text,        "TPE2", nullptr,nullptr, "ALBUMARTIST",   "aART",                                "album_artist", nullptr},
    {F::Comments,    "comments",     "--comments",    "Comments",       "commentslab",   S::Release, "Comments",      &R::fileComments,    V::Text,        "COMM", "ICMT", "ANNO",  "COMMENT",       "\251cmt",                             "comment",      "comments"},
    {F::Lyrics,      "lyricist",     "--lyrics",      "Lyrics",         "lyricslab",     S::Release, "Lyrics",        &R::fileLyricist,    V::Text,        "TEXT", "IWRI", nullptr, "LYRICIST",      "\251lyr",                             "lyrics",       "lyricist"},
};
// clang-format on

constexpr AudioArtworkKeys kArtwork = {"APIC", "covr", "com.apple.quicktime.artwork", "aart"};

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
    std::initializer_list<const char*> identifiers;
};
constexpr AudioRecordRole field(AudioField f) { return {AudioRecordRole::Field, f}; }
constexpr AudioRecordRole kPicture{AudioRecordRole::Picture};
constexpr AudioRecordRole kLocation{AudioRecordRole::Location};
constexpr AudioRecordRole kDescription{AudioRecordRole::Description};

const Row kMp3Rows[] = {
    {field(F::Album), {"id3/TALB", "itsk/%A9alb"}},
    {field(F::Artist), {"id3/TPE1", "itsk/%A9ART", "id3/TOPE"}},
    {kPicture, {"id3/APIC", "itsk/covr"}},
    {field(F::Title), {"id3/TIT2", "itsk/%A9nam"}},
    {kLocation, {"uiso/loci", "mdta/com.apple.quicktime.location.ISO6709"}},
    // TDRC took TYER's place in ID3v2.4.
    {field(F::Year), {"id3/TYER", "itsk/%A9day", "id3/TDRC"}},
    {field(F::Publisher), {"mdta/com.apple.quicktime.publisher", "itsk/%A9pub", "id3/TPUB"}},
    {field(F::Copyright), {"mdta/com.apple.quicktime.copyright", "itsk/cprt", "id3/TCOP"}},
    {kDescription, {"mdta/com.apple.quicktime.description"}},
    {field(F::Comments), {"id3/COMM", "itsk/%A9cmt"}},
    {field(F::Subtitle), {"id3/TIT3", "itsk/%A9st3"}},
    {field(F::Band), {"id3/TPE2"}},
    {field(F::Lyrics), {"id3/TEXT", "itsk/%A9lyr"}},
    {field(F::Composer), {"id3/TCOM", "itsk/%A9wrt"}},
    {field(F::TrackNumber), {"id3/TRCK", "itsk/trkn"}},
    {field(F::RecordDate), {"uiso/date", "mdta/com.apple.quicktime.creationdate", "id3/TRDA"}},
    // FFmpeg's key names, as M4A files made with use_metadata_tags hold them.
    {field(F::Title), {"mdta/title"}}, {field(F::Subtitle), {"mdta/subtitle"}},
    {field(F::Album), {"mdta/album"}}, {field(F::Artist), {"mdta/artist"}},
    {field(F::TrackNumber), {"mdta/track"}}, {field(F::Composer), {"mdta/composer"}},
    {field(F::RecordDate), {"mdta/date"}}, {field(F::Year), {"mdta/year"}},
    {field(F::Copyright), {"mdta/copyright"}}, {field(F::Publisher), {"mdta/publisher"}},
    {field(F::Band), {"mdta/album_artist"}}, {field(F::Comments), {"mdta/comment"}},
    {field(F::Lyrics), {"mdta/lyrics"}}, {kPicture, {"mdta/com.apple.quicktime.artwork"}},
};

const Row kAiffRows[] = {
    {field(F::Album), {"id3/TALB", "itsk/%A9alb", "caaf/info-album"}},
    {field(F::Artist), {"id3/TPE1", "itsk/%A9ART", "caaf/info-artist", "id3/TOPE"}},
    {kPicture, {"id3/APIC", "itsk/covr"}},
    {field(F::Title), {"id3/TIT2", "itsk/%A9nam", "caaf/info-title"}},
    {kLocation, {"uiso/loci", "mdta/com.apple.quicktime.location.ISO6709"}},
    {field(F::Year), {"caaf/info-year"}},
    {field(F::Publisher), {"mdta/com.apple.quicktime.publisher", "itsk/%A9pub", "id3/TPUB"}},
    {field(F::Copyright), {"mdta/com.apple.quicktime.copyright", "itsk/cprt", "id3/TCOP"}},
    {kDescription, {"mdta/com.apple.quicktime.description"}},
    {field(F::Comments), {"id3/COMM", "caaf/info-comments"}},
    {field(F::Subtitle), {"id3/TIT3"}},
    {field(F::Band), {"id3/TPE2"}},
    {field(F::Lyrics), {"id3/TEXT", "itsk/%A9lyr"}},
    {field(F::Composer), {"id3/TCOM", "caaf/info-composer"}},
    {field(F::TrackNumber), {"caaf/info-track%20number"}},
    {field(F::RecordDate), {"uiso/date", "mdta/com.apple.quicktime.creationdate", "id3/TRDA"}},
};

template <std::size_t N>
AudioRecordRole lookup(const Row (&rows)[N], const QString& identifier)
{
    for (const Row& row : rows)
        for (const char* id : row.identifiers)
            if (identifier == QLatin1String(id))
                return row.role;
    return {};
}

// The info dictionary's keys are the fields' own info names, and "aart" for the picture.
AudioRecordRole infoRole(const QString& key)
{
    if (key == QLatin1String(kArtwork.info))
        return kPicture;
    for (const AudioFieldSpec& spec : kFields)
        if (spec.info && key == QLatin1String(spec.info))
            return field(spec.field);
    return {};
}

// A container key -> info name map from one column of the table and its extras.
template <typename Key, std::size_t N>
QHash<Key, QString> infoMap(const char* AudioFieldSpec::*column,
                            const std::pair<const char*, const char*> (&extras)[N])
{
    QHash<Key, QString> map;
    for (const AudioFieldSpec& spec : kFields)
        if (spec.*column && spec.info)
            map.insert(Key(spec.*column), QString::fromLatin1(spec.info));
    for (const auto& [key, info] : extras)
        map.insert(Key(key), QString::fromLatin1(info));
    return map;
}

}  // namespace

std::span<const AudioFieldSpec> audioFieldSpecs() { return kFields; }

const AudioFieldSpec& audioFieldSpec(AudioField f) { return kFields[static_cast<int>(f)]; }

QString audioFieldName(AudioField f) { return QString::fromLatin1(audioFieldSpec(f).name); }

std::optional<AudioField> audioFieldOfOption(const QString& option)
{
    for (const AudioFieldSpec& spec : kFields)
        if (option == QLatin1String(spec.option))
            return spec.field;
    return std::nullopt;
}

const AudioArtworkKeys& audioArtworkKeys() { return kArtwork; }

const char* id3CommentFrame() { return audioFieldSpec(F::Comments).id3; }
QList<QByteArray> id3OlderDateFrames() { return {"TYER", "TDAT", "TIME"}; }
QList<QByteArray> xiphTrackTotalNames() { return {"TRACKTOTAL", "TOTALTRACKS"}; }
const char* xiphTrackTotalName() { return "TRACKTOTAL"; }

QList<QByteArray> aiffTagChunks()
{
    QList<QByteArray> chunks;
    for (const AudioFieldSpec& spec : kFields)
        if (spec.aiff)
            chunks.append(spec.aiff);
    for (const auto& [chunk, info] : kAiffInfoExtras)
        chunks.append(chunk);
    chunks << "ID3 " << "id3 ";
    return chunks;
}

QString infoKeyOfId3Frame(const QByteArray& frame)
{
    static const QHash<QByteArray, QString> map = infoMap<QByteArray>(&AudioFieldSpec::id3, kId3InfoExtras);
    return map.value(frame);
}

QString infoKeyOfXiphName(const QString& name)
{
    static const QHash<QString, QString> map = infoMap<QString>(&AudioFieldSpec::xiph, kXiphInfoExtras);
    return map.value(name.toUpper());
}

QString infoKeyOfRiffId(const QByteArray& id)
{
    static const QHash<QByteArray, QString> map = infoMap<QByteArray>(&AudioFieldSpec::riff, kRiffInfoExtras);
    return map.value(id);
}

QString infoKeyOfAiffChunk(const QByteArray& chunk)
{
    static const QHash<QByteArray, QString> map = infoMap<QByteArray>(&AudioFieldSpec::aiff, kAiffInfoExtras);
    return map.value(chunk);
}

AudioRecordRole audioRecordRole(const QString& identifier, bool infoSpace, AudioReaderRoute route)
{
    if (infoSpace)
        return infoRole(identifier);
    return route == AudioReaderRoute::Aiff ? lookup(kAiffRows, identifier) : lookup(kMp3Rows, identifier);
}

}  // namespace pelorin

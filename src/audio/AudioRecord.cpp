#include "audio/AudioRecord.h"

#include "model/DateText.h"
#include "model/DisplayTexts.h"
#include "model/FileDates.h"
#include "model/LocalTime.h"
#include "model/ItemPictureImage.h"

#include <QFileInfo>
#include <QLocale>

namespace pelorin {
namespace {

enum class Target {
    None, Album, Artist, Picture, Title, Location, Year, Publisher, Copyright, Description,
    Comments, Subtitle, Band, Lyricist, Composer, Track, Date,
};

struct Row {
    Target target;
    std::initializer_list<const char*> identifiers;
};

// First matching row wins, in this order.
const Row kMp3Rows[] = {
    {Target::Album, {"id3/TALB", "itsk/%A9alb"}},
    {Target::Artist, {"id3/TPE1", "itsk/%A9ART", "id3/TOPE"}},
    {Target::Picture, {"id3/APIC"}},
    {Target::Picture, {"itsk/covr"}},
    {Target::Title, {"id3/TIT2", "itsk/%A9nam"}},
    {Target::Location, {"uiso/loci", "mdta/com.apple.quicktime.location.ISO6709"}},
    // TDRC took TYER's place in ID3v2.4.
    {Target::Year, {"id3/TYER", "itsk/%A9day", "id3/TDRC"}},
    {Target::Publisher, {"mdta/com.apple.quicktime.publisher", "itsk/%A9pub", "id3/TPUB"}},
    {Target::Copyright, {"mdta/com.apple.quicktime.copyright", "itsk/cprt", "id3/TCOP"}},
    {Target::Description, {"mdta/com.apple.quicktime.description"}},
    {Target::Comments, {"id3/COMM", "itsk/%A9cmt"}},
    {Target::Subtitle, {"id3/TIT3", "itsk/%A9st3"}},
    {Target::Band, {"id3/TPE2"}},
    {Target::Lyricist, {"id3/TEXT", "itsk/%A9lyr"}},
    {Target::Composer, {"id3/TCOM", "itsk/%A9wrt"}},
    {Target::Track, {"id3/TRCK", "itsk/trkn"}},
    {Target::Date, {"uiso/date", "mdta/com.apple.quicktime.creationdate", "id3/TRDA"}},
    // FFmpeg's key names, as M4A files made with use_metadata_tags hold them.
    {Target::Title, {"mdta/title"}}, {Target::Subtitle, {"mdta/subtitle"}}, {Target::Album, {"mdta/album"}},
    {Target::Artist, {"mdta/artist"}}, {Target::Track, {"mdta/track"}}, {Target::Composer, {"mdta/composer"}},
    {Target::Date, {"mdta/date"}}, {Target::Year, {"mdta/year"}}, {Target::Copyright, {"mdta/copyright"}},
    {Target::Publisher, {"mdta/publisher"}}, {Target::Band, {"mdta/album_artist"}},
    {Target::Comments, {"mdta/comment"}}, {Target::Lyricist, {"mdta/lyrics"}},
    {Target::Picture, {"mdta/com.apple.quicktime.artwork"}},
};

const Row kAiffRows[] = {
    {Target::Album, {"id3/TALB", "itsk/%A9alb", "caaf/info-album"}},
    {Target::Artist, {"id3/TPE1", "itsk/%A9ART", "caaf/info-artist", "id3/TOPE"}},
    {Target::Picture, {"id3/APIC"}},
    {Target::Picture, {"itsk/covr"}},
    {Target::Title, {"id3/TIT2", "itsk/%A9nam", "caaf/info-title"}},
    {Target::Location, {"uiso/loci", "mdta/com.apple.quicktime.location.ISO6709"}},
    {Target::Year, {"caaf/info-year"}},
    {Target::Publisher, {"mdta/com.apple.quicktime.publisher", "itsk/%A9pub", "id3/TPUB"}},
    {Target::Copyright, {"mdta/com.apple.quicktime.copyright", "itsk/cprt", "id3/TCOP"}},
    {Target::Description, {"mdta/com.apple.quicktime.description"}},
    {Target::Comments, {"id3/COMM", "caaf/info-comments"}},
    {Target::Subtitle, {"id3/TIT3"}},
    {Target::Band, {"id3/TPE2"}},
    {Target::Lyricist, {"id3/TEXT", "itsk/%A9lyr"}},
    {Target::Composer, {"id3/TCOM", "caaf/info-composer"}},
    {Target::Track, {"caaf/info-track%20number"}},
    {Target::Date, {"uiso/date", "mdta/com.apple.quicktime.creationdate", "id3/TRDA"}},
};

// The info dictionary's keys; "aart" is its artwork.
const Row kInfoRows[] = {
    {Target::Album, {"album"}}, {Target::Artist, {"artist"}}, {Target::Title, {"title"}},
    {Target::Subtitle, {"subtitle"}}, {Target::Track, {"track number"}},
    {Target::Date, {"recorded date"}}, {Target::Year, {"year"}},
    {Target::Copyright, {"copyright"}}, {Target::Composer, {"composer"}},
    {Target::Comments, {"comments"}}, {Target::Lyricist, {"lyricist"}},
    {Target::Picture, {"aart"}},
};

template <std::size_t N>
Target lookup(const Row (&rows)[N], const QString& identifier)
{
    for (const Row& row : rows)
        for (const char* id : row.identifiers)
            if (identifier == QLatin1String(id))
                return row.target;
    return Target::None;
}

QString* textSlot(Target target, IKImageItem& r)
{
    switch (target) {
    case Target::Album: return &r.fileAblumName;
    case Target::Artist: return &r.fileArist;
    case Target::Title: return &r.fileTitle;
    case Target::Year: return &r.fileReleasedYear;
    case Target::Publisher: return &r.filePublisher;
    case Target::Copyright: return &r.fileCopyright;
    case Target::Description: return &r.fileDescription;
    case Target::Comments: return &r.fileComments;
    case Target::Subtitle: return &r.fileSubTitle;
    case Target::Band: return &r.fileBand;
    case Target::Lyricist: return &r.fileLyricist;
    case Target::Composer: return &r.fileComposer;
    case Target::Track: return &r.fileAlbumArist;  // the album-artist slot holds the track number
    default: return nullptr;
    }
}

QDateTime localDateFromText(const QString& text)
{
    const auto clock = parseDateText(text);
    return clock ? instantFromWallClock(*clock).toLocalTime() : QDateTime();
}

void applyFileAttributes(const QString& path, IKImageItem& record)
{
    const QFileInfo info(path);
    record.fileName = info.fileName();
    record.filePath = path;
    if (!info.exists())
        return;
    record.fileSize = sizeText(static_cast<std::uint64_t>(info.size()));
    const FileDateReading dates = readFileDates(path);
    record.fileModifyDate = dates.modified.toLocalTime();
    if (dates.created.isValid()) {
        record.fileCreateDate = dates.created.toLocalTime();
        record.fileCreateDateStr = QLocale(QStringLiteral("en_US"))
                                       .toString(record.fileCreateDate, QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    }
}

void applyIndexAttributes(const QVariantMap& attributes, IKImageItem& record)
{
    if (const QVariant d = attributes.value(QStringLiteral("kMDItemDurationSeconds")); d.isValid()) {
        record.fileduration = d.toDouble();
        record.fileduratStr = mediaDurationText(record.fileduration);
    }
    if (const QVariant k = attributes.value(QStringLiteral("kMDItemKind")); k.isValid() && !k.toString().isEmpty())
        record.fileType = k.toString();
    if (const QVariant b = attributes.value(QStringLiteral("kMDItemAudioBitRate")); b.isValid())
        record.fileBitRate = QStringLiteral("%1 bps").arg(b.toString());
    if (const QVariant s = attributes.value(QStringLiteral("kMDItemAudioSampleRate")); s.isValid())
        record.fileSampleRate = QStringLiteral("%1 Hz").arg(s.toString());
    if (const QVariant c = attributes.value(QStringLiteral("kMDItemAudioChannelCount")); c.isValid())
        record.fileChannels = c.toString();
}

}  // namespace

void applyRecordingDateText(const QString& text, IKImageItem& record)
{
    QString s = text;
    s.replace(QLatin1Char('T'), QLatin1Char(' '));
    const QStringList plus = s.split(QLatin1Char('+'));
    if (plus.size() > 1) {
        record.shootDateStr = plus.first();
        if (const QDateTime date = localDateFromText(plus.first()); date.isValid())
            record.shootDate = date;
        return;
    }
    record.shootDateStr = s;
    if (const QDateTime date = localDateFromText(s); date.isValid()) {
        record.shootDate = date;
        return;
    }
    QString pieces = s;
    pieces.replace(QLatin1Char(' '), QLatin1Char('-')).replace(QLatin1Char(':'), QLatin1Char('-'));
    const QStringList p = pieces.split(QLatin1Char('-'));
    if (p.size() < 6)
        return;
    const QString t = QStringLiteral("%1-%2-%3 %4:%5:%6").arg(p[0], p[1], p[2], p[3], p[4], p[5]);
    const auto clock = parseDateText(t, DateTextForm::Dash);
    if (!clock)
        return;
    record.shootDateStr = t;
    record.shootDate = instantFromWallClock(*clock).toLocalTime();
}

void applyLocationText(const QString& text, IKImageItem& record)
{
    if (text.isEmpty())
        return;
    int state = 0;
    qsizetype previous = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c != QLatin1Char('+') && c != QLatin1Char('-'))
            continue;
        const QString sign(c);
        if (state == 0) {
            record.AtitudeFormat = sign;
            state = 1;
        } else if (state == 1) {
            record.longtitudeFormat = sign;
            record.fileAtitude = text.mid(previous + 1, i - previous - 1).toDouble();
            state = 2;
        } else {
            record.latitudeFormat = sign;
            record.filelongtitude = text.mid(previous + 1, i - previous - 1).toDouble();
            QString rest = text.mid(i + 1);
            if (rest.endsWith(QLatin1Char('/')))
                rest.chop(1);
            record.filelatitude = rest.toDouble();
            return;
        }
        previous = i;
    }
}

void applyAudioItems(const MediaMetadataItems& items, AudioReaderRoute route, IKImageItem& record,
                     RecordPicture picture)
{
    for (const MediaMetadataItem& item : items) {
        Target target = Target::None;
        if (item.keySpace == QLatin1String("info"))
            target = lookup(kInfoRows, item.identifier);
        else if (route == AudioReaderRoute::Aiff)
            target = lookup(kAiffRows, item.identifier);
        else
            target = lookup(kMp3Rows, item.identifier);
        if (target == Target::None)
            continue;
        if (target == Target::Picture) {
            // Undecodable bytes leave an empty image, as a broken picture should look.
            if (picture == RecordPicture::Decoded)
                record.fileImage = itemPicture(QImage::fromData(item.value.toByteArray()));
        } else if (target == Target::Location) {
            applyLocationText(item.value.toString(), record);
        } else if (target == Target::Date) {
            applyRecordingDateText(item.value.toString(), record);
        } else if (QString* slot = textSlot(target, record)) {
            *slot = item.value.toString();
        }
    }
}

QByteArray audioArtworkBytes(const MediaMetadataItems& items, AudioReaderRoute route)
{
    QByteArray bytes;
    for (const MediaMetadataItem& item : items) {
        const Target target = item.keySpace == QLatin1String("info") ? lookup(kInfoRows, item.identifier)
                              : route == AudioReaderRoute::Aiff     ? lookup(kAiffRows, item.identifier)
                                                                    : lookup(kMp3Rows, item.identifier);
        if (target == Target::Picture)
            bytes = item.value.toByteArray();
    }
    return bytes;
}

IKImageItem readAudioRecord(const QString& path, QString* problem, AudioReading* readingOut, RecordPicture picture)
{
    IKImageItem record;
    record.fileType = QStringLiteral("Audio");
    applyFileAttributes(path, record);
    AudioReading reading = readAudioItems(path);
    applyIndexAttributes(reading.indexAttributes, record);
    applyAudioItems(reading.items, audioReaderRoute(QFileInfo(path).suffix()), record, picture);
    if (problem)
        *problem = reading.problem;
    if (readingOut)
        *readingOut = std::move(reading);
    return record;
}

}  // namespace pelorin

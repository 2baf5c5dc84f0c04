#include "video/MovieFields.h"

#include "model/ItemPictureImage.h"

#include <QImage>
#include <QLocale>

namespace pelorin {

namespace {

using Field = MovieField;

struct Row {
    Field field;
    const char* identifiers[8];
};

// One row per field; an identifier belongs to exactly one row. Besides the iTunes list and
// Apple's keys, a field takes the forms other tools write: QuickTime user-data texts
// (FFmpeg's plain -metadata), FFmpeg's own key names (use_metadata_tags) and 3GPP boxes.
constexpr Row kRows[] = {
    {Field::Album, {"id3/TALB", "itsk/%A9alb", "udta/%A9alb", "mdta/album", "mdta/com.apple.quicktime.album", "uiso/albm"}},
    {Field::Artist, {"id3/TPE1", "itsk/%A9ART", "udta/%A9ART", "mdta/artist", "mdta/com.apple.quicktime.artist"}},
    {Field::Artwork, {"id3/APIC", "itsk/covr", "mdta/com.apple.quicktime.artwork"}},
    {Field::Title, {"id3/TIT2", "itsk/%A9nam", "udta/%A9nam", "mdta/title", "mdta/com.apple.quicktime.title", "uiso/titl"}},
    {Field::Location, {"uiso/loci", "mdta/com.apple.quicktime.location.ISO6709"}},
    {Field::Make, {"mdta/com.apple.quicktime.make"}},
    {Field::Model, {"mdta/com.apple.quicktime.model"}},
    {Field::Publisher, {"mdta/com.apple.quicktime.publisher", "itsk/%A9pub"}},
    {Field::Copyright, {"mdta/com.apple.quicktime.copyright", "itsk/cprt", "udta/%A9cpy", "mdta/copyright", "uiso/cprt"}},
    {Field::Keywords, {"mdta/com.apple.quicktime.keywords", "udta/%A9key"}},
    {Field::Description, {"mdta/com.apple.quicktime.description", "itsk/%A9des", "udta/%A9des", "mdta/description", "uiso/dscp"}},
    {Field::Director, {"mdta/com.apple.quicktime.director", "itsk/%A9dir"}},
    {Field::Performer, {"mdta/com.apple.quicktime.performer", "itsk/%A9prf", "uiso/perf"}},
    {Field::Producer, {"mdta/com.apple.quicktime.producer", "itsk/%A9prd", "mdta/com.apple.proapps.manufacturer"}},
    {Field::ReleaseYear, {"id3/TYER"}},
    {Field::Date, {"uiso/date", "mdta/com.apple.quicktime.creationdate", "udta/%A9day", "itsk/%A9day", "mdta/date", "mdta/creation_time"}},
};

// Which date wins when a movie holds several: the camera's own creation date first, then the
// dates of the user data, then FFmpeg's creation_time (a copy of the header time); among equals
// the later item. The movie header comes last of all (see readMovieFile).
int dateRank(const QString& identifier)
{
    if (identifier == QLatin1String("mdta/com.apple.quicktime.creationdate"))
        return 3;
    if (identifier == QLatin1String("mdta/creation_time"))
        return 1;
    return 2;
}

void applyArtwork(IKImageItem& item, const QVariant& value)
{
    QByteArray bytes;
    if (value.typeId() == QMetaType::QVariantMap)
        bytes = value.toMap().value(QStringLiteral("data")).toByteArray();
    else if (value.typeId() == QMetaType::QByteArray)
        bytes = value.toByteArray();
    if (bytes.isEmpty())
        return;
    if (ItemPicture picture = itemPicture(QImage::fromData(bytes)); !picture.isNull())
        item.fileImage = std::move(picture);
}

QDateTime parseEither(const QString& text)
{
    const QLocale english(QLocale::English, QLocale::UnitedStates);
    QDateTime date = english.toDateTime(text, QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    if (!date.isValid())
        date = english.toDateTime(text, QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    return date;
}

// The leading decimal number of a text ("020.000/" gives 20).
double leadingNumber(const QString& text)
{
    qsizetype end = 0;
    while (end < text.size() && (text[end].isDigit() || text[end] == QLatin1Char('.')))
        ++end;
    return text.left(end).toDouble();
}

}  // namespace

std::optional<MovieField> movieFieldOf(const QString& identifier)
{
    for (const Row& row : kRows) {
        for (const char* name : row.identifiers) {
            if (name && identifier == QLatin1String(name))
                return row.field;
        }
    }
    return std::nullopt;
}

void applyIso6709Location(IKImageItem& item, const QString& text)
{
    if (text.isEmpty())
        return;
    int signs = 0;
    qsizetype pieceStart = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c != QLatin1Char('+') && c != QLatin1Char('-'))
            continue;
        const QString sign(c);
        const double piece = leadingNumber(text.mid(pieceStart, i - pieceStart));
        ++signs;
        if (signs == 1) {
            item.latitudeFormat = sign;
        } else if (signs == 2) {
            item.filelatitude = piece;
            item.longtitudeFormat = sign;
        } else {
            item.filelongtitude = piece;
            item.AtitudeFormat = sign;
            item.fileAtitude = leadingNumber(text.mid(i + 1));
            return;
        }
        pieceStart = i + 1;
    }
}

void applyMovieDateText(IKImageItem& item, const QString& original)
{
    QString text = original;
    text.replace(QLatin1Char('T'), QLatin1Char(' '));
    const qsizetype plus = text.indexOf(QLatin1Char('+'));
    if (plus >= 0) {
        item.shootDateStr = text.left(plus);
        const QDateTime date = parseEither(item.shootDateStr);
        if (date.isValid())
            item.shootDate = date;
        return;
    }
    item.shootDateStr = text;
    QDateTime date = parseEither(text);
    if (date.isValid()) {
        item.shootDate = date;
        return;
    }
    QString pieces = text;
    pieces.replace(QLatin1Char(' '), QLatin1Char('-')).replace(QLatin1Char(':'), QLatin1Char('-'));
    QStringList parts = pieces.split(QLatin1Char('-'));
    if (parts.size() < 6)
        return;
    if (parts[5].size() >= 3)
        parts[5] = parts[5].left(2);
    const QString rebuilt = QStringLiteral("%1-%2-%3 %4:%5:%6").arg(parts[0], parts[1], parts[2], parts[3], parts[4], parts[5]);
    date = QLocale(QLocale::English, QLocale::UnitedStates).toDateTime(rebuilt, QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    if (date.isValid()) {
        item.shootDateStr = rebuilt;
        item.shootDate = date;
    }
}

void applyMovieItems(IKImageItem& item, const MediaMetadataItems& items)
{
    int shownDateRank = -1;
    for (const MediaMetadataItem& entry : items) {
        const std::optional<Field> field = movieFieldOf(entry.identifier);
        if (!field)
            continue;
        const QString text = entry.value.toString();
        switch (*field) {
        case Field::Album: item.fileAblumName = text; break;
        case Field::Artist: item.fileArist = text; break;
        case Field::Artwork: applyArtwork(item, entry.value); break;
        case Field::Title: item.fileTitle = text; break;
        case Field::Location: applyIso6709Location(item, text); break;
        case Field::Make: item.fileMake = text; break;
        case Field::Model: item.fileModel = text; break;
        case Field::Publisher: item.filePublisher = text; break;
        case Field::Copyright: item.fileCopyright = text; break;
        case Field::Keywords: item.fileKeyWords = text; break;
        case Field::Description: item.fileDescription = text; break;
        case Field::Director: item.fileDirector = text; break;
        case Field::Performer: item.fileActor = text; break;
        case Field::Producer: item.fileproducer = text; break;
        case Field::ReleaseYear: item.fileReleasedYear = text; break;
        case Field::Date:
            if (dateRank(entry.identifier) >= shownDateRank) {
                shownDateRank = dateRank(entry.identifier);
                applyMovieDateText(item, text);
            }
            break;
        }
    }
}

}  // namespace pelorin

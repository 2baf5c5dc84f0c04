#include "video/MovieRecordFill.h"

#include "isobmff/ItemKeys.h"
#include "model/ItemPictureImage.h"
#include "video/MovieFields.h"

#include <QImage>
#include <QLocale>

namespace pelorin {

namespace {

// Which date wins when a movie holds several: the camera's own creation date first, then the
// dates of the user data, then FFmpeg's creation_time (a copy of the header time); among equals
// the later item. The movie header comes last of all (see readMovieFile).
int dateRank(const QString& identifier)
{
    static const QString cameraDate = itemIdentifier(ItemKeySpace::QuickTimeKeys, appleKey::creationDate);
    static const QString headerCopy = itemIdentifier(ItemKeySpace::QuickTimeKeys, ffmpegKey::creationTime);
    if (identifier == cameraDate)
        return 3;
    if (identifier == headerCopy)
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

// A value of a field other than the recording date.
void applyValue(IKImageItem& item, MovieField field, const QVariant& value)
{
    if (field == MovieField::Artwork)
        applyArtwork(item, value);
    else if (field == MovieField::Location)
        applyIso6709Location(item, value.toString());
    else if (QString IKImageItem::*member = movieFieldRow(field).member)
        item.*member = value.toString();
}

}  // namespace

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
        const std::optional<MovieField> field = movieFieldOf(entry.identifier);
        if (!field)
            continue;
        if (*field != MovieField::RecordingDate) {
            applyValue(item, *field, entry.value);
        } else if (dateRank(entry.identifier) >= shownDateRank) {
            shownDateRank = dateRank(entry.identifier);
            applyMovieDateText(item, entry.value.toString());
        }
    }
}

void applyContainerTags(IKImageItem& item, const MediaMetadataItems& tags)
{
    for (const MediaMetadataItem& tag : tags) {
        const std::optional<MovieField> field = movieFieldOfContainerTag(tag.key);
        if (field == MovieField::RecordingDate)
            applyMovieDateText(item, tag.value.toString());
        else if (field)
            applyValue(item, *field, tag.value);
    }
}

}  // namespace pelorin

#include "audio/AudioRecord.h"

#include "audio/AudioFields.h"

#include "model/DateText.h"
#include "model/DisplayTexts.h"
#include "model/FileDates.h"
#include "model/LocalTime.h"
#include "model/ItemPictureImage.h"

#include <QFileInfo>
#include <QLocale>

namespace pelorin {
namespace {

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
        const AudioRecordRole role =
            audioRecordRole(item.identifier, item.keySpace == QLatin1String("info"), route);
        switch (role.kind) {
        case AudioRecordRole::None: break;
        case AudioRecordRole::Picture:
            // Undecodable bytes leave an empty image, as a broken picture should look.
            if (picture == RecordPicture::Decoded)
                record.fileImage = itemPicture(QImage::fromData(item.value.toByteArray()));
            break;
        case AudioRecordRole::Location: applyLocationText(item.value.toString(), record); break;
        case AudioRecordRole::Description: record.fileDescription = item.value.toString(); break;
        case AudioRecordRole::Field:
            if (role.field == AudioField::RecordDate)
                applyRecordingDateText(item.value.toString(), record);
            else
                record.*audioFieldRow(role.field).member = item.value.toString();
            break;
        }
    }
}

QByteArray audioArtworkBytes(const MediaMetadataItems& items, AudioReaderRoute route)
{
    QByteArray bytes;
    for (const MediaMetadataItem& item : items)
        if (audioRecordRole(item.identifier, item.keySpace == QLatin1String("info"), route).kind
            == AudioRecordRole::Picture)
            bytes = item.value.toByteArray();
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

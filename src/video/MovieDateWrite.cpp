#include "video/MovieDateWrite.h"

#include "isobmff/ItemKeys.h"
#include "model/LocalTime.h"
#include "video/MovieFields.h"
#include "video/MovieItems.h"

namespace pelorin {

namespace {

void writeBigEndian(QByteArray& bytes, qsizetype at, std::uint64_t value, int width)
{
    for (int i = 0; i < width; ++i)
        bytes[at + i] = char(value >> (8 * (width - 1 - i)));
}

bool setCreation(BoxNode* header, std::uint64_t seconds, QString* error)
{
    if (!header)
        return true;
    QByteArray& payload = header->payload;
    const int version = payload.isEmpty() ? -1 : uchar(payload[0]);
    const int width = version == 1 ? 8 : 4;
    if ((version != 0 && version != 1) || payload.size() < 4 + width) {
        *error = QStringLiteral("the '%1' header is damaged").arg(QString::fromLatin1(header->type));
        return false;
    }
    if (width == 4 && seconds > 0xffffffffULL) {
        *error = QStringLiteral("the date does not fit the movie header");
        return false;
    }
    writeBigEndian(payload, 4, seconds, width);
    return true;
}

bool setHeaderCreationSeconds(BoxNode& moov, std::uint64_t seconds, QString* error)
{
    if (!setCreation(moov.child("mvhd"), seconds, error))
        return false;
    for (BoxNode& trak : moov.children) {
        if (trak.type != "trak")
            continue;
        if (!setCreation(trak.child("tkhd"), seconds, error) || !setCreation(trak.find("mdia/mdhd"), seconds, error))
            return false;
    }
    return true;
}

}  // namespace

QDateTime movieDateFromWallClock(const WallClock& clock)
{
    if (!clock.date().isValid() || !clock.time().isValid())
        return {};
    const QDateTime instant = instantFromWallClock(clock);
    const std::optional<WallClock> shown = wallClockFromInstant(instant);
    if (!instant.isValid() || !shown)
        return {};
    // The offset in force at the instant; in a gap the instant is the first one after it.
    const std::int64_t offset = shown->clockSeconds() - instant.toSecsSinceEpoch();
    return QDateTime(clock.date(), clock.time(), Qt::OffsetFromUTC, int(offset));
}

QList<ItemChange> recordingDateChanges(const QDateTime& when, const MediaMetadataItems& present)
{
    if (!when.isValid())
        return {};
    const int offset = when.offsetFromUtc();
    const QString zone = QStringLiteral("%1%2%3")
                             .arg(offset < 0 ? QLatin1Char('-') : QLatin1Char('+'))
                             .arg(std::abs(offset) / 3600, 2, 10, QLatin1Char('0'))
                             .arg(std::abs(offset) % 3600 / 60, 2, 10, QLatin1Char('0'));
    const QString iso = when.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")) + zone;
    const QString userDataDate = itemIdentifier(ItemKeySpace::UserData, threeGppBox::date);
    const QString isoDate = itemIdentifier(ItemKeySpace::IsoUserData, threeGppBox::date);
    const QString cameraDate = itemIdentifier(ItemKeySpace::QuickTimeKeys, appleKey::creationDate);
    QList<ItemChange> changes = {
        ItemChange::remove(userDataDate),
        ItemChange::set(isoDate, when.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss"))),
        ItemChange::set(cameraDate, iso),
    };
    QStringList done = {userDataDate, isoDate, cameraDate};
    for (const MediaMetadataItem& item : present) {
        if (movieFieldOf(item.identifier) != MovieField::RecordingDate || done.contains(item.identifier))
            continue;
        done.append(item.identifier);
        changes.append(ItemChange::set(item.identifier, iso));
    }
    return changes;
}

bool setHeaderCreationTimes(BoxNode& moov, const QDateTime& instant, QString* error)
{
    const std::int64_t seconds = instant.toSecsSinceEpoch() + kMovieClockEpochOffset;
    if (seconds < 0) {
        *error = QStringLiteral("the date lies before 1904");
        return false;
    }
    return setHeaderCreationSeconds(moov, std::uint64_t(seconds), error);
}

bool clearHeaderCreationTimes(BoxNode& moov, QString* error)
{
    return setHeaderCreationSeconds(moov, 0, error);
}

RewriteReport writeMovieRecordingDate(const QString& sourcePath, const QDateTime& when, const QString& targetPath,
                                      Durability durability)
{
    const QList<ItemChange> changes = recordingDateChanges(when, readMovieItemsOfFile(sourcePath));
    if (changes.isEmpty()) {
        RewriteReport report;
        report.error = QStringLiteral("the recording date is no valid date");
        return report;
    }
    return writeMovieChanges(sourcePath, changes, targetPath, durability,
                             [&](BoxNode& moov, QString* error) { return setHeaderCreationTimes(moov, when, error); });
}

}  // namespace pelorin

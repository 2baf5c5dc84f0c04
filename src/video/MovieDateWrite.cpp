#include "video/MovieDateWrite.h"

namespace pelorin {

namespace {

// Seconds from 1904-01-01 (the movie clock's epoch) to 1970-01-01.
constexpr std::int64_t kEpochOffset = 2082844800;

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

}  // namespace

QList<ItemChange> recordingDateChanges(const QDateTime& local)
{
    const QDateTime when = local.toLocalTime();
    const int offset = when.offsetFromUtc();
    const QString zone = QStringLiteral("%1%2%3")
                             .arg(offset < 0 ? QLatin1Char('-') : QLatin1Char('+'))
                             .arg(std::abs(offset) / 3600, 2, 10, QLatin1Char('0'))
                             .arg(std::abs(offset) % 3600 / 60, 2, 10, QLatin1Char('0'));
    return {
        ItemChange::remove(QStringLiteral("udta/date")),
        ItemChange::set(QStringLiteral("uiso/date"), when.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss"))),
        ItemChange::set(QStringLiteral("mdta/com.apple.quicktime.creationdate"),
                        when.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")) + zone),
    };
}

bool setHeaderCreationTimes(BoxNode& moov, const QDateTime& instant, QString* error)
{
    const std::int64_t seconds = instant.toSecsSinceEpoch() + kEpochOffset;
    if (seconds < 0) {
        *error = QStringLiteral("the date lies before 1904");
        return false;
    }
    if (!setCreation(moov.child("mvhd"), std::uint64_t(seconds), error))
        return false;
    for (BoxNode& trak : moov.children) {
        if (trak.type != "trak")
            continue;
        if (!setCreation(trak.child("tkhd"), std::uint64_t(seconds), error)
            || !setCreation(trak.find("mdia/mdhd"), std::uint64_t(seconds), error))
            return false;
    }
    return true;
}

RewriteReport writeMovieRecordingDate(const QString& sourcePath, const QDateTime& local, const QString& targetPath)
{
    return writeMovieChanges(sourcePath, recordingDateChanges(local), targetPath, Durability::FlushEach,
                             [&](BoxNode& moov, QString* error) { return setHeaderCreationTimes(moov, local, error); });
}

}  // namespace pelorin

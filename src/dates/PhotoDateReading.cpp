#include "dates/PhotoDateReading.h"

#include "model/DateText.h"
#include "model/LocalTime.h"
#include "photo/PhotoProperties.h"

namespace pelorin {

QString localDateText(const QDateTime& instant)
{
    const auto clock = wallClockFromInstant(instant);
    return clock ? renderDateText(*clock, DateTextForm::Exif) : QString();
}

QDateTime creationOrModification(const FileDateReading& dates)
{
    return dates.created.isValid() ? dates.created : dates.modified;
}

PhotoDateTexts photoDateTexts(const QVariantMap& properties, const QString& path)
{
    const QVariantMap exif = properties.value(QStringLiteral("{Exif}")).toMap();
    PhotoDateTexts texts;
    texts.original = exif.value(QStringLiteral("DateTimeOriginal")).toString().trimmed();
    texts.digitized = exif.value(QStringLiteral("DateTimeDigitized")).toString().trimmed();
    if (texts.original.isEmpty())
        texts.original = texts.digitized;
    if (texts.digitized.isEmpty())
        texts.digitized = texts.original;
    if (texts.original.isEmpty()) {
        const FileDateReading dates = readFileDates(path);
        texts.original = localDateText(creationOrModification(dates));
        texts.digitized = localDateText(dates.modified);
        texts.fromFile = true;
    }
    return texts;
}

PhotoDateTexts readPhotoDateTexts(const QString& path)
{
    return photoDateTexts(readPhotoProperties(path).properties, path);
}

QDateTime shiftFileDate(const QDateTime& instant, std::int64_t seconds)
{
    const auto clock = wallClockFromInstant(instant);
    if (!clock)
        return {};
    const auto moved = clock->addSeconds(seconds);
    return moved ? instantFromWallClock(*moved) : QDateTime();
}

QDateTime fileDateFromText(const QString& text)
{
    const auto clock = parseDateText(text);
    return clock ? instantFromWallClock(*clock) : QDateTime();
}

}  // namespace pelorin

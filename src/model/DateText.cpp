#include "model/DateText.h"

#include <cmath>

namespace pelorin {
namespace {

constexpr qsizetype kDateTextLength = 19;  // yyyy?MM?dd HH:mm:ss

bool readDigits(QStringView text, qsizetype from, qsizetype count, int* value)
{
    int v = 0;
    for (qsizetype i = from; i < from + count; ++i) {
        const char16_t c = text[i].unicode();
        if (c < u'0' || c > u'9')
            return false;
        v = v * 10 + (c - u'0');
    }
    *value = v;
    return true;
}

}  // namespace

std::optional<WallClock> parseDateText(QStringView text, DateTextForm form)
{
    text = text.trimmed();
    if (text.size() != kDateTextLength)
        return std::nullopt;
    const QChar separator = form == DateTextForm::Exif ? QLatin1Char(':') : QLatin1Char('-');
    if (text[4] != separator || text[7] != separator || text[10] != QLatin1Char(' ')
        || text[13] != QLatin1Char(':') || text[16] != QLatin1Char(':'))
        return std::nullopt;
    int year, month, day, hour, minute, second;
    if (!readDigits(text, 0, 4, &year) || !readDigits(text, 5, 2, &month)
        || !readDigits(text, 8, 2, &day) || !readDigits(text, 11, 2, &hour)
        || !readDigits(text, 14, 2, &minute) || !readDigits(text, 17, 2, &second))
        return std::nullopt;
    return WallClock::fromParts(year, month, day, hour, minute, second);
}

std::optional<WallClock> parseDateText(QStringView text)
{
    if (auto exif = parseDateText(text, DateTextForm::Exif))
        return exif;
    return parseDateText(text, DateTextForm::Dash);
}

QString renderDateText(const WallClock& clock, DateTextForm form)
{
    const QDate d = clock.date();
    const QTime t = clock.time();
    const char* pattern = form == DateTextForm::Exif ? "%04d:%02d:%02d %02d:%02d:%02d"
                                                     : "%04d-%02d-%02d %02d:%02d:%02d";
    return QString::asprintf(pattern, d.year(), d.month(), d.day(), t.hour(), t.minute(),
                             t.second());
}

bool CheckDateFormatWithDateString(const QString& text)
{
    return parseDateText(text).has_value();
}

std::optional<WallClock> shiftDateText(QStringView text, double seconds)
{
    const auto clock = parseDateText(text);
    if (!clock || !std::isfinite(seconds))
        return std::nullopt;
    const double whole = std::floor(seconds);
    // Beyond ten thousand years no result can be rendered anyway.
    if (std::fabs(whole) > 4.0e11)
        return std::nullopt;
    return clock->addSeconds(static_cast<std::int64_t>(whole));
}

QString GetChangeDateforExifDate(const QString& text, double seconds)
{
    const auto shifted = shiftDateText(text, seconds);
    return shifted ? renderDateText(*shifted, DateTextForm::Dash) : text;
}

QString toExifForm(QString text)
{
    return text.replace(QLatin1Char('-'), QLatin1Char(':'));
}

}  // namespace pelorin

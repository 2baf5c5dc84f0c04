#include "video/MovieNameDates.h"

#include "model/DateText.h"

#include <QDate>
#include <QRegularExpression>
#include <QStringList>
#include <QTime>

namespace pelorin {

namespace {

std::optional<QString> render(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    const QDate date(year, month, day);
    const QTime time(hour, minute, second);
    if (!date.isValid() || !time.isValid() || year < 1970 || year > 2100)
        return std::nullopt;
    return QStringLiteral("%1:%2:%3 %4:%5:%6")
        .arg(year, 4, 10, QLatin1Char('0'))
        .arg(month, 2, 10, QLatin1Char('0'))
        .arg(day, 2, 10, QLatin1Char('0'))
        .arg(hour, 2, 10, QLatin1Char('0'))
        .arg(minute, 2, 10, QLatin1Char('0'))
        .arg(second, 2, 10, QLatin1Char('0'));
}

// Naming schemes, most specific first. Digit runs are bounded so that a longer number is not
// read as a date by accident.
struct Scheme {
    QRegularExpression pattern;
    bool hasTime;
};

const std::vector<Scheme>& schemes()
{
    static const std::vector<Scheme> list = {
        // 2016-05-01 12.30.45, 2016:05:01 12:30:45, 2021-01-01 at 12.00.00, 2016-05-01T12-30-45
        {QRegularExpression(QStringLiteral(
             R"((?<!\d)(\d{4})[-:_.](\d{2})[-:_.](\d{2})(?:[ _T\-]|\s+at\s+)(\d{2})[.:\-_h](\d{2})[.:\-_m](\d{2})(?!\d))")),
         true},
        // VID_20160501_123045, PXL_20210101_123456789, 20160501T123045, IMG-20160501-123045
        {QRegularExpression(QStringLiteral(R"((?<!\d)(\d{4})(\d{2})(\d{2})[_T\- ]?(\d{2})(\d{2})(\d{2})(?:\d{0,3})(?!\d))")),
         true},
        // VID-20160501-WA0001, 20160501
        {QRegularExpression(QStringLiteral(R"((?<!\d)(\d{4})(\d{2})(\d{2})(?!\d))")), false},
        // 2016-05-01
        {QRegularExpression(QStringLiteral(R"((?<!\d)(\d{4})[-_.](\d{2})[-_.](\d{2})(?!\d))")), false},
    };
    return list;
}

}  // namespace

std::optional<QString> detectDateText(const QString& text)
{
    for (const Scheme& scheme : schemes()) {
        auto matches = scheme.pattern.globalMatch(text);
        while (matches.hasNext()) {
            const QRegularExpressionMatch m = matches.next();
            const auto n = [&](int i) { return m.captured(i).toInt(); };
            const auto found = scheme.hasTime ? render(n(1), n(2), n(3), n(4), n(5), n(6)) : render(n(1), n(2), n(3));
            if (found)
                return found;
        }
    }
    return std::nullopt;
}

std::optional<QString> manualDateTextFromName(const QString& baseName)
{
    QString kept;
    for (const QChar c : baseName) {
        if (c.isDigit() && c.unicode() < 0x80)
            kept.append(c);
        else if (c == QLatin1Char('_') || c == QLatin1Char(' ') || c == QLatin1Char('.') || c == QLatin1Char('-'))
            kept.append(c);
    }
    if (kept.size() >= 2) {
        if (!kept.front().isDigit())
            kept.remove(0, 1);
        if (!kept.isEmpty() && !kept.back().isDigit())
            kept.chop(1);
    }
    QChar separator;
    for (const QChar candidate : {QLatin1Char('_'), QLatin1Char(' '), QLatin1Char('-')}) {
        if (kept.contains(candidate)) {
            separator = candidate;
            break;
        }
    }
    if (separator.isNull())
        return std::nullopt;
    const QStringList parts = kept.split(separator);
    if (parts.size() < 2)
        return std::nullopt;
    const QString& first = parts[0];
    const QString& second = parts[1];
    QString text;
    if (first.size() == 8) {
        const QString date = QStringLiteral("%1:%2:%3").arg(first.mid(0, 4), first.mid(4, 2), first.mid(6, 2));
        if (second.size() >= 6)
            text = QStringLiteral("%1 %2:%3:%4").arg(date, second.mid(0, 2), second.mid(2, 2), second.mid(4, 2));
        else
            text = date + QStringLiteral(" 00:00:00");
    } else {
        const QChar timeSeparator = second.contains(QLatin1Char('-')) ? QLatin1Char('-') : QLatin1Char('.');
        const QStringList pieces = second.split(timeSeparator);
        const bool usable = second.contains(timeSeparator) && pieces.size() >= 3
                            && std::all_of(pieces.begin(), pieces.begin() + 3, [](const QString& p) { return p.size() >= 2; });
        if (usable)
            text = QStringLiteral("%1 %2:%3:%4").arg(first, pieces[0].right(2), pieces[1].right(2), pieces[2].left(2));
        else
            text = first + QStringLiteral(" 00:00:00");
    }
    text.replace(QLatin1Char('-'), QLatin1Char(':'));
    return text;
}

std::optional<QString> dateTextFromFileName(const QString& baseName)
{
    const std::optional<QString> manual = manualDateTextFromName(baseName);
    // The manual parse reassembles any digits and separators ("2016.05.01 beach" gives
    // "2016.05.01 00:00:00"): it counts only when it is a whole date text itself.
    if (manual && parseDateText(*manual, DateTextForm::Exif) && detectDateText(*manual))
        return manual;
    // A manual text that holds no date is not written: it would only plant a wrong date.
    return detectDateText(baseName);
}

}  // namespace pelorin

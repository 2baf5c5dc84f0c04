#include "cli/CliValues.h"

#include "model/DateText.h"

#include <QDate>
#include <QLocale>
#include <QRegularExpression>
#include <QTime>

#include <cmath>
#include <optional>

namespace pelorin::cli {
namespace {

std::optional<double> numberIn(const QString& text, double low, double high)
{
    bool ok = false;
    const double value = QLocale::c().toDouble(text.trimmed(), &ok);
    if (!ok || !std::isfinite(value) || value < low || value > high)
        return std::nullopt;
    return value;
}

bool isDate(const QString& text)
{
    const QString t = text.trimmed();
    return QDate::fromString(t, QStringLiteral("yyyy:MM:dd")).isValid()
           || QDate::fromString(t, QStringLiteral("yyyy-MM-dd")).isValid();
}

bool isTrackNumber(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("^\\s*(\\d{1,5})\\s*(?:/\\s*(\\d{1,5})\\s*)?$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return false;
    const int number = match.captured(1).toInt();
    const bool hasTotal = !match.captured(2).isEmpty();
    const int total = match.captured(2).toInt();
    return number >= 1 && number <= 65535 && (!hasTotal || (total >= number && total <= 65535));
}

bool isYear(const QString& text)
{
    static const QRegularExpression year(QStringLiteral("^\\s*\\d{4}\\s*$"));
    if (year.match(text).hasMatch())
        return text.trimmed().toInt() >= 1;
    return QDate::fromString(text.trimmed(), QStringLiteral("yyyy-MM-dd")).isValid();
}

struct Rule {
    bool (*valid)(const QString&);
    const char* allowed;
};

Rule ruleFor(ValueKind kind)
{
    switch (kind) {
    case ValueKind::DateTime:
        return {[](const QString& t) { return parseDateText(t).has_value(); },
                "a date and time YYYY:MM:DD HH:MM:SS or YYYY-MM-DD HH:MM:SS (months 01-12, hours 00-23)"};
    case ValueKind::Date:
        return {isDate, "a date YYYY:MM:DD or YYYY-MM-DD"};
    case ValueKind::Time:
        return {[](const QString& t) { return QTime::fromString(t.trimmed(), QStringLiteral("HH:mm:ss")).isValid(); },
                "a time HH:MM:SS from 00:00:00 to 23:59:59"};
    case ValueKind::Latitude:
        return {[](const QString& t) { return numberIn(t, -90, 90).has_value(); },
                "degrees from -90 to 90 (negative south)"};
    case ValueKind::Longitude:
        return {[](const QString& t) { return numberIn(t, -180, 180).has_value(); },
                "degrees from -180 to 180 (negative west)"};
    case ValueKind::Altitude:
        return {[](const QString& t) { return numberIn(t, -12000, 100000).has_value(); },
                "metres from -12000 to 100000 (negative below sea level)"};
    case ValueKind::TrackNumber:
        return {isTrackNumber, "a number from 1 to 65535, or NUMBER/TOTAL with NUMBER <= TOTAL"};
    case ValueKind::Year:
        return {isYear, "a year YYYY from 0001 to 9999, or a date YYYY-MM-DD"};
    }
    return {[](const QString&) { return true; }, ""};
}

}  // namespace

QString checkOptionValue(ValueKind kind, const QString& option, const QString& text)
{
    if (text.trimmed().isEmpty())
        return {};
    const Rule rule = ruleFor(kind);
    if (rule.valid(text))
        return {};
    return QStringLiteral("%1: '%2' is not valid; give %3").arg(option, text, QLatin1String(rule.allowed));
}

}  // namespace pelorin::cli

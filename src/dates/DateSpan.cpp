#include "dates/DateSpan.h"

namespace pelorin {
namespace {

constexpr std::int64_t kLongestSpan = kLongestDateSpan;

bool fail(QString* error, const QString& why)
{
    if (error)
        *error = why;
    return false;
}

bool addPart(DateSpan& span, std::int64_t count, QStringView unit, QString* error)
{
    if (unit == u"y")
        span.years = count;
    else if (unit == u"mo")
        span.months = count;
    else if (unit == u"d")
        span.days = count;
    else if (unit == u"h")
        span.hours = count;
    else if (unit == u"m")
        span.minutes = count;
    else if (unit == u"s")
        span.seconds = count;
    else
        return fail(error, QStringLiteral("unknown unit '%1' (use y, mo, d, h, m, s)").arg(unit.toString()));
    return true;
}

}  // namespace

std::int64_t spanSeconds(const DateSpan& span)
{
    const std::pair<std::int64_t, std::int64_t> parts[] = {
        {span.years, kSecondsPerYear}, {span.months, kSecondsPerMonth}, {span.days, 86400},
        {span.hours, 3600},            {span.minutes, 60},              {span.seconds, 1},
    };
    std::int64_t total = 0;
    for (const auto& [count, unit] : parts) {
        if (count <= 0)
            continue;
        // Each term and the running sum stay below the limit, so nothing can overflow.
        if (count > kLongestSpan / unit)
            return kLongestSpan;
        total += count * unit;
        if (total > kLongestSpan)
            return kLongestSpan;
    }
    return total;
}

std::optional<DateSpan> parseDateSpan(const QString& text, QString* error)
{
    DateSpan span;
    bool any = false;
    qsizetype i = 0;
    const qsizetype n = text.size();
    while (i < n) {
        if (text[i].isSpace()) {
            ++i;
            continue;
        }
        const qsizetype digitsStart = i;
        while (i < n && text[i].isDigit())
            ++i;
        if (i == digitsStart) {
            fail(error, QStringLiteral("expected a count at '%1'").arg(text.mid(digitsStart)));
            return std::nullopt;
        }
        bool ok = false;
        const std::int64_t count = QStringView(text).sliced(digitsStart, i - digitsStart).toLongLong(&ok);
        if (!ok || count > kLongestSpan) {
            fail(error, QStringLiteral("the count '%1' is too large").arg(text.mid(digitsStart, i - digitsStart)));
            return std::nullopt;
        }
        const qsizetype unitStart = i;
        while (i < n && text[i].isLetter())
            ++i;
        if (i == unitStart) {
            fail(error, QStringLiteral("the count %1 has no unit (use y, mo, d, h, m, s)").arg(count));
            return std::nullopt;
        }
        if (!addPart(span, count, QStringView(text).sliced(unitStart, i - unitStart), error))
            return std::nullopt;
        any = true;
    }
    if (!any) {
        fail(error, QStringLiteral("the span is empty"));
        return std::nullopt;
    }
    return span;
}

}  // namespace pelorin

#include "update/VersionCompare.h"

#include <QStringList>
#include <QStringView>

namespace pelorin {

namespace {

// The digits of a numeric part without leading zeros; empty for 0 or a non-numeric part.
// Kept as text so that a part of any length compares without overflowing.
QStringView significantDigits(QStringView part)
{
    part = part.trimmed();
    if (part.isEmpty())
        return {};
    for (QChar c : part) {
        if (c < u'0' || c > u'9')
            return {};
    }
    qsizetype first = 0;
    while (first < part.size() && part[first] == u'0')
        ++first;
    return part.mid(first);
}

int compareParts(QStringView a, QStringView b)
{
    const QStringView da = significantDigits(a);
    const QStringView db = significantDigits(b);
    if (da.size() != db.size())
        return da.size() < db.size() ? -1 : 1;
    return da.compare(db);
}

}  // namespace

int compareVersions(const QString& a, const QString& b)
{
    const QList<QStringView> pa = QStringView(a).trimmed().split(u'.');
    const QList<QStringView> pb = QStringView(b).trimmed().split(u'.');
    const qsizetype count = std::max(pa.size(), pb.size());
    for (qsizetype i = 0; i < count; ++i) {
        const int order = compareParts(i < pa.size() ? pa[i] : QStringView(), i < pb.size() ? pb[i] : QStringView());
        if (order != 0)
            return order < 0 ? -1 : 1;
    }
    return 0;
}

bool isNewerVersion(const QString& candidate, const QString& current)
{
    return compareVersions(candidate, current) > 0;
}

}  // namespace pelorin

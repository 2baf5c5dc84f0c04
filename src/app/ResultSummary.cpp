#include "app/ResultSummary.h"

#include <QFileInfo>

namespace pelorin {

namespace {

QString files(qsizetype count)
{
    return count == 1 ? QStringLiteral("1 file") : QStringLiteral("%1 files").arg(count);
}

}  // namespace

QString resultHeadline(const CommandResult& result, bool cancelled)
{
    QStringList parts;
    if (!result.written.isEmpty()) {
        const QString folder = QFileInfo(result.written.first()).absolutePath();
        parts.append(QStringLiteral("Wrote %1 to %2").arg(files(result.written.size()), folder));
    } else if (!result.planned.isEmpty()) {
        parts.append(QStringLiteral("Planned %1 changes").arg(result.planned.size()));
    } else if (result.skipped.isEmpty() && !result.notes.isEmpty()) {
        // A command that writes nothing (opening a camera) says what it found instead.
        parts.append(result.notes.first());
    } else {
        parts.append(QStringLiteral("Nothing was written"));
    }
    if (!result.skipped.isEmpty())
        parts.append(QStringLiteral("skipped %1").arg(files(result.skipped.size())));
    QString line = parts.join(QStringLiteral("; "));
    if (cancelled)
        line += QStringLiteral(" (cancelled)");
    return line + QLatin1Char('.');
}

QString resultDetails(const CommandResult& result)
{
    QStringList lines;
    for (const SkippedItem& item : result.skipped)
        lines.append(QStringLiteral("%1: %2").arg(QFileInfo(item.path).fileName(), item.reason));
    for (const QString& note : result.notes)
        lines.append(note);
    return lines.join(QLatin1Char('\n'));
}

}  // namespace pelorin

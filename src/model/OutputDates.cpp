#include "model/OutputDates.h"

#include "model/DateText.h"
#include "model/FileDates.h"
#include "model/LocalTime.h"

namespace pelorin {
namespace {

QString localText(const QDateTime& instant)
{
    const auto clock = wallClockFromInstant(instant);
    return clock ? renderDateText(*clock, DateTextForm::Dash) : QString();
}

}  // namespace

void setOutputFileDates(const QString& path, const QDateTime& created, const QDateTime& modified,
                        const CommandContext& context, CommandResult& result)
{
    if (context.dryRun) {
        const FileDateReading now = readFileDates(path);
        if (modified.isValid())
            result.plan(path, QStringLiteral("file modification date"), localText(now.modified), localText(modified));
        if (created.isValid())
            result.plan(path, QStringLiteral("file creation date"), localText(now.created), localText(created));
        return;
    }
    if (modified.isValid()) {
        QString error;
        if (!setFileModificationDate(path, modified, &error))
            result.noteOnce(QStringLiteral("the modification date of %1 could not be set: %2").arg(path, error));
    }
    if (created.isValid() && !setFileCreationDate(path, created))
        result.noteOnce(creationDateNotSetNote());
}

}  // namespace pelorin

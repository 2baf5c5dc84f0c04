#include "video/MovieDateCommands.h"

#include "model/DateText.h"
#include "model/FileDates.h"
#include "model/OutputDates.h"
#include "model/SafeOutput.h"
#include "video/MovieBatch.h"
#include "video/MovieDateWrite.h"
#include "video/MovieItems.h"
#include "video/MovieNameDates.h"
#include "video/MovieReader.h"

#include <QFileInfo>


namespace pelorin {

namespace {

// Writes the recording date into a copy and gives the copy that date as its file dates.
void writeDated(const QString& file, const QString& target, const QDateTime& local, const CommandContext& context,
                CommandResult& result)
{
    if (context.dryRun) {
        const MediaMetadataItems present = readMovieItemsOfFile(file);
        for (const ItemChange& change : recordingDateChanges(local, present)) {
            if (change.value)
                result.plan(target, change.identifier, lastItemText(present, change.identifier),
                            change.value->toString());
        }
        result.plan(target, QStringLiteral("movie header creation time"), {}, local.toUTC().toString(Qt::ISODate));
        setOutputFileDates(target, local, local, context, result);
        return;
    }
    const RewriteReport report = writeMovieRecordingDate(file, local, target, kMovieBatchDurability);
    if (!report.written) {
        result.skip(file, report.error);
        return;
    }
    result.addWritten(target);
    setOutputFileDates(target, local, local, context, result);
    context.reveal.reveal(target);
}

}  // namespace

CommandResult movieShootDatesToFileDates(const QStringList& files, const CommandContext& context)
{
    return forEachMovie(files, context, [&context](const QString& file, const QString& target, CommandResult& result) {
        const IKImageItem item = readMovieFile(file).item;
        QDateTime when = item.shootDate;
        if (!when.isValid()) {
            QString text = item.shootDateStr;
            text.remove(QLatin1Char('Z'));
            const std::optional<QString> detected = detectDateText(text);
            const std::optional<WallClock> clock = detected ? parseDateText(*detected) : std::nullopt;
            if (clock)
                when = movieDateFromWallClock(*clock);
        }
        if (!when.isValid()) {
            result.skip(file, QStringLiteral("the movie has no recording date"));
            return;
        }
        if (!context.dryRun) {
            QString error;
            if (!copyFileAtomically(file, target, &error, kMovieBatchDurability)) {
                result.skip(file, error);
                return;
            }
            result.addWritten(target);
        }
        setOutputFileDates(target, when, when, context, result);
        if (!context.dryRun)
            context.reveal.reveal(target);
    });
}

CommandResult movieCreationDatesToRecordingDates(const QStringList& files, const CommandContext& context)
{
    return forEachMovie(files, context, [&context](const QString& file, const QString& target, CommandResult& result) {
        const QDateTime created = readFileDates(file).created;
        if (!created.isValid()) {
            result.skip(file, QStringLiteral("the file system keeps no creation date for the file"));
            return;
        }
        // Whole seconds, as the date texts carry them.
        const QDateTime local = QDateTime::fromSecsSinceEpoch(created.toSecsSinceEpoch()).toLocalTime();
        writeDated(file, target, local, context, result);
    });
}

CommandResult movieDatesFromFileNames(const QStringList& files, const CommandContext& context)
{
    return forEachMovie(files, context, [&context](const QString& file, const QString& target, CommandResult& result) {
        const std::optional<QString> text = dateTextFromFileName(QFileInfo(file).completeBaseName());
        const std::optional<WallClock> clock = text ? parseDateText(*text) : std::nullopt;
        if (!clock) {
            result.skip(file, QStringLiteral("the file name holds no date"));
            return;
        }
        writeDated(file, target, movieDateFromWallClock(*clock), context, result);
    });
}

}  // namespace pelorin

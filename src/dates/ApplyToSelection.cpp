#include "dates/ApplyToSelection.h"

#include "model/PhotoBatch.h"
#include "model/OutputDates.h"
#include "model/ParallelFor.h"
#include "model/SafeOutput.h"

#include <QFileInfo>

#include <atomic>
#include <vector>

namespace pelorin {

CommandResult applyToSelection(const PhotoSelection& selection, const PhotoChangesFor& changesFor,
                               const CommandContext& context, const QDateTime& outputDate)
{
    CommandResult result;
    if (!startPhotoBatch(selection, context, result))
        return result;
    const bool camera = selection.source == PhotoSource::Camera;
    const int total = int(selection.items.size());

    struct Outcome {
        QString input;
        QString output;
        QString reason;  // set when the photo was passed over before writing
        PhotoWriteResult written;
        bool done = false;
    };
    std::vector<Outcome> outcomes(static_cast<size_t>(total));
    std::atomic_int finished{0};
    PhotoWriteOptions options;
    options.durability = Durability::Deferred;  // one flush for the batch, below
    options.dryRun = context.dryRun;
    // A camera photo is our own download in the storage folder and is rewritten in place.
    options.replacement = camera ? SourceReplacement::Allow : SourceReplacement::Refuse;
    parallelFor(total, [&](int i) {
        if (context.isCancelled())
            return;
        const IKImageItem& item = selection.items[i];
        Outcome& o = outcomes[size_t(i)];
        o.output = storageOutputPath(context.storageFolder, item.fileName);
        o.input = camera ? o.output : item.filePath;
        if (camera && !QFileInfo::exists(o.input)) {
            o.reason = QStringLiteral("the camera photo has not been downloaded to the storage folder");
        } else if (const auto changes = changesFor(o.input, &o.reason)) {
            o.written = CopyPhotoWithProperties(o.input, *changes, o.output, options);
            if (!o.written.ok())
                o.reason = o.written.reason;
        }
        o.done = true;
        context.report(++finished, total);
    });
    if (!context.dryRun)
        flushFileSystem(context.storageFolder);

    for (const Outcome& o : outcomes) {
        if (!o.done)
            continue;  // cancelled before it started
        if (!o.written.ok()) {
            result.skip(o.input, o.reason.isEmpty() ? QStringLiteral("the photo could not be written") : o.reason);
            continue;
        }
        result.planned += o.written.planned;
        for (const QString& path : o.written.written)
            result.addWritten(path);
        for (const QString& warning : o.written.warnings)
            result.noteOnce(warning);
        if (o.written.outcome == PhotoWriteResult::Outcome::CopiedWithSidecar)
            result.noteOnce(o.written.reason);
        if (outputDate.isValid())
            setOutputFileDates(o.output, outputDate, outputDate, context, result);
        if (!context.dryRun)
            context.reveal.reveal(o.output);
    }
    return result;
}

}  // namespace pelorin

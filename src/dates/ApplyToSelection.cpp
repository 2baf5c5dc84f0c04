#include "dates/ApplyToSelection.h"

#include "dates/PhotoDateBatch.h"
#include "model/OutputDates.h"
#include "model/PhotoBatch.h"
#include "model/SafeOutput.h"

#include <vector>

namespace pelorin {

CommandResult applyToSelection(const PhotoSelection& selection, const PhotoChangesFor& changesFor,
                               const CommandContext& context, const QDateTime& outputDate)
{
    CommandResult result;
    if (!startPhotoBatch(selection, context, result))
        return result;
    struct Outcome {
        QString record;
        QString input;
        QString output;
        QString reason;  // set when the photo was passed over before writing
        bool unchanged = false;  // the photo needs no change: nothing written, nothing to report
        PhotoWriteResult written;
    };
    std::vector<Outcome> outcomes(selection.items.size());
    PhotoWriteOptions options;
    options.durability = Durability::Deferred;  // the frame flushes once for the batch
    options.dryRun = context.dryRun;
    const std::vector<char> ran = forEachPhotoInParallel(selection, context, [&](int i, const DatePhoto& photo) {
        Outcome& o = outcomes[size_t(i)];
        o.input = photo.input;
        o.output = photo.output;
        o.record = photo.item->filePath;
        o.reason = inPlaceCopyMissing(photo, selection.source);
        if (!o.reason.isEmpty())
            return;
        if (const auto changes = changesFor(o.input, &o.reason)) {
            PhotoWriteOptions photoOptions = options;
            photoOptions.replacement = photo.inPlace ? SourceReplacement::Allow : SourceReplacement::Refuse;
            o.written = CopyPhotoWithProperties(o.input, *changes, o.output, photoOptions);
            if (!o.written.ok())
                o.reason = o.written.reason;
        } else {
            o.unchanged = o.reason.isEmpty();
        }
    });

    for (size_t i = 0; i < outcomes.size(); ++i) {
        if (!ran[i])
            continue;  // cancelled before it started
        const Outcome& o = outcomes[i];
        if (o.unchanged)
            continue;
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
        if (!context.dryRun) {
            result.addEditedCopy(o.record, o.output, o.written.written);
            context.reveal.reveal(o.output);
        }
    }
    return result;
}

}  // namespace pelorin

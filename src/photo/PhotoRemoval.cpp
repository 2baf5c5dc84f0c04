#include "photo/PhotoRemoval.h"

#include "model/PhotoBatch.h"
#include "model/ParallelFor.h"
#include "model/SafeOutput.h"
#include "photo/PhotoRewrite.h"

#include <QFileInfo>

#include <atomic>
#include <vector>

namespace pelorin {
namespace {

PhotoChanges changesFor(MetadataRemoval what)
{
    PhotoChanges changes;
    const QVariant remove;  // a null value removes its group
    switch (what) {
    case MetadataRemoval::Exif:
        changes.groups.insert(QStringLiteral("{Exif}"), remove);
        break;
    case MetadataRemoval::Gps:
        changes.groups.insert(QStringLiteral("{GPS}"), remove);
        break;
    case MetadataRemoval::Iptc:
        changes.groups.insert(QStringLiteral("{IPTC}"), remove);
        break;
    case MetadataRemoval::ExifAndGps:
        changes.groups.insert(QStringLiteral("{Exif}"), remove);
        changes.groups.insert(QStringLiteral("{GPS}"), remove);
        break;
    case MetadataRemoval::All:
        changes.removeAllMetadata = true;
        break;
    }
    return changes;
}

enum class Reveal { EachFile, FolderOnce };

Reveal revealFor(MetadataRemoval what, PhotoSource source)
{
    if (what == MetadataRemoval::Exif)
        return Reveal::EachFile;
    if (what == MetadataRemoval::Gps || what == MetadataRemoval::Iptc)
        return source == PhotoSource::Computer ? Reveal::EachFile : Reveal::FolderOnce;
    return Reveal::FolderOnce;
}

}  // namespace

QString cameraOutputPrefix(MetadataRemoval what)
{
    switch (what) {
    case MetadataRemoval::Exif: return QStringLiteral("NoExif_");
    case MetadataRemoval::Gps: return QStringLiteral("NoGPS_");
    case MetadataRemoval::Iptc: return QStringLiteral("NoIPTC_");
    case MetadataRemoval::ExifAndGps:
    case MetadataRemoval::All: return QStringLiteral("NoExifAndGPS_");
    }
    return {};
}

CommandResult removePhotoMetadata(MetadataRemoval what, const PhotoSelection& selection,
                                  const CommandContext& context)
{
    CommandResult result;
    if (!startPhotoBatch(selection, context, result))
        return result;
    const PhotoChanges changes = changesFor(what);
    const Reveal reveal = revealFor(what, selection.source);
    const bool camera = selection.source == PhotoSource::Camera;
    const int total = int(selection.items.size());

    struct Outcome {
        QString record;
        QString input;
        QString output;
        PhotoWriteResult written;
        QString missingReason;  // the in-place input is gone
        bool done = false;
    };
    std::vector<Outcome> outcomes(static_cast<size_t>(total));
    // Output names are given in selection order, so the later of two same-named photos is the
    // one that gets a numbered name, whatever order the threads finish in.
    for (int i = 0; i < total; ++i) {
        const IKImageItem& item = selection.items[i];
        Outcome& o = outcomes[size_t(i)];
        o.input = photoInputPath(item, selection.source, context.storageFolder);
        o.output = context.claimOutput(photoEditOutputPath(item, selection.source, context.storageFolder,
                                                           camera ? cameraOutputPrefix(what) : QString()),
                                       o.input);
        o.record = item.filePath;
    }
    std::atomic_int finished{0};
    PhotoWriteOptions options;
    options.durability = Durability::Deferred;  // one flush for the batch, below
    options.dryRun = context.dryRun;
    parallelFor(total, [&](int i) {
        if (context.isCancelled())
            return;
        Outcome& o = outcomes[size_t(i)];
        // Never the imported file itself, even one that lies in the storage folder.
        const bool inPlace = o.output == o.input && (camera || o.input != o.record);
        o.missingReason = camera || inPlace ? inPlaceInputMissing(o.input, selection.source) : QString();
        if (o.missingReason.isEmpty()) {
            PhotoWriteOptions photoOptions = options;
            photoOptions.replacement = inPlace ? SourceReplacement::Allow : SourceReplacement::Refuse;
            o.written = CopyPhotoWithProperties(o.input, changes, o.output, photoOptions);
        }
        o.done = true;
        context.report(++finished, total);
    });
    if (!context.dryRun)
        flushFileSystem(context.storageFolder);

    for (const Outcome& o : outcomes) {
        if (!o.done)
            continue;  // cancelled before it started
        if (!o.missingReason.isEmpty()) {
            result.skip(o.input, o.missingReason);
        } else if (o.written.ok()) {
            result.planned += o.written.planned;
            for (const QString& path : o.written.written)
                result.addWritten(path);
            for (const QString& warning : o.written.warnings)
                result.noteOnce(warning);
            if (!context.dryRun)
                result.addEditedCopy(o.record, o.output, o.written.written);
            if (reveal == Reveal::EachFile && !context.dryRun)
                context.reveal.reveal(o.output);
        } else {
            result.skip(o.input, o.written.reason);
        }
    }
    if (reveal == Reveal::FolderOnce && !context.dryRun)
        context.reveal.open(context.storageFolder);
    return result;
}

}  // namespace pelorin

#include "dates/PhotoDateBatch.h"

#include "model/PhotoBatch.h"
#include "model/ParallelFor.h"
#include "model/SafeOutput.h"
#include "photo/PhotoCompleteness.h"
#include "photo/PhotoProperties.h"

#include <QFileInfo>

#include <atomic>

namespace pelorin {

std::vector<char> forEachPhotoInParallel(const PhotoSelection& selection, const CommandContext& context,
                                         const std::function<void(int index, const DatePhoto& photo)>& work)
{
    const int total = int(selection.items.size());
    std::vector<char> ran(static_cast<size_t>(total), 0);
    // Output names are given in selection order, so the later of two same-named photos is the
    // one that gets a numbered name, whatever order the threads finish in.
    std::vector<DatePhoto> photos;
    for (const IKImageItem& item : selection.items) {
        DatePhoto photo;
        photo.item = &item;
        photo.input = photoInputPath(item, selection.source, context.storageFolder);
        photo.output = context.claimOutput(photoEditOutputPath(item, selection.source, context.storageFolder),
                                           photo.input);
        // A camera download or a record's working copy is our own file and is rewritten in place;
        // an imported file never is, even one that lies in the storage folder.
        photo.inPlace = photo.output == photo.input &&
                        (selection.source == PhotoSource::Camera || photo.input != item.filePath);
        photos.push_back(photo);
    }
    std::atomic_int finished{0};
    parallelFor(total, [&](int i) {
        if (context.isCancelled())
            return;
        work(i, photos[size_t(i)]);
        ran[size_t(i)] = 1;
        context.report(++finished, total);
    });
    if (!context.dryRun)
        flushFileSystem(context.storageFolder);
    return ran;
}

QString inPlaceCopyMissing(const DatePhoto& photo, PhotoSource source)
{
    return photo.inPlace ? inPlaceInputMissing(photo.input, source) : QString();
}

CommandResult runDateBatch(const PhotoSelection& selection, const CommandContext& context,
                           const DatePhotoWork& work)
{
    CommandResult result;
    if (!startPhotoBatch(selection, context, result))
        return result;
    const bool camera = selection.source == PhotoSource::Camera;
    struct Outcome {
        DatePhoto photo;
        CommandResult result;
    };
    std::vector<Outcome> outcomes(selection.items.size());
    const std::vector<char> ran = forEachPhotoInParallel(selection, context, [&](int i, const DatePhoto& photo) {
        Outcome& o = outcomes[size_t(i)];
        o.photo = photo;
        if (const QString missing = inPlaceCopyMissing(photo, selection.source); !missing.isEmpty())
            o.result.skip(photo.input, missing);
        else
            work(photo, o.result);
    });
    for (size_t i = 0; i < outcomes.size(); ++i) {
        if (!ran[i])
            continue;  // cancelled before it started
        const Outcome& o = outcomes[i];
        result.merge(o.result);
        if (!context.dryRun)
            result.addEditedCopy(o.photo.item->filePath, o.photo.output, o.result.written);
        if (!camera && !context.dryRun && o.result.written.contains(o.photo.output))
            context.reveal.reveal(o.photo.output);
    }
    if (camera && !context.dryRun && !result.written.isEmpty())
        context.reveal.open(context.storageFolder);
    return result;
}

PhotoChanges dateChanges(const QVariantMap& properties, const PhotoDateValues& values)
{
    PhotoChanges changes;
    const QString exifKey = QStringLiteral("{Exif}");
    const QString tiffKey = QStringLiteral("{TIFF}");
    if (values.original || values.digitized) {
        QVariantMap exif = properties.value(exifKey).toMap();
        if (values.original)
            exif.insert(QStringLiteral("DateTimeOriginal"), *values.original);
        if (values.digitized)
            exif.insert(QStringLiteral("DateTimeDigitized"), *values.digitized);
        changes.groups.insert(exifKey, exif);
    }
    if (values.modified && (values.createTiffGroup || properties.contains(tiffKey))) {
        QVariantMap tiff = properties.value(tiffKey).toMap();
        tiff.insert(QStringLiteral("DateTime"), *values.modified);
        changes.groups.insert(tiffKey, tiff);
    }
    return changes;
}

bool writePhotoChanges(const DatePhoto& photo, const PhotoChanges& changes,
                       const CommandContext& context, CommandResult& result)
{
    PhotoWriteOptions options;
    options.replacement = photo.inPlace ? SourceReplacement::Allow : SourceReplacement::Refuse;
    options.durability = Durability::Deferred;  // the batch flushes once
    options.dryRun = context.dryRun;
    const PhotoWriteResult written = CopyPhotoWithProperties(photo.input, changes, photo.output, options);
    if (!written.ok()) {
        result.skip(photo.input, written.reason);
        return false;
    }
    result.planned += written.planned;
    for (const QString& path : written.written)
        result.addWritten(path);
    for (const QString& warning : written.warnings)
        result.noteOnce(warning);
    if (written.outcome == PhotoWriteResult::Outcome::CopiedWithSidecar)
        result.noteOnce(written.reason);
    return true;
}

bool copyPhotoUnchanged(const DatePhoto& photo, const CommandContext& context, CommandResult& result)
{
    if (context.dryRun && !QFileInfo::exists(photo.input)) {
        result.skip(photo.input, QStringLiteral("the file does not exist"));
        return false;
    }
    // A byte copy would pass a truncated photo on as if it were whole.
    if (!photoFileComplete(photo.input)) {
        result.skip(photo.input, damagedPhotoReason());
        return false;
    }
    if (context.dryRun)
        return true;
    if (photo.inPlace) {
        result.addWritten(photo.output);  // the copy is the file itself; its dates still change
        return true;
    }
    QString error;
    if (!copyFileAtomically(photo.input, photo.output, &error, Durability::Deferred)) {
        result.skip(photo.input, error);
        return false;
    }
    result.addWritten(photo.output);
    return true;
}

std::optional<QVariantMap> readDatePhoto(const DatePhoto& photo, CommandResult& result)
{
    PhotoProperties read = readPhotoProperties(photo.input);
    if (!read.ok()) {
        result.skip(photo.input, read.error);
        return std::nullopt;
    }
    return std::move(read.properties);
}

}  // namespace pelorin

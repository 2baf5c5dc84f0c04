#include "video/MovieRemoval.h"

#include "video/MovieBatch.h"
#include "video/MovieDateWrite.h"

#include "model/FileDates.h"
#include "model/OutputDates.h"
#include "model/SafeOutput.h"
#include "video/MovieReader.h"
#include "video/MovieRemux.h"

#include <QFileInfo>

namespace pelorin {

namespace {

bool isTechnical(const MediaMetadataItem& item)
{
    static const QStringList kKeptAtoms = {"%A9too", "%A9swr", "%A9fmt", "%A9enc", "%A9mak", "%A9mod",
                                           "%A9hst", "%A9req", "----", "stik", "hdvd", "pgap"};
    static const QStringList kKeptKeys = {"com.apple.quicktime.make", "com.apple.quicktime.model",
                                          "com.apple.quicktime.software", "com.android.version",
                                          "encoder", "com.android.capture.fps",
                                          "com.apple.quicktime.pixeldensity",
                                          "com.apple.quicktime.content.identifier",
                                          "com.apple.quicktime.video-orientation",
                                          "com.apple.quicktime.preferred-affine-transform"};
    static const QStringList kKeptKeyPrefixes = {"com.apple.quicktime.camera.", "com.apple.quicktime.live-photo",
                                                 "com.apple.quicktime.full-frame-rate",
                                                 "com.apple.quicktime.still-image-time"};
    if (item.keySpace == QLatin1String("itsk") || item.keySpace == QLatin1String("udta"))
        return kKeptAtoms.contains(item.key);
    if (item.keySpace == QLatin1String("mdta")) {
        if (kKeptKeys.contains(item.key))
            return true;
        for (const QString& prefix : kKeptKeyPrefixes) {
            if (item.key.startsWith(prefix))
                return true;
        }
    }
    return false;
}

}  // namespace

QList<ItemChange> descriptiveItemRemovals(const MediaMetadataItems& items)
{
    QList<ItemChange> removals;
    QStringList seen;
    for (const MediaMetadataItem& item : items) {
        if (isTechnical(item) || seen.contains(item.identifier))
            continue;
        seen.append(item.identifier);
        removals.append(ItemChange::remove(item.identifier));
    }
    // XMP in the user data may hold a location or people as well.
    removals.append(ItemChange::remove(QStringLiteral("udta/XMP_")));
    return removals;
}

CommandResult removeMovieMetadata(const QStringList& files, const CommandContext& context)
{
    return forEachMovie(files, context, [&context](const QString& file, const QString& target, CommandResult& result) {
        const MovieReading reading = readMovieFile(file);
        const QList<ItemChange> removals = descriptiveItemRemovals(reading.item.fileMetaArray);
        if (context.dryRun) {
            if (!reading.containerRead)
                result.skip(file, reading.problems.value(0, QStringLiteral("the movie cannot be read")));
            for (const MediaMetadataItem& item : reading.item.fileMetaArray) {
                if (!isTechnical(item))
                    result.plan(target, item.identifier, item.value.toString(), {});
            }
            if (reading.containerRead)
                result.plan(target, QStringLiteral("movie header creation time"), {}, {});
            return;
        }
        const FileDateReading dates = readFileDates(file);
        const RewriteReport report = isIsoMediaFile(file)
                                         ? writeMovieChanges(file, removals, target, kMovieBatchDurability,
                                                             clearHeaderCreationTimes, FileLevelXmp::Blank)
                                         : remuxWithTags(file, {}, target, true, kMovieBatchDurability);
        if (!report.written) {
            result.skip(file, report.error);
            return;
        }
        result.addWritten(target);
        setOutputFileDates(target, dates.created, dates.modified, context, result);
        context.reveal.reveal(target);
    });
}

}  // namespace pelorin

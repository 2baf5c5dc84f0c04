#include "video/MovieRemoval.h"

#include "video/MovieBatch.h"
#include "video/MovieDateWrite.h"

#include "isobmff/ItemKeys.h"
#include "model/FileDates.h"
#include "model/OutputDates.h"
#include "model/SafeOutput.h"
#include "video/MovieReader.h"
#include "video/MovieRemux.h"

#include <QFileInfo>

namespace pelorin {

namespace {

QStringList keyTexts(ItemKeySpace space, std::initializer_list<const char*> keys)
{
    QStringList out;
    for (const char* key : keys)
        out.append(itemKeyText(space, key));
    return out;
}

// Items that say how and with what the movie was made rather than what it shows.
bool isTechnical(const MediaMetadataItem& item)
{
    static const QStringList kKeptAtoms =
        keyTexts(ItemKeySpace::UserData, {userDataAtom::encoder, userDataAtom::software, userDataAtom::format,
                                          userDataAtom::encodedBy, userDataAtom::make, userDataAtom::model,
                                          userDataAtom::hostComputer, userDataAtom::requirements})
        + keyTexts(ItemKeySpace::ITunes, {itunesAtom::encoder, itunesAtom::freeform, itunesAtom::mediaKind,
                                          itunesAtom::highDefinition, itunesAtom::gapless});
    static const QStringList kKeptKeys = keyTexts(
        ItemKeySpace::QuickTimeKeys,
        {appleKey::make, appleKey::model, appleKey::software, androidKey::version, ffmpegKey::encoder,
         androidKey::captureFrameRate, appleKey::pixelDensity, appleKey::contentIdentifier, appleKey::videoOrientation,
         appleKey::preferredAffineTransform});
    static const QStringList kKeptKeyPrefixes =
        keyTexts(ItemKeySpace::QuickTimeKeys, {appleKey::cameraPrefix, appleKey::livePhotoPrefix,
                                               appleKey::fullFrameRatePrefix, appleKey::stillImageTimePrefix});
    const std::optional<ItemKeySpace> space = keySpaceNamed(item.keySpace);
    if (space == ItemKeySpace::ITunes || space == ItemKeySpace::UserData)
        return kKeptAtoms.contains(item.key);
    if (space == ItemKeySpace::QuickTimeKeys) {
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
    removals.append(ItemChange::remove(itemIdentifier(ItemKeySpace::UserData, userDataAtom::xmp)));
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

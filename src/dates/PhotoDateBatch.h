#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"
#include "photo/PhotoRewrite.h"

#include <QDateTime>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <vector>
#include <optional>

namespace pelorin {

// One photo of a date command: where it is read from and where its output goes. Camera photos
// (their downloaded copies) and records with a working copy are rewritten in place.
struct DatePhoto {
    const IKImageItem* item = nullptr;
    QString input;
    QString output;
    bool inPlace = false;
};

// The work for one photo; it records what it wrote, skipped or noted in its own result.
using DatePhotoWork = std::function<void(const DatePhoto&, CommandResult&)>;

// The parallel frame of the photo commands: runs work(index, photo) for every selected photo on
// the worker pool, reporting progress, then flushes the outputs once. Answers, per photo in list
// order, whether its work ran (a cancelled batch leaves the rest unstarted).
std::vector<char> forEachPhotoInParallel(const PhotoSelection& selection, const CommandContext& context,
                                         const std::function<void(int index, const DatePhoto& photo)>& work);
// Why a photo rewritten in place cannot be worked on (its camera download or working copy is
// missing); empty when it can.
QString inPlaceCopyMissing(const DatePhoto& photo, PhotoSource source);

// Runs the work for every selected photo (in parallel, outputs flushed once at the end) and
// gathers the results in list order. Computer photos are revealed one by one as before; for
// camera photos the storage folder is opened once. An empty selection gives the "No Item has
// been selected" alert.
CommandResult runDateBatch(const PhotoSelection& selection, const CommandContext& context,
                           const DatePhotoWork& work);

// The new date texts for a photo's date fields; a field without a value is left as it is.
struct PhotoDateValues {
    std::optional<QString> original;   // {Exif}/DateTimeOriginal
    std::optional<QString> digitized;  // {Exif}/DateTimeDigitized
    std::optional<QString> modified;   // {TIFF}/DateTime
    bool createTiffGroup = false;      // set DateTime even when the photo has no TIFF group
};

// The group changes that give a photo the new dates; the rest of each group is kept.
PhotoChanges dateChanges(const QVariantMap& properties, const PhotoDateValues& values);

// Writes the photo with the changes to its output. True when the output holds it (or, in a dry
// run, would); false after recording why it was skipped.
bool writePhotoChanges(const DatePhoto& photo, const PhotoChanges& changes,
                       const CommandContext& context, CommandResult& result);

// An unchanged copy of the photo at its output (nothing to copy for a camera photo's own file).
bool copyPhotoUnchanged(const DatePhoto& photo, const CommandContext& context, CommandResult& result);

// The photo's properties, or nothing after recording why it was skipped.
std::optional<QVariantMap> readDatePhoto(const DatePhoto& photo, CommandResult& result);

}  // namespace pelorin

#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"
#include "model/PhotoSelection.h"

#include <QStringList>

namespace pelorin {

// Makes the storage folder of the context (nothing in a dry run). When it cannot be made, every
// item is skipped with the reason and the answer is false.
bool prepareStorageFolder(const QStringList& items, const CommandContext& context, CommandResult& result);

// The start every photo command shares: an empty selection raises the "No Item has been
// selected" alert, and a storage folder that cannot be made skips every photo with the reason
// (a dry run makes no folder). False when there is nothing to do.
bool startPhotoBatch(const PhotoSelection& selection, const CommandContext& context, CommandResult& result);

// Where a selected photo is read from: its working copy when it has one, else its own file; for
// a camera photo the copy that was downloaded into the storage folder under its name.
QString photoInputPath(const IKImageItem& item, PhotoSource source, const QString& storageFolder);

// Where a photo edit's output goes: a record's working copy is replaced; otherwise the storage
// folder under the photo's name (with the prefix, if any).
QString photoEditOutputPath(const IKImageItem& item, PhotoSource source, const QString& storageFolder,
                            const QString& prefix = {});

// Why a photo edited in place cannot be read: its camera download or its working copy is gone.
// Empty when the input is there.
QString inPlaceInputMissing(const QString& input, PhotoSource source);

}  // namespace pelorin

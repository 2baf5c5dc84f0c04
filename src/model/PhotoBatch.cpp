#include "model/PhotoBatch.h"

#include "model/SafeOutput.h"

namespace pelorin {

bool startPhotoBatch(const PhotoSelection& selection, const CommandContext& context, CommandResult& result)
{
    if (selection.items.isEmpty()) {
        result.alert = Alerts::noSelection();
        return false;
    }
    QString error;
    if (!context.dryRun && !ensureFolder(context.storageFolder, &error)) {
        for (const IKImageItem& item : selection.items)
            result.skip(item.filePath, error);
        return false;
    }
    return true;
}

QString photoInputPath(const IKImageItem& item, PhotoSource source, const QString& storageFolder)
{
    return source == PhotoSource::Camera ? storageOutputPath(storageFolder, item.fileName) : item.filePath;
}

}  // namespace pelorin

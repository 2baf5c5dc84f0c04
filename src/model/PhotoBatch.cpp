#include "model/PhotoBatch.h"

#include "model/SafeOutput.h"

namespace pelorin {

bool prepareStorageFolder(const QStringList& items, const CommandContext& context, CommandResult& result)
{
    QString error;
    if (context.dryRun || ensureFolder(context.storageFolder, &error))
        return true;
    for (const QString& item : items)
        result.skip(item, error);
    return false;
}

bool startPhotoBatch(const PhotoSelection& selection, const CommandContext& context, CommandResult& result)
{
    if (selection.items.isEmpty()) {
        result.alert = Alerts::noSelection();
        return false;
    }
    QStringList paths;
    for (const IKImageItem& item : selection.items)
        paths.append(item.filePath);
    return prepareStorageFolder(paths, context, result);
}

QString photoInputPath(const IKImageItem& item, PhotoSource source, const QString& storageFolder)
{
    return source == PhotoSource::Camera ? storageOutputPath(storageFolder, item.fileName) : item.filePath;
}

}  // namespace pelorin

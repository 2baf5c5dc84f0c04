#include "model/PhotoBatch.h"

#include "model/SafeOutput.h"

#include <QFileInfo>

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
    if (source == PhotoSource::Camera)
        return storageOutputPath(storageFolder, item.fileName);
    return item.workingCopyPath.isEmpty() ? item.filePath : item.workingCopyPath;
}

QString photoEditOutputPath(const IKImageItem& item, PhotoSource source, const QString& storageFolder,
                            const QString& prefix)
{
    if (source == PhotoSource::Computer && !item.workingCopyPath.isEmpty())
        return item.workingCopyPath;
    return storageOutputPath(storageFolder, item.fileName, prefix);
}

QString inPlaceInputMissing(const QString& input, PhotoSource source)
{
    if (QFileInfo::exists(input))
        return {};
    // Falling back to the original would silently undo the earlier edits.
    return source == PhotoSource::Camera
               ? QStringLiteral("the camera photo has not been downloaded to the storage folder")
               : QStringLiteral("its edited copy is no longer in the storage folder (Revert to Original starts "
                                "again from the original)");
}

}  // namespace pelorin

#include "camera/CameraCommands.h"

#include "camera/CameraPaths.h"
#include "model/OutputDates.h"
#include "model/PhotoBatch.h"
#include "model/SafeOutput.h"

#include <QFileInfo>

namespace pelorin {

CommandResult downloadCameraFiles(CameraSession& session, const QList<CameraFileRef>& files,
                                  const CommandContext& context)
{
    CommandResult result;
    if (files.isEmpty()) {
        result.alert = Alerts::noSelection();
        return result;
    }
    QStringList labels;
    for (const CameraFileRef& file : files)
        labels.append(cameraFilePath(file));
    if (!prepareStorageFolder(labels, context, result))
        return result;
    const int total = static_cast<int>(files.size());
    for (int i = 0; i < total; ++i) {
        if (context.isCancelled())
            break;
        const CameraFileRef& file = files[i];
        const QString label = cameraFilePath(file);
        QString error;
        const std::optional<CameraFileInfo> info = session.fileInfo(file, &error);
        if (!info) {
            result.skip(label, error);
        } else {
            const QString target = context.claimOutput(storageOutputPath(context.storageFolder, file.name));
            if (context.dryRun) {
                result.plan(target, QStringLiteral("file"),
                            QFileInfo::exists(target) ? QStringLiteral("existing file") : QString(),
                            QStringLiteral("copy of %1 from %2").arg(label, session.device().name));
                setOutputFileDates(target, {}, info->modified, context, result);
            } else if (session.download(file, target, &error, context.cancelled, Durability::Deferred)) {
                setOutputFileDates(target, {}, info->modified, context, result);
                result.addWritten(target);
                context.reveal.reveal(target);
            } else if (context.isCancelled()) {
                break;  // the user stopped it; this file was not finished, so it is not there
            } else {
                result.skip(label, error);
            }
        }
        context.report(i + 1, total);
    }
    // One flush for the whole batch instead of one per file.
    if (!context.dryRun && !result.written.isEmpty())
        flushFileSystem(context.storageFolder);
    return result;
}

CommandResult deleteCameraFiles(CameraSession& session, const QList<CameraFileRef>& files,
                                const CommandContext& context, QList<CameraFileRef>* deleted)
{
    CommandResult result;
    if (files.isEmpty()) {
        result.alert = Alerts::noSelection();
        return result;
    }
    const int total = static_cast<int>(files.size());
    for (int i = 0; i < total; ++i) {
        if (context.isCancelled())
            break;
        const CameraFileRef& file = files[i];
        const QString label = cameraFilePath(file);
        QString error;
        if (context.dryRun) {
            if (session.fileInfo(file, &error))
                result.plan(label, QStringLiteral("file on %1").arg(session.device().name),
                            QStringLiteral("present"), {});
            else
                result.skip(label, error);
        } else if (session.remove(file, &error)) {
            if (deleted)
                deleted->append(file);
        } else {
            result.skip(label, error);
        }
        context.report(i + 1, total);
    }
    return result;
}

}  // namespace pelorin

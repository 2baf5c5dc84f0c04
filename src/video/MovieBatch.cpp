#include "video/MovieBatch.h"

#include "model/PhotoBatch.h"
#include "model/SafeOutput.h"

#include <QFileInfo>

namespace pelorin {

CommandResult forEachMovie(const QStringList& files, const CommandContext& context, const MovieWork& work)
{
    CommandResult result;
    if (!prepareStorageFolder(files, context, result))
        return result;
    int done = 0;
    for (const QString& file : files) {
        if (context.isCancelled())
            break;
        work(file, context.claimOutput(storageOutputPath(context.storageFolder, QFileInfo(file).fileName()), file),
             result);
        context.report(++done, int(files.size()));
    }
    if (!result.written.isEmpty())
        flushFileSystem(context.storageFolder);
    return result;
}

}  // namespace pelorin

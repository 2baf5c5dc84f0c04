#include "media/ImportRecords.h"

#include "photo/PhotoArtist.h"

#include "audio/AudioRecord.h"
#include "model/DisplayTexts.h"
#include "model/FileKinds.h"
#include "video/MovieReader.h"

#include <QDir>
#include <QFileInfo>

namespace pelorin {

namespace {

void expandFolder(const QString& folder, ImportScope scope, const std::atomic_bool* cancelled, QStringList& out,
                  int depth)
{
    // A link cycle must not send the scan round for ever.
    if (depth > 64)
        return;
    const QDir dir(folder);
    const QFileInfoList entries =
        dir.entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Readable, QDir::Name);
    for (const QFileInfo& entry : entries) {
        if (cancelled && cancelled->load())
            return;
        if (entry.isDir())
            expandFolder(entry.filePath(), scope, cancelled, out, depth + 1);
        else if (importTakes(scope, entry.filePath()))
            out.append(entry.filePath());
    }
}

}  // namespace

bool importTakes(ImportScope scope, const QString& path)
{
    const QString extension = pathExtension(path);
    if (isImageExtension(extension) || isVideoExtension(extension))
        return true;
    return scope == ImportScope::AllMedia && isAudioExtension(extension);
}

QStringList expandImportPaths(const QStringList& paths, ImportScope scope, const std::atomic_bool* cancelled)
{
    QStringList files;
    for (const QString& path : paths) {
        if (cancelled && cancelled->load())
            break;
        const QFileInfo info(path);
        if (info.isDir())
            expandFolder(info.absoluteFilePath(), scope, cancelled, files, 0);
        else if (importTakes(scope, path))
            files.append(info.absoluteFilePath());
    }
    return files;
}

std::optional<IKImageItem> readImportRecord(const QString& path)
{
    const QString extension = pathExtension(path);
    if (isImageExtension(extension)) {
        IKImageItem record;
        record.fileType = QStringLiteral("Image");
        record.filePath = path;
        record.fileName = QFileInfo(path).fileName();
        const qint64 size = QFileInfo(path).size();
        if (size > 0)
            record.fileSize = sizeText(std::uint64_t(size));
        record.fileArist = readPhotoArtist(path);
        return record;
    }
    if (isAudioExtension(extension))
        return readAudioRecord(path);
    if (isVideoExtension(extension))
        return readMovieFile(path).item;
    return std::nullopt;
}

}  // namespace pelorin

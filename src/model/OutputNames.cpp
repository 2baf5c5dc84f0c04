#include "model/OutputNames.h"

#include <QDir>
#include <QFileInfo>

namespace pelorin {
namespace {

QString normalized(const QString& path)
{
    return path.isEmpty() ? QString() : QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

}  // namespace

QString numberedFileName(const QString& fileName, int n)
{
    const qsizetype dot = fileName.lastIndexOf(QLatin1Char('.'));
    if (dot <= 0)
        return QStringLiteral("%1-%2").arg(fileName).arg(n);
    return QStringLiteral("%1-%2%3").arg(fileName.left(dot)).arg(n).arg(fileName.mid(dot));
}

QString OutputNames::claim(const QString& wanted, const QString& madeFrom)
{
    const QString path = normalized(wanted);
    QMutexLocker lock(&mutex_);
    if (!given_.contains(path) || path == normalized(madeFrom)) {
        given_.insert(path);
        return wanted;
    }
    // The renamed path keeps the folder as the caller spelled it, so reports stay alike.
    const QFileInfo info(wanted);
    for (int n = 2;; ++n) {
        const QString candidate = info.path() + QLatin1Char('/') + numberedFileName(info.fileName(), n);
        const QString key = normalized(candidate);
        if (!given_.contains(key) && !QFileInfo::exists(candidate)) {
            given_.insert(key);
            return candidate;
        }
    }
}

}  // namespace pelorin

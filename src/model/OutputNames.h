#pragma once

#include <QMutex>
#include <QSet>
#include <QString>

namespace pelorin {

// The paths one command has given its outputs. Within a command no output may replace another:
// a later output asking for a path already given gets the first free "name-2.ext",
// "name-3.ext", ... that neither this command gave nor exists on disk. Outputs of earlier
// commands are not remembered, so a new command may replace them as before. Safe to call from
// the worker threads of one batch.
class OutputNames {
public:
    // The path the output made from madeFrom should take instead of wanted. An output that
    // replaces its own input (a camera copy this command downloaded and now rewrites) keeps
    // its path.
    QString claim(const QString& wanted, const QString& madeFrom = {});

private:
    QMutex mutex_;
    QSet<QString> given_;
};

// "photo.jpg" with n = 2 gives "photo-2.jpg"; a name without an extension gets "-2" at its end.
QString numberedFileName(const QString& fileName, int n);

}  // namespace pelorin

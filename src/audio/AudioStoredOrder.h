#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace pelorin {

// The order in which a file stores its tag fields, where TagLib hands them over sorted by name:
// the atom types of an MP4 file's iTunes list ("\xA9nam", "trkn", "----", ...) and the chunk ids
// of a RIFF file's INFO list ("INAM", "IART", ...). Empty when the file has none or is damaged.
QList<QByteArray> storedIlstOrder(const QString& path);
QList<QByteArray> storedRiffInfoOrder(const QString& path);

}  // namespace pelorin

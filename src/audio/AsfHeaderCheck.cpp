#include "audio/AsfHeaderCheck.h"

#include <QFile>
#include <QtEndian>

namespace pelorin {
namespace {

constexpr qint64 kObjectHeader = 24;  // GUID, 64-bit size
constexpr qint64 kHeaderObject = 30;  // the same, the object count and two reserved bytes
// An ASF header holds tags and stream descriptions; more than this is not a header.
constexpr qint64 kMaxHeader = qint64(64) << 20;

}  // namespace

QString asfHeaderProblem(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    const QByteArray start = file.read(kHeaderObject);
    if (start.size() < kHeaderObject)
        return QStringLiteral("the file is shorter than an ASF header");
    const qint64 headerSize = qint64(qFromLittleEndian<quint64>(start.constData() + 16));
    const quint32 count = qFromLittleEndian<quint32>(start.constData() + 24);
    if (headerSize < kHeaderObject || headerSize > file.size() || headerSize > kMaxHeader)
        return QStringLiteral("the header object's size %1 does not fit the file").arg(headerSize);
    file.seek(0);
    const QByteArray header = file.read(headerSize);
    qint64 offset = kHeaderObject;
    for (quint32 n = 0; n < count; ++n) {
        if (offset + kObjectHeader > headerSize)
            return QStringLiteral("the header names %1 objects but holds %2").arg(count).arg(n);
        const qint64 size = qint64(qFromLittleEndian<quint64>(header.constData() + offset + 16));
        if (size < kObjectHeader || size > headerSize - offset)
            return QStringLiteral("the header object at offset %1 has an invalid size (%2)").arg(offset).arg(size);
        offset += size;
    }
    if (offset != headerSize)
        return QStringLiteral("the header's %1 objects end at offset %2, not at its end (%3)")
            .arg(count).arg(offset).arg(headerSize);
    return {};
}

}  // namespace pelorin

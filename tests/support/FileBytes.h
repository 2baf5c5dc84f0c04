#pragma once
// Bytes of files the tests compare: a whole file, a JPEG's scan data.
#include <QByteArray>
#include <QFile>
#include <QString>

namespace pelorin::test {

// The whole file, or empty when it cannot be read.
inline QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Writes the whole file; false when it cannot be written.
inline bool writeAll(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// The entropy-coded picture of a JPEG: from the first start-of-scan marker to the end.
inline QByteArray scanData(const QByteArray& jpeg)
{
    const qsizetype sos = jpeg.indexOf(QByteArray("\xFF\xDA", 2));
    return sos < 0 ? QByteArray() : jpeg.mid(sos);
}

}  // namespace pelorin::test

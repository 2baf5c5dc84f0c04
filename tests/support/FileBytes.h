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

// Bytes this process has read through system calls so far (rchar of /proc/self/io), for tests
// of how much of a file a reader touches; -1 when it cannot be told.
inline qint64 bytesReadByThisProcess()
{
    QFile io(QStringLiteral("/proc/self/io"));
    if (!io.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : io.readAll().split('\n')) {
        if (line.startsWith("rchar:"))
            return line.mid(6).trimmed().toLongLong();
    }
    return -1;
}

}  // namespace pelorin::test

#pragma once

#include "isobmff/BoxTree.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QList>
#include <QProcess>
#include <QString>

namespace pelorin::test {

// Samples too large for tests/data, used where the shared sample folder is at hand; empty
// when it is not.
inline QString sharedFixture(const QString& relative)
{
    const QString path = QStringLiteral(PELORIN_TEST_DATA_DIR "/../../../shared/fixtures/") + relative;
    return QFile::exists(path) ? QDir::cleanPath(path) : QString();
}

// The bytes exiftool extracts for a tag (-m: the samples' images are stubs it would refuse):
// the raw image through the tracks' chunk offsets, the previews through their boxes.
inline QByteArray exiftoolExtract(const QString& path, const QString& tag)
{
    QProcess process;
    process.start(QStringLiteral("exiftool"), {QStringLiteral("-b"), QStringLiteral("-m"), QStringLiteral("-") + tag, path});
    process.waitForFinished(60000);
    return process.readAllStandardOutput();
}

// For each row of a CR3 file's Canon table of top-level boxes ('CTBO': count, then index,
// 64-bit offset and size per row): the type and extended type of the box the row names, or
// "-" when it names none.
inline QList<QByteArray> canonTableTargets(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = file.readAll();
    const qsizetype table = bytes.indexOf("CTBO");
    if (table < 4)
        return {};
    MemoryByteSource source(bytes);
    const BoxTree tree = readBoxTree(source);
    QList<QByteArray> targets;
    const std::uint32_t rows = readU32(bytes, table + 4);
    for (std::uint32_t r = 0; r < rows && r < 64; ++r) {
        const auto offset = std::int64_t(readU64(bytes, table + 8 + r * 20 + 4));
        const auto size = std::int64_t(readU64(bytes, table + 8 + r * 20 + 12));
        QByteArray target = "-";
        for (const Box& box : tree.boxes) {
            if (box.offset == offset && box.size == size)
                target = box.type + box.userType.toHex();
        }
        targets << target;
    }
    return targets;
}

}  // namespace pelorin::test

#include "model/FileDates.h"
#include "model/SafeOutput.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin {
namespace {

TEST(FileDates, ModificationDateIsSetAndReadBack)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("photo.jpg"));
    ASSERT_TRUE(writeFileAtomically(path, "x", {}, nullptr));
    for (const QDateTime& when :
         {QDateTime(QDate(2015, 6, 1), QTime(10, 0, 0), Qt::UTC),
          QDateTime(QDate(1960, 2, 29), QTime(23, 59, 59, 500), Qt::UTC),
          QDateTime(QDate(2100, 1, 1), QTime(0, 0, 0), Qt::UTC)}) {
        QString error;
        ASSERT_TRUE(setFileModificationDate(path, when, &error)) << error.toStdString();
        EXPECT_EQ(readFileDates(path).modified, when);
    }
    EXPECT_FALSE(setFileModificationDate(path, QDateTime()));
    EXPECT_FALSE(setFileModificationDate(dir.filePath(QStringLiteral("missing")), QDateTime::currentDateTimeUtc()));
    EXPECT_FALSE(readFileDates(dir.filePath(QStringLiteral("missing"))).modified.isValid());
}

TEST(FileDates, CreationDateIsReadWhereKeptAndNotFakedElsewhere)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("photo.jpg"));
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-2);
    ASSERT_TRUE(writeFileAtomically(path, "x", {}, nullptr));
    const FileDateReading reading = readFileDates(path);
    if (reading.created.isValid()) {  // ext4, btrfs, xfs and tmpfs keep a birth time
        EXPECT_GE(reading.created, before);
        EXPECT_LE(reading.created, QDateTime::currentDateTimeUtc().addSecs(2));
    }
    // Only NTFS lets a program set it; on the test machine's file systems the call says no
    // and leaves the birth time as it was.
    if (!setFileCreationDate(path, QDateTime(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC))) {
        EXPECT_EQ(readFileDates(path).created, reading.created);
    }
}

}  // namespace
}  // namespace pelorin

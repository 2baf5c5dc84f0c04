#pragma once

// Scoped sample photos and readers shared by the date command tests.

#include "ExifTool.h"
#include "QtPrinters.h"
#include "TestPaths.h"
#include "TestSelection.h"
#include "model/DateText.h"
#include "model/FileDates.h"
#include "model/LocalTime.h"
#include "model/PhotoSelection.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelorin::test {

// A source folder with copies of sample files and an empty storage folder beside it.
class DatePhotos {
public:
    DatePhotos() { QDir(dir_.path()).mkdir(QStringLiteral("in")); }

    QString add(const QString& sample, const QString& name = {})
    {
        const QString path = dir_.filePath(QStringLiteral("in/") + (name.isEmpty() ? sample : name));
        EXPECT_TRUE(QFile::copy(dataPath(sample), path)) << sample.toStdString();
        QFile(path).setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
        return path;
    }
    QString storage() const { return dir_.filePath(QStringLiteral("out")); }
    QString output(const QString& path) const { return storage() + QLatin1Char('/') + QFileInfo(path).fileName(); }

    static PhotoSelection select(const QStringList& paths, PhotoSource source = PhotoSource::Computer)
    {
        return test::selectionOf(paths, source);
    }

private:
    QTemporaryDir dir_;
};

inline QByteArray fileHash(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return QCryptographicHash::hash(f.readAll(), QCryptographicHash::Sha256);
}

// A tag as exiftool reads it, as text ("ExifIFD:DateTimeOriginal").
inline QString tag(const QString& path, const QString& name)
{
    return exiftool(path).value(name).toVariant().toString();
}

inline WallClock clockOf(const QString& text)
{
    const auto clock = parseDateText(text);
    EXPECT_TRUE(clock) << text.toStdString();
    return clock.value_or(*WallClock::fromParts(1, 1, 1, 0, 0, 0));
}

// The file's modification date on the local clock.
inline WallClock localModified(const QString& path)
{
    const auto clock = wallClockFromInstant(readFileDates(path).modified);
    EXPECT_TRUE(clock) << path.toStdString();
    return clock.value_or(*WallClock::fromParts(1, 1, 1, 0, 0, 0));
}

inline void setLocalModified(const QString& path, const QString& text)
{
    ASSERT_TRUE(setFileModificationDate(path, instantFromWallClock(clockOf(text))));
}

}  // namespace pelorin::test

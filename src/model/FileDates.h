#pragma once

#include <QDateTime>
#include <QString>

namespace pelorin {

struct FileDateReading {
    QDateTime created;   // birth time; invalid when the file system keeps none
    QDateTime modified;  // invalid only when the file cannot be read
};

// Reads the creation (birth) and modification dates of a file, in UTC.
FileDateReading readFileDates(const QString& path);

// Sets the modification date (the access date is kept). False with the reason on failure.
bool setFileModificationDate(const QString& path, const QDateTime& when, QString* error = nullptr);

// Sets the creation date where the file system allows it (NTFS through ntfs-3g); false where it
// does not, which callers note once in their result.
bool setFileCreationDate(const QString& path, const QDateTime& when);

// The note a command result carries when creation dates could not be set.
QString creationDateNotSetNote();

}  // namespace pelorin

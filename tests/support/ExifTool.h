#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>

namespace pelorin::test {

// What exiftool, an independent reader, finds in a file: one object with "Group:Tag" keys
// (-G1), duplicates kept (-a), numbers as numbers (-n). Empty when exiftool fails.
inline QJsonObject exiftool(const QString& path, const QStringList& extra = {})
{
    QProcess process;
    process.start(QStringLiteral("exiftool"),
                  QStringList{QStringLiteral("-j"), QStringLiteral("-G1"), QStringLiteral("-a"),
                              QStringLiteral("-n"), QStringLiteral("-struct")}
                      + extra + QStringList{path});
    if (!process.waitForFinished(60000))
        return {};
    return QJsonDocument::fromJson(process.readAllStandardOutput()).array().at(0).toObject();
}

// The tags of the groups whose names start with one of the prefixes ("GPS", "XMP-exif").
inline QJsonObject tagsOf(const QJsonObject& all, const QStringList& groupPrefixes)
{
    QJsonObject out;
    for (auto it = all.begin(); it != all.end(); ++it) {
        for (const QString& prefix : groupPrefixes) {
            if (it.key().startsWith(prefix))
                out.insert(it.key(), it.value());
        }
    }
    return out;
}

// Runs exiftool to prepare a test file (for example to add XMP the fixture lacks).
inline bool exiftoolWrite(const QString& path, const QStringList& assignments)
{
    return QProcess::execute(QStringLiteral("exiftool"),
                             QStringList{QStringLiteral("-q"), QStringLiteral("-overwrite_original")}
                                 + assignments + QStringList{path})
           == 0;
}

// What exiftool -validate finds wrong with a file, one warning a line.
inline QStringList validationWarnings(const QString& path)
{
    QProcess process;
    process.start(QStringLiteral("exiftool"), QStringList{QStringLiteral("-validate"), QStringLiteral("-warning"),
                                                          QStringLiteral("-a"), QStringLiteral("-s3"), path});
    if (!process.waitForFinished(60000))
        return {QStringLiteral("exiftool did not finish")};
    QStringList lines = QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    if (!lines.isEmpty())
        lines.removeFirst();  // the sum of them: "OK", "3 Warnings (1 minor)"
    return lines;
}

// The -validate warnings of an output that its source did not have.
inline QStringList newValidationWarnings(const QString& source, const QString& output)
{
    QStringList added = validationWarnings(output);
    for (const QString& old : validationWarnings(source))
        added.removeOne(old);
    return added;
}

}  // namespace pelorin::test

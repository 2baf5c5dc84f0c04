#pragma once

#include "EncodedPicture.h"
#include "TestPaths.h"
#include "audio/AudioTagChanges.h"
#include "model/CommandContext.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace pelorin::test {

inline QByteArray fileHash(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

inline QString runTool(const QString& program, const QStringList& args)
{
    QProcess process;
    process.start(program, args);
    if (!process.waitForFinished(60000))
        return QStringLiteral("<timeout>");
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

// FFmpeg's hash of the audio packets, copied without decoding: equal hashes mean the audio
// bytes were not touched.
inline QString audioStreamHash(const QString& path)
{
    return runTool(QStringLiteral("ffmpeg"),
                   {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), path,
                    QStringLiteral("-map"), QStringLiteral("0:a"), QStringLiteral("-c"),
                    QStringLiteral("copy"), QStringLiteral("-f"), QStringLiteral("streamhash"),
                    QStringLiteral("-")});
}

// Runs a Python snippet with mutagen, the independent tag reader; sys.argv[1] is the file.
inline QString mutagen(const QString& script, const QString& path)
{
    return runTool(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-c"), script, path});
}

// A small PNG picture, as artwork to write.
inline QByteArray smallPng() { return plainPicture(8, 6, Qt::red, "PNG"); }

// Saves one song with the given field texts and, when given, the picture bytes as its front
// cover (written to a file beside the storage folder first, as the user would pick one).
inline CommandResult saveSongTags(const QString& source, const QMap<AudioField, QString>& fields,
                                  const CommandContext& context, const QByteArray& artwork = {},
                                  std::optional<QString> createdDate = std::nullopt)
{
    AudioTagChanges changes;
    changes.fields = fields;
    changes.createdDate = std::move(createdDate);
    if (!artwork.isEmpty()) {
        changes.artworkPath = context.storageFolder + QStringLiteral("-artwork");
        QFile file(changes.artworkPath);
        if (!file.open(QIODevice::WriteOnly) || file.write(artwork) != artwork.size()) {
            CommandResult failed;
            failed.skip(source, QStringLiteral("cannot write the test picture"));
            return failed;
        }
    }
    return saveAudioTags({source}, changes, context);
}

// A test with its own storage folder, where each output takes its source's name.
class AudioStorageTest : public ::testing::Test {
protected:
    QTemporaryDir dir;
    QString storage() const { return dir.filePath(QStringLiteral("out")); }
    QString output(const QString& source) const { return storage() + QLatin1Char('/') + QFileInfo(source).fileName(); }
    CommandContext context() const
    {
        CommandContext c;
        c.storageFolder = storage();
        return c;
    }
};

}  // namespace pelorin::test

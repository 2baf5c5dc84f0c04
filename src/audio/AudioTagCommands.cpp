#include "audio/AudioTagChanges.h"

#include "audio/AudioItems.h"
#include "audio/AudioReadBack.h"
#include "audio/AudioRecord.h"
#include "audio/AudioTagWriter.h"
#include "model/DateText.h"
#include "model/FileDates.h"
#include "model/LocalTime.h"
#include "model/OutputDates.h"
#include "model/SafeOutput.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>

namespace pelorin {
namespace {

// One song's edit: its reading decides which fields really change and which writer runs.
struct SongEdit {
    AudioTagEdit edit;
    std::optional<QString> createdDate;
};

// The changes whose text differs from what the song stores now.
QList<AudioFieldChange> realChanges(const AudioTagChanges& changes, const AudioReading& reading, const QString& path)
{
    IKImageItem stored;
    applyAudioItems(reading.items, audioReaderRoute(QFileInfo(path).suffix()), stored, RecordPicture::Skipped);
    QList<AudioFieldChange> real;
    for (auto it = changes.fields.begin(); it != changes.fields.end(); ++it) {
        const QString before = stored.*audioFieldRow(it.key()).member;
        if (before != it.value())
            real.append({it.key(), before, it.value()});
    }
    return real;
}

void planSong(const QString& source, const AudioTagEdit& edit, CommandResult& result)
{
    for (const AudioFieldChange& c : edit.changes)
        result.plan(source, audioFieldName(c.field), c.before, c.after);
    if (!edit.artwork.isEmpty())
        result.plan(source, QStringLiteral("artwork"), {}, artworkMimeType(edit.artwork));
    if (edit.removeAll)
        result.plan(source, QStringLiteral("all tags and pictures"), QStringLiteral("present"), {});
}

// Checks, plan, write and dates of one song.
CommandResult runSong(const QString& source, const AudioReading& reading, const SongEdit& song,
                      const CommandContext& context, Durability durability)
{
    CommandResult result;
    if (reading.container == AudioContainer::Unknown) {
        result.skip(source, reading.problem);
        return result;
    }
    if (const QString refusal = audioArtworkRefusal(reading.container); !refusal.isEmpty() && !song.edit.artwork.isEmpty()) {
        result.skip(source, refusal + QStringLiteral("; nothing was written"));
        return result;
    }
    const QString target = context.claimOutput(storageOutputPath(context.storageFolder, QFileInfo(source).fileName()), source);
    // The copy takes the given created date when it is a date, else the source's own dates.
    const FileDateReading dates = readFileDates(source);
    QDateTime created = dates.created;
    QDateTime modified = dates.modified;
    if (const auto clock = song.createdDate ? parseDateText(*song.createdDate) : std::nullopt)
        created = modified = instantFromWallClock(*clock);
    if (context.dryRun) {
        planSong(source, song.edit, result);
        setOutputFileDates(target, created, modified, context, result);
        return result;
    }
    QString problem;
    bool written = ensureFolder(context.storageFolder, &problem);
    try {
        const std::unique_ptr<AudioTagWriter> writer = audioTagWriterFor(reading.container, reading.mp4QuickTimeKeys);
        const OutputCheck check = [&](const QString& pending) { return audioReadBackProblem(pending, source, reading); };
        written = written && writer->write(source, target, song.edit, check, durability, &problem);
    } catch (const std::exception& e) {
        written = false;
        problem = QString::fromLocal8Bit(e.what());
    }
    if (!written) {
        result.skip(source, problem);
        return result;
    }
    setOutputFileDates(target, created, modified, context, result);
    result.addWritten(target);
    context.reveal.reveal(target);
    return result;
}

// Runs one song after another, each written without a flush of its own, and flushes the storage
// folder once after the last (also when cancelled).
template <typename RunOne>
CommandResult runBatch(const QStringList& files, const CommandContext& context, RunOne runOne)
{
    CommandResult result;
    int done = 0;
    for (const QString& file : files) {
        if (context.isCancelled())
            break;
        result.merge(runOne(file));
        context.report(++done, int(files.size()));
    }
    if (!context.dryRun && done > 0)
        flushFileSystem(context.storageFolder);
    return result;
}

// The artwork file's bytes, or why no song can take them.
QString readArtwork(const QString& path, QByteArray* bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot read the artwork %1: %2").arg(path, file.errorString());
    *bytes = file.readAll();
    if (QImage::fromData(*bytes).isNull())
        return QStringLiteral("the artwork is not a picture");
    return {};
}

}  // namespace

QString trackTextKeepingTotal(const QString& stored, const QString& typed)
{
    const QString number = typed.trimmed();
    if (number.isEmpty() || number.contains(QLatin1Char('/')))
        return number;
    const QString total = stored.section(QLatin1Char('/'), 1, 1).trimmed();
    return total.isEmpty() ? number : number + QLatin1Char('/') + total;
}

CommandResult saveAudioTags(const QStringList& files, const AudioTagChanges& changes, const CommandContext& context)
{
    QByteArray artwork;
    if (!changes.artworkPath.isEmpty()) {
        if (const QString problem = readArtwork(changes.artworkPath, &artwork); !problem.isEmpty()) {
            CommandResult result;
            for (const QString& file : files)
                result.skip(file, problem);
            return result;
        }
    }
    return runBatch(files, context, [&](const QString& file) {
        const AudioReading reading = readAudioItems(file);
        SongEdit song;
        song.edit.changes = realChanges(changes, reading, file);
        song.edit.artwork = artwork;
        song.edit.id3Version = reading.id3Version;
        song.createdDate = changes.createdDate;
        return runSong(file, reading, song, context, Durability::Deferred);
    });
}

CommandResult removeAudioTags(const QStringList& files, const CommandContext& context)
{
    return runBatch(files, context, [&](const QString& file) {
        const AudioReading reading = readAudioItems(file);
        SongEdit song;
        song.edit.removeAll = true;
        song.edit.id3Version = reading.id3Version;
        return runSong(file, reading, song, context, Durability::Deferred);
    });
}

}  // namespace pelorin

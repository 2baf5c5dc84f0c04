#include "video/MovieReader.h"

#include "isobmff/BoxTree.h"
#include "model/DisplayTexts.h"
#include "model/FileDates.h"
#include "video/MovieItems.h"
#include "video/MovieProbe.h"
#include "video/MovieRecordFill.h"

#include <QFileInfo>
#include <QLocale>

namespace pelorin {

namespace {

QString creationText(const QDateTime& date)
{
    const QLocale english(QLocale::English, QLocale::UnitedStates);
    const QString text = english.toString(date.toLocalTime(), QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    return text.isEmpty() ? english.toString(date.toLocalTime(), QStringLiteral("yyyy-MM-dd HH:mm:ss")) : text;
}

}  // namespace

void applyIndexAttributes(IKImageItem& item, const QVariantMap& attributes)
{
    const auto has = [&](const char* key) { return attributes.contains(QLatin1String(key)); };
    const auto value = [&](const char* key) { return attributes.value(QLatin1String(key)); };
    if (has("kMDItemDurationSeconds")) {
        item.fileduration = value("kMDItemDurationSeconds").toDouble();
        item.fileduratStr = mediaDurationText(item.fileduration);
    }
    if (has("kMDItemKind"))
        item.fileType = value("kMDItemKind").toString();
    if (has("kMDItemAudioBitRate"))
        item.fileBitRate = QStringLiteral("%1 bps").arg(value("kMDItemAudioBitRate").toString());
    if (has("kMDItemAudioSampleRate"))
        item.fileSampleRate = QStringLiteral("%1 Hz").arg(value("kMDItemAudioSampleRate").toString());
    if (has("kMDItemAudioChannelCount"))
        item.fileChannels = value("kMDItemAudioChannelCount").toString();
    if (has("kMDItemPixelHeight"))
        item.filepixHeigh = value("kMDItemPixelHeight").toInt();
    if (has("kMDItemPixelWidth"))
        item.filePixWidth = value("kMDItemPixelWidth").toInt();
}

MovieReading readMovieFile(const QString& path)
{
    MovieReading reading;
    IKImageItem& item = reading.item;
    item.fileType = QStringLiteral("Movie");
    const QFileInfo info(path);
    item.fileName = info.fileName();
    item.filePath = path;
    if (!info.isFile() || !info.isReadable()) {
        reading.problems.append(QStringLiteral("the file cannot be read"));
        return reading;
    }
    item.fileSize = sizeText(std::uint64_t(info.size()));
    const FileDateReading dates = readFileDates(path);
    if (dates.created.isValid()) {
        item.fileCreateDate = dates.created;
        item.fileCreateDateStr = creationText(dates.created);
    }

    const MovieProbe probe = probeMovie(path);
    reading.attributes = probe.attributes;
    applyIndexAttributes(item, probe.attributes);
    if (!probe.opened)
        reading.problems.append(probe.error);

    FileByteSource source(path);
    QString error;
    if (!source.open(&error)) {
        reading.problems.append(error);
        return reading;
    }
    const BoxTree tree = readBoxTree(source);
    const bool isoMedia = tree.top("ftyp") || tree.top("moov");
    if (isoMedia) {
        for (const QString& problem : tree.problems)
            reading.problems.append(problem);
        if (tree.top("moov")) {
            item.fileMetaArray = readMovieItems(source, tree, &reading.problems);
            applyMovieItems(item, item.fileMetaArray);
            // The movie header's creation time (UTC) is the date of last resort: tools that
            // write no date item still set it, and other readers show it.
            if (item.shootDateStr.isEmpty()) {
                if (const std::optional<QDateTime> created = movieHeaderCreationTime(source, tree))
                    applyMovieDateText(item, created->toLocalTime().toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")));
            }
            reading.containerRead = true;
        } else {
            reading.problems.append(QStringLiteral("the file has no movie box"));
        }
    } else if (probe.opened) {
        item.fileMetaArray = probe.tags;
        applyContainerTags(item, probe.tags);
        reading.containerRead = true;
    }
    return reading;
}

}  // namespace pelorin

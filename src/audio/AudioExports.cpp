#include "audio/AudioExports.h"

#include "audio/AudioFields.h"
#include "audio/AudioRecord.h"
#include "model/PropertyList.h"
#include "model/ImageReadBack.h"
#include "model/SafeOutput.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QPainter>

namespace pelorin {
namespace {

bool isJpeg(const QByteArray& bytes) { return bytes.startsWith("\xFF\xD8\xFF"); }

QByteArray jpegOf(const QByteArray& picture)
{
    if (isJpeg(picture))
        return picture;
    const QImage image = QImage::fromData(picture);
    if (image.isNull())
        return {};
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    // JPEG has no alpha; flatten onto white rather than black.
    QImage flat(image.size(), QImage::Format_RGB32);
    flat.fill(Qt::white);
    QPainter(&flat).drawImage(0, 0, image);
    flat.save(&buffer, "JPEG", 95);
    return jpeg;
}

}  // namespace

CommandResult exportAudioArtwork(const QStringList& paths, const CommandContext& context)
{
    CommandResult result;
    for (const QString& path : paths) {
        AudioReading reading;
        QString problem;
        readAudioRecord(path, &problem, &reading, RecordPicture::Skipped);
        const QByteArray picture = audioArtworkBytes(reading.items, audioReaderRoute(QFileInfo(path).suffix()));
        if (picture.isEmpty()) {
            result.skip(path, problem.isEmpty() ? QStringLiteral("the file has no artwork") : problem);
            continue;
        }
        const QByteArray jpeg = jpegOf(picture);
        if (jpeg.isEmpty()) {
            result.skip(path, QStringLiteral("the artwork is not a picture this program can decode"));
            continue;
        }
        const QString target = context.claimOutput(
            storageOutputPath(context.storageFolder, QFileInfo(path).fileName() + QStringLiteral(".jpg")), path);
        if (context.dryRun) {
            result.plan(path, QStringLiteral("artwork"), {}, target);
            continue;
        }
        QString error;
        if (!ensureFolder(context.storageFolder, &error)
            || !writeFileAtomically(target, jpeg, path, &error, Durability::FlushEach,
                                    [](const QString& pending) { return encodedImageProblem(pending, "JPEG", {}); })) {
            result.skip(path, error);
            continue;
        }
        result.addWritten(target);
        context.reveal.reveal(target);
    }
    return result;
}

QVariantMap audioMetadataEntries(const IKImageItem& r)
{
    QVariantMap map;
    const auto add = [&](const char* key, const QString& value) {
        if (!value.isEmpty())
            map.insert(QString::fromLatin1(key), value);
    };
    add("Created Date", r.fileCreateDateStr);
    add("Keywords", r.fileKeyWords);
    for (const AudioFieldRow& row : audioFieldRows())
        add(row.exportKey, r.*row.member);
    return map;
}

CommandResult exportAudioMetadata(const QStringList& paths, const CommandContext& context)
{
    CommandResult result;
    QVariantMap all;
    for (const QString& path : paths) {
        QString problem;
        const IKImageItem record = readAudioRecord(path, &problem, nullptr, RecordPicture::Skipped);
        if (!QFileInfo(path).isFile()) {
            result.skip(path, QStringLiteral("no such file"));
            continue;
        }
        const QVariantMap entries = audioMetadataEntries(record);
        if (!entries.isEmpty())
            all.insert(record.fileName, entries);
    }
    const QString target = context.claimOutput(storageOutputPath(context.storageFolder, QStringLiteral("metadata.plist")));
    if (context.dryRun) {
        for (auto it = all.begin(); it != all.end(); ++it)
            result.plan(target, it.key(), {}, QStringList(it.value().toMap().keys()).join(QStringLiteral(", ")));
        return result;
    }
    const PropertyListXml xml = writePropertyListXml(all);
    QString error;
    if (!xml.xml) {
        result.skip(target, xml.error);
    } else if (!ensureFolder(context.storageFolder, &error)
               || !writeFileAtomically(target, *xml.xml, {}, &error, Durability::FlushEach,
                                   [&](const QString& pending) { return propertyListReadBackProblem(pending, *xml.xml); })) {
        result.skip(target, error);
    } else {
        result.addWritten(target);
        context.reveal.reveal(target);
    }
    return result;
}

}  // namespace pelorin

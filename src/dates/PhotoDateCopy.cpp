#include "dates/PhotoDateCopy.h"

#include "dates/PhotoDateBatch.h"
#include "dates/PhotoDateReading.h"
#include "model/FileDates.h"
#include "model/OutputDates.h"

#include <QFileInfo>

namespace pelorin {
namespace {

const QString kNoCreationDate = QStringLiteral("the file system keeps no creation date for this file");

void exifToCreated(const DatePhoto& photo, const CommandContext& context, CommandResult& result)
{
    const auto properties = readDatePhoto(photo, result);
    if (!properties)
        return;
    const PhotoDateTexts texts = photoDateTexts(*properties, photo.input);
    const QDateTime date = fileDateFromText(texts.original);
    if (!date.isValid()) {
        result.skip(photo.input, QStringLiteral("the photo's original date is no date: %1").arg(texts.original));
        return;
    }
    if (!copyPhotoUnchanged(photo, context, result))
        return;
    // A camera photo's downloaded copy keeps its modification date: it is when it was fetched.
    setOutputFileDates(photo.output, date, photo.inPlace ? QDateTime() : date, context, result);
}

void nameToComment(const DatePhoto& photo, const CommandContext& context, CommandResult& result)
{
    const FileDateReading dates = readFileDates(photo.input);
    const auto properties = readDatePhoto(photo, result);
    if (!properties)
        return;
    const QString exifKey = QStringLiteral("{Exif}");
    QVariantMap exif = properties->value(exifKey).toMap();
    exif.insert(QStringLiteral("UserComment"), QFileInfo(photo.item->fileName).completeBaseName());
    PhotoChanges changes;
    changes.groups.insert(exifKey, exif);
    if (writePhotoChanges(photo, changes, context, result))
        setOutputFileDates(photo.output, dates.created, dates.modified, context, result);
}

void createdToCamera(const DatePhoto& photo, const CommandContext& context, CommandResult& result)
{
    const FileDateReading dates = readFileDates(photo.input);
    const auto properties = readDatePhoto(photo, result);
    if (!properties)
        return;
    const QString text = localDateText(creationOrModification(dates));
    if (text.isEmpty()) {
        result.skip(photo.input, QStringLiteral("the file's dates cannot be read"));
        return;
    }
    PhotoDateValues values;
    values.original = text;
    values.digitized = text;
    values.modified = text;
    values.createTiffGroup = true;
    if (writePhotoChanges(photo, dateChanges(*properties, values), context, result))
        setOutputFileDates(photo.output, dates.created, dates.modified, context, result);
}

void createdToModified(const DatePhoto& photo, const CommandContext& context, CommandResult& result)
{
    const FileDateReading dates = readFileDates(photo.input);
    if (!dates.created.isValid()) {
        result.skip(photo.input, dates.modified.isValid() ? kNoCreationDate : QStringLiteral("the file cannot be read"));
        return;
    }
    // The copy keeps the original's creation date, as a copy that preserves dates would.
    if (copyPhotoUnchanged(photo, context, result))
        setOutputFileDates(photo.output, dates.created, dates.created, context, result);
}

void modifiedToCreated(const DatePhoto& photo, const CommandContext& context, CommandResult& result)
{
    const FileDateReading dates = readFileDates(photo.input);
    if (!dates.modified.isValid()) {
        result.skip(photo.input, QStringLiteral("the file cannot be read"));
        return;
    }
    if (copyPhotoUnchanged(photo, context, result))
        setOutputFileDates(photo.output, dates.modified, dates.modified, context, result);
}

}  // namespace

CommandResult copyPhotoDate(DateCopy what, const PhotoSelection& selection, const CommandContext& context)
{
    return runDateBatch(selection, context, [&](const DatePhoto& photo, CommandResult& result) {
        switch (what) {
        case DateCopy::ExifToCreated: return exifToCreated(photo, context, result);
        case DateCopy::NameToComment: return nameToComment(photo, context, result);
        case DateCopy::CreatedToCamera: return createdToCamera(photo, context, result);
        case DateCopy::CreatedToModified: return createdToModified(photo, context, result);
        case DateCopy::ModifiedToCreated: return modifiedToCreated(photo, context, result);
        }
    });
}

}  // namespace pelorin

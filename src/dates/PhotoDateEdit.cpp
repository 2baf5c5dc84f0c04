#include "dates/PhotoDateEdit.h"

#include "dates/PhotoDateBatch.h"
#include "dates/PhotoDateReading.h"
#include "model/DateText.h"
#include "model/OutputDates.h"

namespace pelorin {
namespace {

// The alert when a field is no date; nothing when both are.
std::optional<CommandResult> rejectBadDates(const PhotoSelection& selection, const PhotoDateEdit& edit)
{
    if (selection.items.isEmpty()) {
        CommandResult r;
        r.alert = Alerts::noSelection();
        return r;
    }
    if (!CheckDateFormatWithDateString(edit.original) || !CheckDateFormatWithDateString(edit.digitized)) {
        CommandResult r;
        r.alert = Alerts::invalidDateFormat();
        return r;
    }
    return std::nullopt;
}

QString exifText(const QString& typed)
{
    return renderDateText(*parseDateText(typed), DateTextForm::Exif);
}

}  // namespace

CommandResult savePhotoDates(const PhotoSelection& selection, const PhotoDateEdit& edit,
                             const CommandContext& context)
{
    if (auto rejected = rejectBadDates(selection, edit))
        return *rejected;
    PhotoDateValues values;
    values.original = exifText(edit.original);
    values.digitized = exifText(edit.digitized);
    values.modified = values.original;
    values.createTiffGroup = true;
    const QDateTime fileDate = fileDateFromText(edit.original);
    return runDateBatch(selection, context, [&](const DatePhoto& photo, CommandResult& result) {
        const auto properties = readDatePhoto(photo, result);
        if (properties && writePhotoChanges(photo, dateChanges(*properties, values), context, result))
            setOutputFileDates(photo.output, fileDate, fileDate, context, result);
    });
}

CommandResult savePhotoFileDates(const PhotoSelection& selection, const PhotoDateEdit& edit,
                                 const CommandContext& context)
{
    if (auto rejected = rejectBadDates(selection, edit))
        return *rejected;
    const QDateTime fileDate = fileDateFromText(edit.original);
    return runDateBatch(selection, context, [&](const DatePhoto& photo, CommandResult& result) {
        if (copyPhotoUnchanged(photo, context, result))
            setOutputFileDates(photo.output, fileDate, fileDate, context, result);
    });
}

}  // namespace pelorin

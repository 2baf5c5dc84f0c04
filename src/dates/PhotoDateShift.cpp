#include "dates/PhotoDateShift.h"

#include "dates/PhotoDateBatch.h"
#include "dates/PhotoDateReading.h"
#include "model/DateText.h"
#include "model/FileDates.h"
#include "model/LocalTime.h"
#include "model/OutputDates.h"

#include <variant>

namespace pelorin {
namespace {

const QString kLeavesRange = QStringLiteral("the changed date would leave the years 1 to 9999");

struct ReferenceMode {
    std::int64_t originalDifference = 0;
    std::int64_t digitizedDifference = 0;
};
struct FixedMode {
    WallClock date;
};
struct ShiftMode {
    std::int64_t seconds = 0;
};
using Mode = std::variant<ReferenceMode, FixedMode, ShiftMode>;

struct ModeOrAlert {
    std::optional<Mode> mode;
    CommandResult rejected;  // holds the alert when there is no mode
};

ModeOrAlert reject(const Alert& alert)
{
    ModeOrAlert r;
    r.rejected.alert = alert;
    return r;
}

ModeOrAlert chooseMode(const PhotoSelection& selection, const BatchDateRequest& request)
{
    if (selection.items.isEmpty())
        return reject(Alerts::noSelection());
    if (!request.referencePhoto.isEmpty()) {
        QString beforeOriginal = request.beforeOriginal;
        QString beforeDigitized = request.beforeDigitized;
        if (beforeOriginal.isEmpty() || beforeDigitized.isEmpty()) {
            const PhotoDateTexts reference = readPhotoDateTexts(request.referencePhoto);
            if (beforeOriginal.isEmpty())
                beforeOriginal = reference.original;
            if (beforeDigitized.isEmpty())
                beforeDigitized = reference.digitized;
        }
        const auto bo = parseDateText(beforeOriginal);
        const auto bd = parseDateText(beforeDigitized);
        const auto ao = parseDateText(request.afterOriginal);
        const auto ad = parseDateText(request.afterDigitized);
        if (!bo || !bd || !ao || !ad)
            return reject(Alerts::invalidDateFormat());
        return {ReferenceMode{bo->secondsTo(*ao), bd->secondsTo(*ad)}, {}};
    }
    if (!request.fixedDate.trimmed().isEmpty()) {
        const auto fixed = parseDateText(request.fixedDate);
        if (!fixed)
            return reject(Alerts::invalidDateFormat());
        return {FixedMode{*fixed}, {}};
    }
    const std::int64_t seconds = spanSeconds(request.span);
    return {ShiftMode{request.add ? seconds : -seconds}, {}};
}

QString exif(const WallClock& clock) { return renderDateText(clock, DateTextForm::Exif); }

// Moves one date field of a group by the seconds when it holds a date.
enum class Moved { Absent, Done, OutOfRange };
Moved moveField(const QVariantMap& group, const QString& key, std::int64_t seconds, std::optional<QString>* out)
{
    const auto clock = parseDateText(group.value(key).toString());
    if (!clock)
        return Moved::Absent;
    const auto moved = clock->addSeconds(seconds);
    if (!moved)
        return Moved::OutOfRange;
    *out = exif(*moved);
    return Moved::Done;
}

void setBothFileDates(const DatePhoto& photo, const QDateTime& date, const CommandContext& context,
                      CommandResult& result)
{
    setOutputFileDates(photo.output, date, date, context, result);
}

// Each file date moved on its own by the seconds; a file system without birth times gives the
// creation date from the modification date. The dates are those read before the photo was
// written, since a camera photo is rewritten in place.
void setShiftedFileDates(const DatePhoto& photo, const FileDateReading& dates, std::int64_t seconds,
                         const CommandContext& context, CommandResult& result)
{
    setOutputFileDates(photo.output, shiftFileDate(creationOrModification(dates), seconds),
                       shiftFileDate(dates.modified, seconds), context, result);
}

void referencePhoto(const ReferenceMode& mode, const DatePhoto& photo, const CommandContext& context,
                    CommandResult& result)
{
    const auto properties = readDatePhoto(photo, result);
    if (!properties)
        return;
    const PhotoDateTexts texts = photoDateTexts(*properties, photo.input);
    const auto original = parseDateText(texts.original);
    const auto digitized = parseDateText(texts.digitized);
    if (!original || !digitized) {
        result.skip(photo.input, QStringLiteral("the photo's dates are no date texts: %1, %2").arg(texts.original, texts.digitized));
        return;
    }
    const auto newOriginal = original->addSeconds(mode.originalDifference);
    const auto newDigitized = digitized->addSeconds(mode.digitizedDifference);
    if (!newOriginal || !newDigitized) {
        result.skip(photo.input, kLeavesRange);
        return;
    }
    PhotoDateValues values;
    values.original = exif(*newOriginal);
    values.digitized = exif(*newDigitized);
    values.modified = values.original;
    if (writePhotoChanges(photo, dateChanges(*properties, values), context, result))
        setOutputFileDates(photo.output, instantFromWallClock(*newOriginal),
                           instantFromWallClock(*newDigitized), context, result);
}

void fixedPhoto(const FixedMode& mode, const DatePhoto& photo, const CommandContext& context,
                CommandResult& result)
{
    const auto properties = readDatePhoto(photo, result);
    if (!properties)
        return;
    PhotoDateValues values;
    values.original = exif(mode.date);
    values.digitized = values.original;
    values.modified = values.original;
    if (writePhotoChanges(photo, dateChanges(*properties, values), context, result))
        setBothFileDates(photo, instantFromWallClock(mode.date), context, result);
}

void shiftedPhoto(const ShiftMode& mode, const DatePhoto& photo, const CommandContext& context,
                  CommandResult& result)
{
    const FileDateReading fileDates = readFileDates(photo.input);
    const auto properties = readDatePhoto(photo, result);
    if (!properties)
        return;
    const QVariantMap exifGroup = properties->value(QStringLiteral("{Exif}")).toMap();
    const QVariantMap tiffGroup = properties->value(QStringLiteral("{TIFF}")).toMap();
    PhotoDateValues values;
    const Moved moves[] = {
        moveField(exifGroup, QStringLiteral("DateTimeOriginal"), mode.seconds, &values.original),
        moveField(exifGroup, QStringLiteral("DateTimeDigitized"), mode.seconds, &values.digitized),
        moveField(tiffGroup, QStringLiteral("DateTime"), mode.seconds, &values.modified),
    };
    bool any = false;
    for (Moved m : moves) {
        if (m == Moved::OutOfRange) {
            result.skip(photo.input, kLeavesRange);
            return;
        }
        any = any || m == Moved::Done;
    }
    const bool ok = any ? writePhotoChanges(photo, dateChanges(*properties, values), context, result)
                        : copyPhotoUnchanged(photo, context, result);
    if (ok)
        setShiftedFileDates(photo, fileDates, mode.seconds, context, result);
}

}  // namespace

CommandResult shiftPhotoDates(const PhotoSelection& selection, const BatchDateRequest& request,
                              const CommandContext& context)
{
    const ModeOrAlert chosen = chooseMode(selection, request);
    if (!chosen.mode)
        return chosen.rejected;
    const Mode mode = *chosen.mode;
    return runDateBatch(selection, context, [&](const DatePhoto& photo, CommandResult& result) {
        if (const auto* reference = std::get_if<ReferenceMode>(&mode))
            referencePhoto(*reference, photo, context, result);
        else if (const auto* fixed = std::get_if<FixedMode>(&mode))
            fixedPhoto(*fixed, photo, context, result);
        else
            shiftedPhoto(std::get<ShiftMode>(mode), photo, context, result);
    });
}

CommandResult shiftPhotoFileDates(const PhotoSelection& selection, const BatchDateRequest& request,
                                  const CommandContext& context)
{
    const ModeOrAlert chosen = chooseMode(selection, request);
    if (!chosen.mode)
        return chosen.rejected;
    const Mode mode = *chosen.mode;
    return runDateBatch(selection, context, [&](const DatePhoto& photo, CommandResult& result) {
        const FileDateReading fileDates = readFileDates(photo.input);
        if (!copyPhotoUnchanged(photo, context, result))
            return;
        if (const auto* fixed = std::get_if<FixedMode>(&mode)) {
            setBothFileDates(photo, instantFromWallClock(fixed->date), context, result);
            return;
        }
        const std::int64_t seconds = std::holds_alternative<ReferenceMode>(mode)
                                         ? std::get<ReferenceMode>(mode).originalDifference
                                         : std::get<ShiftMode>(mode).seconds;
        setShiftedFileDates(photo, fileDates, seconds, context, result);
    });
}

}  // namespace pelorin

#include "dates/GpsSave.h"

#include "dates/PhotoDateBatch.h"
#include "dates/PhotoDateReading.h"
#include "model/OutputDates.h"

namespace pelorin {

CommandResult savePhotoGps(const PhotoSelection& selection, const GpsInput& input,
                           const CommandContext& context)
{
    if (selection.items.isEmpty()) {
        CommandResult r;
        r.alert = Alerts::noSelection();
        return r;
    }
    const GpsGroupResult built = buildGpsGroup(input);
    if (built.alert) {
        CommandResult r;
        r.alert = built.alert;
        return r;
    }
    PhotoChanges changes;
    changes.groups.insert(QStringLiteral("{GPS}"), built.group);
    const QDateTime fileDate = fileDateFromText(input.dateStamp.trimmed() + QLatin1Char(' ') + input.timeStamp.trimmed());
    return runDateBatch(selection, context, [&](const DatePhoto& photo, CommandResult& result) {
        if (writePhotoChanges(photo, changes, context, result) && fileDate.isValid())
            setOutputFileDates(photo.output, fileDate, fileDate, context, result);
    });
}

}  // namespace pelorin

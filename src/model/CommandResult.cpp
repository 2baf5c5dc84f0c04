#include "model/CommandResult.h"

namespace pelorin {

void CommandResult::merge(const CommandResult& other)
{
    written += other.written;
    skipped += other.skipped;
    planned += other.planned;
    editedCopies += other.editedCopies;
    for (const QString& note : other.notes)
        noteOnce(note);
    if (!alert && other.alert)
        alert = other.alert;
}

void CommandResult::addEditedCopy(const QString& record, const QString& output, const QStringList& writtenForRecord)
{
    // A byte copy with an XMP sidecar is not a whole edit: the next edit would read the copy
    // without the sidecar's values, so such a record keeps starting from its original.
    if (writtenForRecord == QStringList{output})
        editedCopies.append({record, output});
}

namespace Alerts {

Alert noSelection()
{
    return {QStringLiteral("No Item has been selected"),
            QStringLiteral("Please select at least one item to process.")};
}

Alert invalidDateFormat()
{
    return {QStringLiteral("Invalid date format"),
            QStringLiteral("Input the valid date format: YYYY:MM:DD HH:MM:SS or YYYY-MM-DD HH:MM:SS")};
}

Alert valueError()
{
    return {QStringLiteral("Vaule Error"), QStringLiteral("Each value cannot be empty.")};
}

}  // namespace Alerts
}  // namespace pelorin

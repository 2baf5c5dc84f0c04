#include "model/CommandResult.h"

namespace pelorin {

void CommandResult::merge(const CommandResult& other)
{
    written += other.written;
    skipped += other.skipped;
    planned += other.planned;
    for (const QString& note : other.notes)
        noteOnce(note);
    if (!alert && other.alert)
        alert = other.alert;
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

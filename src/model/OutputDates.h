#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"

#include <QDateTime>
#include <QString>

namespace pelorin {

// Gives an output its file dates: the modification date always, the creation date where the
// file system allows it; where it does not, the result says so once. An invalid date leaves
// that date alone. In a dry run the dates are only planned in the result.
void setOutputFileDates(const QString& path, const QDateTime& created, const QDateTime& modified,
                        const CommandContext& context, CommandResult& result);

}  // namespace pelorin

#pragma once

#include "model/CommandContext.h"
#include "model/CommandResult.h"

#include <QString>
#include <QVariantMap>

namespace pelorin {

// Writes root as an XML property list to "<storage>/<fileName>", atomically, replacing a file
// of that name, and reveals it. A dictionary a property list cannot hold is reported in the
// result with the reason and leaves no file. In a dry run the file is only planned.
void writeExportPlist(const QVariantMap& root, const QString& fileName, const CommandContext& context,
                      CommandResult& result);

}  // namespace pelorin

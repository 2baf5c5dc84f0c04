#include "cli/CliApp.h"

#include "cli/ApplyCommand.h"
#include "cli/CopyDateCommand.h"
#include "cli/ExifSegmentsCommand.h"
#include "cli/ExportPlistCommand.h"
#include "cli/GpsCommand.h"
#include "cli/ImportPlistCommand.h"
#include "cli/InfoCommand.h"
#include "cli/KindsCommand.h"
#include "cli/SetDateCommand.h"
#include "cli/ShiftDatesCommand.h"
#include "cli/StripCommand.h"

namespace pelorin::cli {

void addPhotoCommands(CliApp& app)
{
    app.add(std::make_unique<ApplyCommand>());
    app.add(std::make_unique<CopyDateCommand>());
    app.add(std::make_unique<ExifSegmentsCommand>());
    app.add(std::make_unique<ExportPlistCommand>());
    app.add(std::make_unique<GpsCommand>());
    app.add(std::make_unique<ImportPlistCommand>());
    app.add(std::make_unique<InfoCommand>());
    app.add(std::make_unique<KindsCommand>());
    app.add(std::make_unique<SetDateCommand>());
    app.add(std::make_unique<ShiftDatesCommand>());
    app.add(std::make_unique<StripCommand>());
}

std::unique_ptr<CliApp> makePhotoCliApp()
{
    auto app = std::make_unique<CliApp>();
    addPhotoCommands(*app);
    return app;
}

}  // namespace pelorin::cli

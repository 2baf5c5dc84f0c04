#include "cli/CliApp.h"

#include "cli/PrefsCommand.h"
#include "cli/RecompressPhotosCommand.h"
#include "cli/StampDatesCommand.h"
#include "cli/ThumbnailCommand.h"

namespace pelorin::cli {

void addPhotoPaintingCommands(CliApp& app)
{
    app.add(std::make_unique<PrefsCommand>());
    app.add(std::make_unique<RecompressPhotosCommand>());
    app.add(std::make_unique<StampDatesCommand>());
    app.add(std::make_unique<ThumbnailCommand>());
}

}  // namespace pelorin::cli

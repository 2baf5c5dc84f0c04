#include "cli/CliApp.h"

#include "cli/ArtworkCommand.h"
#include "cli/CameraCommand.h"
#include "cli/MediaMetadataCommand.h"
#include "cli/TagsCommand.h"
#include "cli/VideoCommand.h"

namespace pelorin::cli {

std::unique_ptr<CliApp> makeCliApp()
{
    auto app = std::make_unique<CliApp>();
    addPhotoCommands(*app);
    addPhotoPaintingCommands(*app);
    app->add(std::make_unique<ArtworkCommand>());
    app->add(std::make_unique<CameraCommand>());
    app->add(std::make_unique<MediaMetadataCommand>());
    app->add(std::make_unique<TagsCommand>());
    app->add(std::make_unique<VideoCommand>());
    return app;
}

}  // namespace pelorin::cli

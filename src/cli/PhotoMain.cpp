// pelorin-cli-photo: the photo commands, started by pelorin-cli.
#include "cli/CliFamilies.h"
#include "cli/CliMain.h"

int main(int argc, char** argv)
{
    using namespace pelorin::cli;
    return runCliMain(argc, argv, makePhotoCliApp, isOneOf(commandNameOf(argc, argv), kPhotoCommandsPainting));
}

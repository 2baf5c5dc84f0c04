// pelorin-cli-photo: the photo commands, started by pelorin-cli.
#include "cli/CliMain.h"

int main(int argc, char** argv) { return pelorin::cli::runCliMain(argc, argv, pelorin::cli::makePhotoCliApp); }

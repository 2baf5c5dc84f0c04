// pelorin-cli-all: every command, started by pelorin-cli for all but the photo commands.
#include "cli/CliMain.h"

int main(int argc, char** argv) { return pelorin::cli::runCliMain(argc, argv, pelorin::cli::makeCliApp, true); }

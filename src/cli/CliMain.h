#pragma once

#include "cli/CliApp.h"

#include <memory>

namespace pelorin::cli {

// The body of every pelorin-cli program: the process set-up, then the commands of makeApp on the
// arguments. Answers the exit status. guiApplication: whether the command paints, scales or draws
// text. A GUI application object sets up Qt's painting code (its optimised blending, which rounds
// differently from the plain one) and the fonts; a command that only reads pictures and rewrites
// metadata goes without it, which saves more start-up than a one-file command's work.
int runCliMain(int argc, char** argv, std::unique_ptr<CliApp> (*makeApp)(), bool guiApplication);

}  // namespace pelorin::cli

#pragma once

#include "cli/CliApp.h"

#include <memory>

namespace pelorin::cli {

// The body of every pelorin-cli program: the process set-up, then the commands of makeApp on the
// arguments. Answers the exit status.
int runCliMain(int argc, char** argv, std::unique_ptr<CliApp> (*makeApp)());

}  // namespace pelorin::cli

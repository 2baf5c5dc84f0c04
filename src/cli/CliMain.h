#pragma once

#include "cli/CliApp.h"

#include <memory>

class QCoreApplication;

namespace pelorin::cli {

// Makes the program's Qt application object. A GUI application object (QGuiApplication) sets
// up Qt's painting code (its optimised blending, which rounds differently from the plain one)
// and the fonts, which the painting commands need; the metadata program makes a plain
// QCoreApplication and so loads no GUI library at all.
using ApplicationMaker = std::unique_ptr<QCoreApplication> (*)(int& argc, char** argv);

// The body of every pelorin-cli program: the process set-up, then the commands of makeApp on the
// arguments. Answers the exit status.
int runCliMain(int argc, char** argv, std::unique_ptr<CliApp> (*makeApp)(), ApplicationMaker makeApplication);

}  // namespace pelorin::cli

#pragma once
#include <atomic>

namespace pelorin::cli {

// Set when the user presses Ctrl-C (SIGINT) while a command runs. The first press asks the
// running batch to stop after the file in hand; a second press ends the program at once.
const std::atomic_bool* interruptFlag();

}  // namespace pelorin::cli

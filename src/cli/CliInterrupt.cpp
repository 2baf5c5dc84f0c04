#include "cli/CliInterrupt.h"

#include <csignal>

namespace pelorin::cli {
namespace {

std::atomic_bool interrupted{false};
static_assert(std::atomic_bool::is_always_lock_free, "set from a signal handler");

extern "C" void onInterrupt(int) { interrupted.store(true); }

}  // namespace

const std::atomic_bool* interruptFlag()
{
    static const bool installed = [] {
        struct sigaction action = {};
        action.sa_handler = onInterrupt;
        action.sa_flags = SA_RESETHAND;  // the second Ctrl-C takes the default way out
        sigemptyset(&action.sa_mask);
        return sigaction(SIGINT, &action, nullptr) == 0;
    }();
    (void)installed;
    return &interrupted;
}

}  // namespace pelorin::cli

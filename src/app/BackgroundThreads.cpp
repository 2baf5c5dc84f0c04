#include "app/BackgroundThreads.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace pelorin {

namespace {
// A niceness of 10 weighs a thread about a tenth of the window's: it still gets most of an idle
// machine, but never keeps the window waiting for a core.
constexpr int kBackgroundNiceness = 10;
}

void yieldCoresToWindow()
{
    thread_local bool lowered = false;
    if (lowered)
        return;
    lowered = true;
    // On Linux a niceness set through a thread id is that thread's own; failure only means the
    // thread keeps its weight.
    setpriority(PRIO_PROCESS, id_t(syscall(SYS_gettid)), kBackgroundNiceness);
}

}  // namespace pelorin

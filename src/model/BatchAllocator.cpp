#include "model/BatchAllocator.h"

#include <malloc.h>

namespace pelorin {

void tuneAllocatorForBatches()
{
    mallopt(M_MMAP_THRESHOLD, 32 * 1024 * 1024);  // the largest glibc takes
    mallopt(M_TRIM_THRESHOLD, 128 * 1024 * 1024);
    mallopt(M_TOP_PAD, 16 * 1024 * 1024);
}

}  // namespace pelorin

#pragma once

namespace pelorin {

// Sets the C allocator up for batches of large files. By default glibc hands every block of
// more than 128 KiB (a song's cover, a photo's head, a tag being rendered) to the kernel as a
// fresh mapping and trims the heap as soon as the top 128 KiB are free, so each file of a batch
// maps, faults in and zeroes its buffers anew: half the processor time of `tags set` went there.
// With these settings freed memory is reused; the peak stays what the work needs at once, only
// its return to the system waits. Call once, at the start of main.
void tuneAllocatorForBatches();

}  // namespace pelorin

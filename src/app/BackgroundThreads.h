#pragma once

namespace pelorin {

// Lowers the calling thread's scheduling weight (once per thread), so that on a machine with
// few cores the window's thread gets a core as soon as it has work, while import readers and
// thumbnail decoders use what is left.
void yieldCoresToWindow();

}  // namespace pelorin

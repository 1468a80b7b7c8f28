#pragma once

namespace tavrin::os {

// Hands heap memory that is free but still resident back to the system. The
// sources build their sections in buffers that grow by doubling; once the
// dataset is complete, the space they left behind would otherwise stay
// resident through the JSON text and its compression, the run's largest
// stages. A no-op where the C library offers no way to do it.
void releaseFreedHeap();

}  // namespace tavrin::os

#pragma once

namespace tavrin::os {

// Hands heap memory that is free but still resident back to the system. What
// a source reads from the platform (tens of megabytes of events on a large
// phone) is freed when the source is done, but the heap would keep it
// resident under the sources after it, the JSON text and its compression,
// the run's largest stages. A no-op where the C library offers no way to do it.
void releaseFreedHeap();

}  // namespace tavrin::os

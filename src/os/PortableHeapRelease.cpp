#include "os/releaseFreedHeap.hpp"

namespace tavrin::os {

// Without a way to ask the C library, freed heap stays with the process until
// it is reused.
void releaseFreedHeap() {}

}  // namespace tavrin::os

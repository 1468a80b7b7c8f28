#include "os/releaseFreedHeap.hpp"

#include <cstdlib>  // defines __GLIBC__ where the C library is glibc

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace tavrin::os {

void releaseFreedHeap() {
#if defined(__GLIBC__)
  malloc_trim(0);
#endif
}

}  // namespace tavrin::os

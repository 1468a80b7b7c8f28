#pragma once

#include <cstddef>

// Memory for one large, growing buffer, taken straight from the operating
// system where it offers something better than the heap. The Linux build maps
// anonymous memory (a page costs nothing until it is written, huge pages cut
// the faults of writing tens of megabytes, and growing remaps without copying);
// every other build uses the C heap.
namespace tavrin::os {

// A block of pages: its start and its usable length.
struct PageBlock {
  char* data = nullptr;
  std::size_t size = 0;
};

// A writable block of at least `bytes` bytes. Throws std::bad_alloc.
PageBlock reservePages(std::size_t bytes);

// The block grown to at least `bytes` bytes, with its content kept; it may have
// moved. On std::bad_alloc the old block is still valid and unchanged.
PageBlock growPages(PageBlock block, std::size_t bytes);

// Returns the block; a default (empty) block is ignored.
void releasePages(PageBlock block) noexcept;

}  // namespace tavrin::os

#include "os/PageMemory.hpp"

#include <algorithm>
#include <cstdlib>
#include <new>

// The fallback for systems without anonymous mappings: the C heap, whose
// realloc can often grow a large block in place.
namespace tavrin::os {

PageBlock reservePages(std::size_t bytes) {
  const std::size_t size = std::max<std::size_t>(bytes, 1);
  void* data = std::malloc(size);
  if (data == nullptr) throw std::bad_alloc();
  return {static_cast<char*>(data), size};
}

PageBlock growPages(PageBlock block, std::size_t bytes) {
  if (bytes <= block.size) return block;
  void* data = std::realloc(block.data, bytes);
  if (data == nullptr) throw std::bad_alloc();
  return {static_cast<char*>(data), bytes};
}

void releasePages(PageBlock block) noexcept { std::free(block.data); }

}  // namespace tavrin::os

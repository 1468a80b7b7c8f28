#include "os/PageMemory.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <new>

namespace tavrin::os {

namespace {

std::size_t roundToPages(std::size_t bytes) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return (std::max<std::size_t>(bytes, 1) + page - 1) / page * page;
}

char* checked(void* mapping) {
  if (mapping == MAP_FAILED) throw std::bad_alloc();
  return static_cast<char*>(mapping);
}

// Huge pages are a hint; the block works the same without them.
void adviseHugePages(PageBlock block) { (void)madvise(block.data, block.size, MADV_HUGEPAGE); }

}  // namespace

PageBlock reservePages(std::size_t bytes) {
  const std::size_t size = roundToPages(bytes);
  const PageBlock block{
      checked(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)),
      size};
  adviseHugePages(block);
  return block;
}

PageBlock growPages(PageBlock block, std::size_t bytes) {
  if (bytes <= block.size) return block;
  const std::size_t size = roundToPages(bytes);
  const PageBlock grown{checked(mremap(block.data, block.size, size, MREMAP_MAYMOVE)), size};
  adviseHugePages(grown);
  return grown;
}

void releasePages(PageBlock block) noexcept {
  if (block.data != nullptr) munmap(block.data, block.size);
}

}  // namespace tavrin::os

#include "AllocationCounter.hpp"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace tavrin::bench {
namespace {

std::atomic<std::size_t> held{0};
std::atomic<std::size_t> highest{0};

void* allocate(std::size_t size) {
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) return nullptr;
  const std::size_t now = held.fetch_add(malloc_usable_size(block)) + malloc_usable_size(block);
  std::size_t seen = highest.load(std::memory_order_relaxed);
  while (now > seen && !highest.compare_exchange_weak(seen, now)) {
  }
  return block;
}

void release(void* block) {
  if (block == nullptr) return;
  held.fetch_sub(malloc_usable_size(block));
  std::free(block);
}

}  // namespace

std::size_t AllocationCounter::current() { return held.load(); }
std::size_t AllocationCounter::peak() { return highest.load(); }
void AllocationCounter::resetPeak() { highest.store(held.load()); }

}  // namespace tavrin::bench

// The array, nothrow and sized forms of the standard library forward to these.
void* operator new(std::size_t size) {
  void* block = tavrin::bench::allocate(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept { tavrin::bench::release(block); }
void operator delete(void* block, std::size_t) noexcept { tavrin::bench::release(block); }

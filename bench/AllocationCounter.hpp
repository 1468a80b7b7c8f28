#pragma once

#include <cstddef>

namespace tavrin::bench {

// Bytes the benchmark binary holds through operator new, counted by usable
// block size; lets a benchmark report the peak memory of the work it times.
// The binary replaces the global operator new and delete to keep the count.
class AllocationCounter {
 public:
  // Bytes allocated and not yet freed.
  static std::size_t current();
  // The highest `current()` since the last `resetPeak()`.
  static std::size_t peak();
  // Starts a new peak from what is held now.
  static void resetPeak();
};

}  // namespace tavrin::bench

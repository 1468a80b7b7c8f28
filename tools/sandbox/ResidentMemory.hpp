#pragma once

#include <cstddef>

namespace tavrin::sandbox {

// The resident memory of this process as the kernel counts it: every page
// touched, by the heap, by memory mappings and by libraries alike.
class ResidentMemory {
 public:
  // Resident bytes now.
  static std::size_t current();
  // The highest resident bytes since the last resetPeak() (or the start).
  static std::size_t peak();
  // Starts a new peak from what is resident now. False where the kernel does
  // not allow it; peak() then covers the whole life of the process.
  static bool resetPeak();
};

}  // namespace tavrin::sandbox

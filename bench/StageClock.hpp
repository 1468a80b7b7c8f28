#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace tavrin::bench {

// The time one stage took: on the wall, and on the processor for the thread
// that ran it (work done on other threads, such as an in-process server's, is
// not counted).
struct StageTime {
  std::string name;
  double wallSeconds = 0;
  double cpuSeconds = 0;
  // Pages the thread touched for the first time: each costs the kernel a
  // fault and, for fresh memory, a page of zeroes, all in cpuSeconds.
  long pageFaults = 0;
  // Filled by callers that measure memory: the highest resident bytes and the
  // highest heap bytes in use, both above what was there before, and the heap
  // bytes still held when the stage ended.
  std::size_t peakResident = 0;
  std::size_t peakHeap = 0;
  std::size_t heldHeap = 0;
};

// Times stages one after another on the calling thread.
class StageClock {
 public:
  StageClock() { restart(); }
  // Ends the current stage under `name` and starts the next.
  StageTime lap(std::string name);
  void restart();

 private:
  static double threadCpuSeconds();
  static long threadPageFaults();
  std::chrono::steady_clock::time_point _wall;
  double _cpu = 0;
  long _faults = 0;
};

}  // namespace tavrin::bench

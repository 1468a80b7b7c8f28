#include "StageClock.hpp"

#include <sys/resource.h>

#include <ctime>

namespace tavrin::bench {

double StageClock::threadCpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

long StageClock::threadPageFaults() {
  rusage usage{};
  getrusage(RUSAGE_THREAD, &usage);
  return usage.ru_minflt;
}

void StageClock::restart() {
  _wall = std::chrono::steady_clock::now();
  _cpu = threadCpuSeconds();
  _faults = threadPageFaults();
}

StageTime StageClock::lap(std::string name) {
  const auto wall = std::chrono::steady_clock::now();
  const double cpu = threadCpuSeconds();
  const long faults = threadPageFaults();
  StageTime time{std::move(name), std::chrono::duration<double>(wall - _wall).count(), cpu - _cpu,
                 faults - _faults};
  _wall = wall;
  _cpu = cpu;
  _faults = faults;
  return time;
}

}  // namespace tavrin::bench

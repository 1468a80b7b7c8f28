#include "StageClock.hpp"

#include <ctime>

namespace tavrin::bench {

double StageClock::threadCpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void StageClock::restart() {
  _wall = std::chrono::steady_clock::now();
  _cpu = threadCpuSeconds();
}

StageTime StageClock::lap(std::string name) {
  const auto wall = std::chrono::steady_clock::now();
  const double cpu = threadCpuSeconds();
  StageTime time{std::move(name), std::chrono::duration<double>(wall - _wall).count(), cpu - _cpu};
  _wall = wall;
  _cpu = cpu;
  return time;
}

}  // namespace tavrin::bench

#include "ResidentMemory.hpp"

#include <fstream>
#include <string>

namespace tavrin::sandbox {
namespace {

// A "Name:   1234 kB" line of /proc/self/status, in bytes.
std::size_t statusBytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  std::string key;
  std::size_t kilobytes = 0;
  std::string unit;
  while (status >> key) {
    if (key == name + ':') {
      status >> kilobytes >> unit;
      return kilobytes * 1024;
    }
    status.ignore(1 << 16, '\n');
  }
  return 0;
}

}  // namespace

std::size_t ResidentMemory::current() { return statusBytes("VmRSS"); }

std::size_t ResidentMemory::peak() { return statusBytes("VmHWM"); }

bool ResidentMemory::resetPeak() {
  // Writing 5 resets the peak resident size (Linux 4.0 and later).
  std::ofstream clear("/proc/self/clear_refs");
  clear << "5";
  clear.flush();
  return static_cast<bool>(clear);
}

}  // namespace tavrin::sandbox

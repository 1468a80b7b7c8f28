#include "PerformanceReport.hpp"

#include <sys/utsname.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sstream>
#include <thread>

namespace tavrin::bench {

PerformanceReport& PerformanceReport::get() {
  static PerformanceReport report;
  return report;
}

void PerformanceReport::set(const std::string& region, std::string markdown) {
  _regions[region] = std::move(markdown);
}

PerformanceReport::~PerformanceReport() {
  const char* path = std::getenv("TAVRIN_PERFORMANCE_REPORT");
  if (path == nullptr || _regions.empty()) return;
  std::string text;
  {
    std::ifstream in(path, std::ios::binary);
    text.assign(std::istreambuf_iterator<char>(in), {});
  }
  for (const auto& [name, markdown] : _regions) {
    const std::string begin = "<!-- " + name + ":begin -->", end = "<!-- " + name + ":end -->";
    const std::string block = begin + "\n" + markdown + end;
    const auto first = text.find(begin);
    const auto last = first == std::string::npos ? first : text.find(end, first);
    if (last == std::string::npos) {
      text += "\n" + block + "\n";
    } else {
      text.replace(first, last + end.size() - first, block);
    }
  }
  std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

std::string PerformanceReport::machine() {
  std::string cpu = "unknown processor";
  std::ifstream cpuinfo("/proc/cpuinfo");
  for (std::string line; std::getline(cpuinfo, line);) {
    if (line.rfind("model name", 0) == 0) {
      cpu = line.substr(line.find(':') + 2);
      break;
    }
  }
  utsname system{};
  uname(&system);
  const auto memory = static_cast<double>(sysconf(_SC_PHYS_PAGES)) *
                      static_cast<double>(sysconf(_SC_PAGE_SIZE)) / (1 << 30);
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  char date[32];
  std::strftime(date, sizeof date, "%Y-%m-%d %H:%M UTC", std::gmtime(&now));
  std::ostringstream out;
  out.precision(3);
  out << "- Measured " << date << " on " << cpu << ", " << std::thread::hardware_concurrency()
      << " logical processors (shared with other work), " << memory << " GiB of memory, "
      << system.sysname << ' ' << system.release << ".\n"
      << "- Built as Release by "
      <<
#ifdef __clang__
      "clang "
#else
      "GCC "
#endif
      << __VERSION__ << ".\n";
  return out.str();
}

}  // namespace tavrin::bench

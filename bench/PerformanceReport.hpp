#pragma once

#include <map>
#include <string>

namespace tavrin::bench {

// Figures that benchmarks leave for docs/performance.md. Each benchmark fills
// regions of Markdown; when the binary exits they replace the text between
// "<!-- NAME:begin -->" and "<!-- NAME:end -->" in the file that
// TAVRIN_PERFORMANCE_REPORT names (regions not yet in the file are added at its
// end), so the hand-written analysis around them stays. Without that variable
// nothing is written.
class PerformanceReport {
 public:
  static PerformanceReport& get();
  PerformanceReport(const PerformanceReport&) = delete;
  PerformanceReport& operator=(const PerformanceReport&) = delete;
  ~PerformanceReport();

  void set(const std::string& region, std::string markdown);

  // The machine and build the figures come from, as Markdown.
  static std::string machine();

 private:
  PerformanceReport() = default;
  std::map<std::string, std::string> _regions;
};

}  // namespace tavrin::bench

#include "ExchangeLatency.hpp"

#include <algorithm>
#include <iomanip>
#include <sstream>

namespace tavrin::bench {

double percentileMilliseconds(std::vector<std::chrono::nanoseconds> times, double share) {
  if (times.empty()) return 0;
  const auto index = static_cast<std::size_t>(share * static_cast<double>(times.size() - 1) + 0.5);
  const auto at = times.begin() + static_cast<std::ptrdiff_t>(std::min(index, times.size() - 1));
  std::nth_element(times.begin(), at, times.end());
  return std::chrono::duration<double, std::milli>(*at).count();
}

std::string latencyTable(
    const std::vector<std::pair<std::string, sandbox::ExchangeTimes>>& configurations) {
  std::ostringstream out;
  out << std::fixed << std::setprecision(1) << "| exchange, ms p50 / p90 / p99 (count) |";
  for (const auto& [name, times] : configurations) out << ' ' << name << " |";
  out << "\n|---|";
  for (std::size_t i = 0; i < configurations.size(); ++i) out << "---:|";
  out << '\n';
  using Times = std::vector<std::chrono::nanoseconds> sandbox::ExchangeTimes::*;
  for (const auto& [exchange, member] :
       {std::pair<const char*, Times>{"login", &sandbox::ExchangeTimes::login},
        {"check", &sandbox::ExchangeTimes::check},
        {"upload", &sandbox::ExchangeTimes::upload}}) {
    out << "| " << exchange << " |";
    for (const auto& [name, times] : configurations) {
      const auto& sample = times.*member;
      out << ' ' << percentileMilliseconds(sample, 0.5) << " / "
          << percentileMilliseconds(sample, 0.9) << " / " << percentileMilliseconds(sample, 0.99)
          << " (" << sample.size() << ") |";
    }
    out << '\n';
  }
  return out.str();
}

}  // namespace tavrin::bench

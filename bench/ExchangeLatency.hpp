#pragma once

#include "ExchangeTimes.hpp"

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace tavrin::bench {

// The value below which `share` (0 to 1) of `times` lie, in milliseconds; 0
// for no times.
double percentileMilliseconds(std::vector<std::chrono::nanoseconds> times, double share);

// A Markdown table of the p50 / p90 / p99 latency of login, check and upload,
// one column for each configuration measured in the same run.
std::string latencyTable(
    const std::vector<std::pair<std::string, sandbox::ExchangeTimes>>& configurations);

}  // namespace tavrin::bench

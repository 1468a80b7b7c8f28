// The sandbox under load, in full: 32 clients of the library checking and
// uploading typical datasets for 30 seconds against one sandbox on loopback.
// Throughput, upload latency, what the sandbox kept, and the process's memory
// go to docs/performance.md (the test SandboxLoad runs the same, shortened).
#include "PerformanceReport.hpp"

#include "generator/OfflineCollection.hpp"

#include "SandboxLoad.hpp"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <sstream>

namespace tavrin {
namespace {

using sandbox::LoadOutcome;

double milliseconds(std::chrono::nanoseconds time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

// The value below which `share` of the sorted values lie.
double percentile(const std::vector<double>& sorted, double share) {
  if (sorted.empty()) return 0;
  const auto index = static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1) + 0.5);
  return sorted[std::min(index, sorted.size() - 1)];
}

void BM_SandboxLoad(benchmark::State& state) {
  const auto [payloads, jsons] = tool::collectTypicalPhones(4);
  const auto directory =
      std::filesystem::temp_directory_path() / ("tavrin-load-bench-" + std::to_string(getpid()));
  std::filesystem::create_directories(directory);

  sandbox::LoadOptions load;  // 32 clients, 30 seconds
  sandbox::LoadResult result;
  sandbox::LoadVerdict verdict;
  std::size_t serverThreads = 0;
  for (auto _ : state) {
    sandbox::SandboxOptions options;
    options.database = (directory / "load.db").string();
    serverThreads = options.limits.threads;
    sandbox::SandboxServer server(std::move(options));
    server.start();
    result = sandbox::runSandboxLoad(server, "sandbox-key", payloads, load);
    server.stop();
    verdict = sandbox::verifyLoad(result, server.store(), payloads);
  }
  std::filesystem::remove_all(directory);

  std::vector<double> latencies;
  std::size_t atCheck = 0, corrupted = 0, failed = 0;
  for (const auto& outcome : result.outcomes) {
    if (outcome.kind == LoadOutcome::Kind::accepted)
      latencies.push_back(milliseconds(outcome.uploadTime));
    atCheck += outcome.kind == LoadOutcome::Kind::refusedAtCheck;
    corrupted += outcome.kind == LoadOutcome::Kind::refused;
    failed += outcome.kind == LoadOutcome::Kind::failed;
  }
  std::sort(latencies.begin(), latencies.end());
  const double seconds = std::chrono::duration<double>(result.elapsed).count();
  const auto& samples = result.residentSamples;
  const auto split = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() * 2 / 3);
  const auto peakOf = [](auto first, auto last) {
    return first == last ? std::size_t{0} : *std::max_element(first, last);
  };
  const double mb = 1e6;

  state.counters["uploads/s"] = static_cast<double>(verdict.accepted) / seconds;
  state.counters["p50_ms"] = percentile(latencies, 0.5);
  state.counters["p99_ms"] = percentile(latencies, 0.99);

  std::ostringstream out;
  out << std::fixed << std::setprecision(1) << bench::PerformanceReport::machine() << "\n"
      << load.clients << " clients, each its own RestService over CurlTransport (a new TLS "
      << "connection per request, as the library makes them), checked and uploaded for " << seconds
      << " s against one sandbox (a thread per connection, " << serverThreads
      << " requests processed at once), storing into SQLite on disk. Each client cycles through "
         "the payloads of "
      << "four typical phones (" << static_cast<double>(payloads[0].size()) / mb
      << " MB of base64, " << static_cast<double>(jsons[0].size()) / mb << " MB of JSON each); "
      << "every " << load.repeatEvery << "th request repeats a record number and every "
      << load.corruptEvery << "th upload is corrupted.\n\n"
      << "| figure | value |\n|---|---:|\n"
      << "| accepted uploads | " << verdict.accepted << " |\n"
      << "| throughput | " << static_cast<double>(verdict.accepted) / seconds << " uploads/s, "
      << static_cast<double>(result.uploadedBytes) / mb / seconds << " MB/s of base64 |\n"
      << "| upload latency p50 / p90 / p99 / max | " << percentile(latencies, 0.5) << " / "
      << percentile(latencies, 0.9) << " / " << percentile(latencies, 0.99) << " / "
      << (latencies.empty() ? 0.0 : latencies.back()) << " ms |\n"
      << "| refused at the check (record number taken) | " << atCheck << " |\n"
      << "| refused at the upload (corrupted payload) | " << corrupted << " |\n"
      << "| failed | " << failed << " |\n"
      << "| accepted uploads stored as sent | " << verdict.storedAsSent << " of "
      << verdict.accepted << " |\n"
      << "| refusals with their reason | " << verdict.refusedWithReason << " of " << verdict.refused
      << " |\n"
      << "| resident memory at the start | " << static_cast<double>(samples.front()) / mb
      << " MB |\n"
      << "| highest resident memory, first two thirds / last third | "
      << static_cast<double>(peakOf(samples.begin(), split)) / mb << " / "
      << static_cast<double>(peakOf(split, samples.end())) / mb << " MB |\n\n";
  if (!verdict.problems.empty()) {
    out << "Problems (" << verdict.problems.size() << "), the first: " << verdict.problems.front()
        << "\n\n";
  }
  bench::PerformanceReport::get().set("load", out.str());
}
BENCHMARK(BM_SandboxLoad)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
}  // namespace tavrin

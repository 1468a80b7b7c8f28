// The sandbox under load, in full: 32 clients of the library checking and
// uploading typical datasets against one sandbox on loopback, three times in
// the same run: as before (Nagle's algorithm on the sandbox's sockets, a new
// connection for every request), with TCP_NODELAY alone, and as now
// (TCP_NODELAY and one kept connection per client). Throughput, the latency of
// each exchange, what the sandbox kept, and the process's memory go to
// docs/performance.md (the test SandboxLoad runs the same, shortened).
#include "ExchangeLatency.hpp"
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

// One way of running the load, and what it came to.
struct Configuration {
  const char* name;
  bool tcpNoDelay;
  CurlTransport::Connections connections;

  sandbox::LoadResult result;
  sandbox::LoadVerdict verdict;
  sandbox::HandshakeCounts handshakes;
};

void BM_SandboxLoad(benchmark::State& state) {
  const auto [payloads, jsons] = tool::collectTypicalPhones(4);
  const std::size_t serverThreads = sandbox::SandboxLimits{}.threads;
  const auto directory =
      std::filesystem::temp_directory_path() / ("tavrin-load-bench-" + std::to_string(getpid()));

  sandbox::LoadOptions load;
  load.duration = std::chrono::seconds(20);
  using Connections = CurlTransport::Connections;
  Configuration configurations[] = {
      {"before: Nagle, a connection per request", false, Connections::perRequest, {}, {}, {}},
      {"TCP_NODELAY, a connection per request", true, Connections::perRequest, {}, {}, {}},
      {"now: TCP_NODELAY, kept connections", true, Connections::kept, {}, {}, {}},
  };
  for (auto _ : state) {
    for (auto& configuration : configurations) {
      std::filesystem::create_directories(directory);
      sandbox::SandboxOptions options;
      options.database = (directory / "load.db").string();
      options.tcpNoDelay = configuration.tcpNoDelay;
      load.connections = configuration.connections;
      sandbox::SandboxServer server(std::move(options));
      server.start();
      configuration.result = sandbox::runSandboxLoad(server, "sandbox-key", payloads, load);
      server.stop();
      configuration.verdict = sandbox::verifyLoad(configuration.result, server.store(), payloads);
      configuration.handshakes = server.handshakes();
      std::filesystem::remove_all(directory);
    }
  }

  const double mb = 1e6;
  std::ostringstream out;
  out << std::fixed << std::setprecision(1) << bench::PerformanceReport::machine() << "\n"
      << load.clients << " clients, each its own RestService over CurlTransport, checked and "
      << "uploaded for " << load.duration.count() / 1000 << " s against one sandbox (a thread per "
      << "connection, " << serverThreads << " requests processed at once) storing into SQLite on "
      << "disk; three times, one after the other. Each client cycles through the payloads of four "
         "typical phones ("
      << static_cast<double>(payloads[0].size()) / mb << " MB of base64, "
      << static_cast<double>(jsons[0].size()) / mb << " MB of JSON each); every "
      << load.repeatEvery << "th request repeats a record number and every " << load.corruptEvery
      << "th upload is corrupted.\n\n| figure |";
  for (const auto& c : configurations) out << ' ' << c.name << " |";
  out << "\n|---|";
  for (std::size_t i = 0; i < std::size(configurations); ++i) out << "---:|";
  out << '\n';
  const auto row = [&](const char* figure, auto value) {
    out << "| " << figure << " |";
    for (const auto& c : configurations) out << ' ' << value(c) << " |";
    out << '\n';
  };
  const auto seconds = [](const Configuration& c) {
    return std::chrono::duration<double>(c.result.elapsed).count();
  };
  const auto count = [](LoadOutcome::Kind kind) {
    return [kind](const Configuration& c) {
      return std::count_if(c.result.outcomes.begin(), c.result.outcomes.end(),
                           [kind](const LoadOutcome& o) { return o.kind == kind; });
    };
  };
  const auto residentPeak = [&](bool lastThird) {
    return [=](const Configuration& c) {
      const auto& samples = c.result.residentSamples;
      const auto split = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() * 2 / 3);
      const auto first = lastThird ? split : samples.begin();
      const auto last = lastThird ? samples.end() : split;
      return first == last ? 0.0 : static_cast<double>(*std::max_element(first, last)) / mb;
    };
  };
  row("accepted uploads", [](const Configuration& c) { return c.verdict.accepted; });
  row("uploads/s",
      [&](const Configuration& c) { return static_cast<double>(c.verdict.accepted) / seconds(c); });
  row("MB/s of base64", [&](const Configuration& c) {
    return static_cast<double>(c.result.uploadedBytes) / mb / seconds(c);
  });
  row("refused at the check (record number taken)", count(LoadOutcome::Kind::refusedAtCheck));
  row("refused at the upload (corrupted payload)", count(LoadOutcome::Kind::refused));
  row("failed", count(LoadOutcome::Kind::failed));
  row("accepted uploads stored as sent", [](const Configuration& c) {
    return std::to_string(c.verdict.storedAsSent) + " of " + std::to_string(c.verdict.accepted);
  });
  row("refusals with their reason", [](const Configuration& c) {
    return std::to_string(c.verdict.refusedWithReason) + " of " + std::to_string(c.verdict.refused);
  });
  row("TLS connections: full handshakes / resumed", [](const Configuration& c) {
    return std::to_string(c.handshakes.full) + " / " + std::to_string(c.handshakes.resumed);
  });
  row("resident memory at the start, MB", [&](const Configuration& c) {
    return static_cast<double>(c.result.residentSamples.front()) / mb;
  });
  row("highest resident memory, first two thirds, MB", residentPeak(false));
  row("highest resident memory, last third, MB", residentPeak(true));
  out << "\nThe latency of each exchange as the clients saw it:\n\n";
  std::vector<std::pair<std::string, sandbox::ExchangeTimes>> latencies;
  for (const auto& c : configurations) latencies.emplace_back(c.name, c.result.exchangeTimes);
  out << bench::latencyTable(latencies) << '\n';
  for (const auto& c : configurations) {
    if (!c.verdict.problems.empty()) {
      out << c.name << ": problems (" << c.verdict.problems.size()
          << "), the first: " << c.verdict.problems.front() << "\n\n";
    }
  }
  const auto& now = configurations[std::size(configurations) - 1];
  state.counters["uploads/s"] = static_cast<double>(now.verdict.accepted) / seconds(now);
  state.counters["upload_p50_ms"] =
      bench::percentileMilliseconds(now.result.exchangeTimes.upload, 0.5);
  bench::PerformanceReport::get().set("load", out.str());
}
BENCHMARK(BM_SandboxLoad)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
}  // namespace tavrin

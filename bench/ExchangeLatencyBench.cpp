// How long each exchange of a collection takes against the sandbox on
// loopback, with the sandbox's answers sent at once (TCP_NODELAY, as now) and
// with Nagle's algorithm holding them for the client's delayed acknowledgement
// (as before), in the same run: 20 service objects each log in and collect the
// small phone once. The p50, p90 and p99 of login, check and upload go to
// docs/performance.md.
#include "BenchmarkPhones.hpp"
#include "ExchangeLatency.hpp"
#include "PerformanceReport.hpp"

#include "generator/ProfileGenerator.hpp"

#include "SandboxServer.hpp"
#include "platform/profile/ProfilePlatform.hpp"
#include "service/TavrinServiceCore.hpp"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <iomanip>
#include <sstream>

namespace tavrin {
namespace {

constexpr int servicesPerConfiguration = 20;

// The exchanges of `servicesPerConfiguration` service objects, each logging
// in and collecting the phone once, against a sandbox of its own.
sandbox::ExchangeTimes collectAgainst(bool tcpNoDelay, const platform::DeviceProfile& profile) {
  sandbox::SandboxOptions options;
  options.tcpNoDelay = tcpNoDelay;
  sandbox::SandboxServer server(std::move(options));
  server.start();
  sandbox::ExchangeTimes times;
  for (int n = 0; n < servicesPerConfiguration; ++n) {
    auto recorder = std::make_shared<sandbox::ExchangeRecorder>();
    ServiceOptions service;
    service.platform = std::make_shared<platform::ProfilePlatform>(profile);
    service.caFile = server.tlsFiles().authority.string();
    service.resolve = {server.resolve()};
    service.observer = recorder;
    TavrinServiceCore core(server.url(), "sandbox-key", service);
    core.collectData("latency-" + std::to_string(getpid()) + "-" + std::to_string(n));
    times.append(recorder->times);
  }
  return times;
}

void BM_ExchangeLatency(benchmark::State& state) {
  const auto profile = tool::ProfileGenerator(bench::phoneOptions(tool::Preset::small)).generate();
  sandbox::ExchangeTimes now, before;
  for (auto _ : state) {
    before = collectAgainst(false, profile);
    now = collectAgainst(true, profile);
  }

  std::ostringstream out;
  out << std::fixed << std::setprecision(1) << bench::PerformanceReport::machine() << "\n"
      << servicesPerConfiguration
      << " service objects one after the other, each logging in (one new connection) and "
         "collecting the small phone once, against a sandbox in the same process:\n\n"
      << bench::latencyTable(
             {{"before: Nagle on the sandbox's sockets", before}, {"now: TCP_NODELAY", now}})
      << "\nTarget: the median of every exchange under 10 ms on loopback.\n\n"
         "| exchange | median now | held |\n|---|---:|---|\n";
  for (const auto& [name, times] :
       {std::pair{"login", now.login}, {"check", now.check}, {"upload", now.upload}}) {
    const double median = bench::percentileMilliseconds(times, 0.5);
    out << "| " << name << " | " << median << " ms | " << (median < 10 ? "yes" : "**no**")
        << " |\n";
    state.counters[std::string(name) + "_p50_ms"] = median;
  }
  out << '\n';
  bench::PerformanceReport::get().set("exchanges", out.str());
}
BENCHMARK(BM_ExchangeLatency)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tavrin

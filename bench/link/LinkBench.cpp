// The whole run over emulated mobile links: collectData on generated phones of
// three sizes against a sandbox in this process, over real TLS through a relay
// that gives the link its round trip and its rates (LinkRelay), all inside a
// network namespace of this process's own. Each phone is collected twice on
// each link, as before (zlib level 6, a connection per request) and as now
// (libdeflate at its chosen level, one kept connection). The figures go to
// the "link" region of docs/performance.md (see PerformanceReport).
#include "LinkRelay.hpp"

#include "../BenchmarkPhones.hpp"
#include "../PerformanceReport.hpp"
#include "../StageClock.hpp"

#include "generator/ProfileGenerator.hpp"

#include "SandboxServer.hpp"
#include "platform/profile/ProfilePlatform.hpp"
#include "service/TavrinServiceCore.hpp"

#include <benchmark/benchmark.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>

namespace tavrin::bench {
namespace {

const LinkProfile links[] = {
    {"4G", std::chrono::milliseconds(60), 10e6, 30e6},
    {"3G", std::chrono::milliseconds(150), 1e6, 4e6},
};
const std::string hostName = "api.tavrin.com";

// What one collection over a link came to.
struct LinkRun {
  double loginSeconds = 0;       // the service object made: its login
  double collectSeconds = 0;     // collectData, wall
  double collectCpuSeconds = 0;  // collectData, on the calling thread's processor
  LinkRelay::Traffic traffic;    // login included
  sandbox::HandshakeCounts handshakes;
  std::string answer;  // the sandbox's answer, or what went wrong
};

struct Configuration {
  const char* name;
  RunEngines engines;
};
const Configuration configurations[] = {
    {"before: zlib 6, a connection per request",
     {DeflateEngine::zlib, CurlTransport::Connections::perRequest}},
    {"now: libdeflate, one kept connection", {}},
};

// The sandbox every run uploads to, started once, storing on disk.
sandbox::SandboxServer& sandboxServer() {
  static const auto directory =
      std::filesystem::temp_directory_path() / ("tavrin-link-bench-" + std::to_string(getpid()));
  static sandbox::SandboxServer& server = []() -> sandbox::SandboxServer& {
    std::filesystem::create_directories(directory);
    sandbox::SandboxOptions options;
    options.hostName = hostName;
    options.database = (directory / "link.db").string();
    options.limits.maxUploadBody = std::size_t{256} << 20;
    static sandbox::SandboxServer started(std::move(options));
    started.start();
    return started;
  }();
  return server;
}

LinkRun collectOverLink(const LinkProfile& link, const platform::DeviceProfile& phone,
                        RunEngines engines, const std::string& record) {
  auto& server = sandboxServer();
  const auto before = server.handshakes();
  LinkRun run;
  {
    LinkRelay relay(link, server.port());
    const std::string address = hostName + ":" + std::to_string(relay.port());
    ServiceOptions options;
    options.platform = std::make_shared<platform::ProfilePlatform>(phone);
    options.caFile = server.tlsFiles().authority.string();
    options.resolve = {address + ":127.0.0.1"};
    try {
      StageClock clock;
      TavrinServiceCore core("https://" + address, "sandbox-key", options, engines);
      run.loginSeconds = clock.lap("login").wallSeconds;
      run.answer = core.collectData(record);
      const auto collect = clock.lap("collectData");
      run.collectSeconds = collect.wallSeconds;
      run.collectCpuSeconds = collect.cpuSeconds;
    } catch (const std::exception& error) {
      run.answer = std::string("failed: ") + error.what();
    }
    run.traffic = relay.traffic();
  }
  const auto after = server.handshakes();
  run.handshakes = {after.connections - before.connections, after.full - before.full,
                    after.resumed - before.resumed};
  return run;
}

// Every run so far, by link and phone, in the order of `configurations`.
std::map<std::pair<std::string, tool::Preset>, std::vector<LinkRun>>& results() {
  static std::map<std::pair<std::string, tool::Preset>, std::vector<LinkRun>> all;
  return all;
}

void publish() {
  std::ostringstream out;
  out << std::fixed << std::setprecision(1) << PerformanceReport::machine()
      << "- Command: `make bench-link` (as root, for the network namespace).\n\n"
      << "| link | phone | configuration | login s | collectData s | collectData CPU ms | "
         "up MB | down KB | TCP connections | TLS full / resumed |\n"
      << "|---|---|---|---:|---:|---:|---:|---:|---:|---:|\n";
  for (const auto& [key, runs] : results()) {
    for (std::size_t i = 0; i < runs.size(); ++i) {
      const auto& run = runs[i];
      out << "| " << key.first << " | " << presetName(key.second) << " | " << configurations[i].name
          << " | " << std::setprecision(2) << run.loginSeconds << " | " << run.collectSeconds
          << " | " << std::setprecision(1) << run.collectCpuSeconds * 1e3 << " | "
          << std::setprecision(3) << static_cast<double>(run.traffic.bytesUp) / 1e6 << " | "
          << std::setprecision(1) << static_cast<double>(run.traffic.bytesDown) / 1e3 << " | "
          << run.traffic.connections << " | " << run.handshakes.full << " / "
          << run.handshakes.resumed << " |\n";
    }
  }
  out << "\n| link | phone | collectData wall, now / before | CPU, now / before | bytes up, now "
         "/ before |\n|---|---|---:|---:|---:|\n"
      << std::setprecision(2);
  for (const auto& [key, runs] : results()) {
    const auto& before = runs.front();
    const auto& now = runs.back();
    out << "| " << key.first << " | " << presetName(key.second) << " | "
        << now.collectSeconds / before.collectSeconds << " | "
        << now.collectCpuSeconds / before.collectCpuSeconds << " | "
        << static_cast<double>(now.traffic.bytesUp) / static_cast<double>(before.traffic.bytesUp)
        << " |\n";
  }
  out << '\n';
  for (const auto& [key, runs] : results()) {
    for (const auto& run : runs) {
      if (run.answer.starts_with("failed")) {
        out << "**" << key.first << ", " << presetName(key.second) << ": " << run.answer
            << "**\n\n";
      }
    }
  }
  PerformanceReport::get().set("link", out.str());
}

void BM_Link(benchmark::State& state) {
  const auto& link = links[state.range(0)];
  const auto preset = presets[state.range(1)];
  const auto phone = tool::ProfileGenerator(phoneOptions(preset)).generate();
  std::vector<LinkRun> runs;
  for (auto _ : state) {
    for (const auto& configuration : configurations) {
      const std::string record = "link-" + link.name + "-" + presetName(preset) + "-" +
                                 std::to_string(getpid()) + "-" + std::to_string(runs.size());
      runs.push_back(collectOverLink(link, phone, configuration.engines, record));
      if (runs.back().answer.starts_with("failed")) state.SkipWithError(runs.back().answer.c_str());
    }
  }
  state.counters["before_s"] = runs.front().collectSeconds;
  state.counters["now_s"] = runs.back().collectSeconds;
  state.SetLabel(link.name + " " + presetName(preset));
  results()[{link.name, preset}] = std::move(runs);
  publish();
}
BENCHMARK(BM_Link)
    ->ArgsProduct({{0, 1}, {0, 1, 2}})
    ->Iterations(1)
    ->Unit(benchmark::kSecond)
    ->UseRealTime();

// Moves this process into a network namespace of its own and brings up its
// loopback, so that the emulated link neither disturbs nor is disturbed by
// other traffic on the machine. The reason when it cannot.
std::optional<std::string> enterPrivateNetwork() {
  if (unshare(CLONE_NEWNET) != 0) return std::string("unshare: ") + std::strerror(errno);
  const int control = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (control < 0) return std::string("socket: ") + std::strerror(errno);
  ifreq request{};
  std::strncpy(request.ifr_name, "lo", IFNAMSIZ - 1);
  bool up = ioctl(control, SIOCGIFFLAGS, &request) == 0;
  request.ifr_flags = static_cast<short>(request.ifr_flags | IFF_UP);
  up = up && ioctl(control, SIOCSIFFLAGS, &request) == 0;
  const int failure = errno;
  close(control);
  if (!up) return std::string("bringing up lo: ") + std::strerror(failure);
  return std::nullopt;
}

}  // namespace
}  // namespace tavrin::bench

int main(int argc, char** argv) {
  // First, while this is the only thread: threads made later share the namespace.
  if (const auto problem = tavrin::bench::enterPrivateNetwork()) {
    std::cout << "bench-link: cannot make a network namespace of its own (" << *problem
              << "; it needs root or CAP_SYS_ADMIN), so it measures nothing.\n";
    return 0;
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

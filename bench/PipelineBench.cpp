// The whole run on generated phones of three sizes: collectData against a
// sandbox in this process over real TLS on loopback, twice in the same run: as
// before (zlib level 6, a new connection for every request) and as now
// (libdeflate, one kept connection). For each: each stage's time, the
// peak resident memory above the client's baseline, the sizes of the JSON,
// DEFLATE and base64 forms and the TLS handshakes; beside them, on the same
// JSON, both engines alone, zlib's one-shot compress2 and memcpy. The figures
// go to docs/performance.md (see PerformanceReport).
//
// Each collection runs in a child forked from this process, so that its memory
// is measured alone: the sandbox that receives, inflates, checks and stores
// the upload stays here, in the parent, serving on its own threads.
#include "AllocationCounter.hpp"
#include "BenchmarkPhones.hpp"
#include "CollectPhoneChild.hpp"
#include "PerformanceReport.hpp"
#include "StageClock.hpp"

#include "generator/OfflineCollection.hpp"
#include "generator/ProfileGenerator.hpp"

#include "ResidentMemory.hpp"
#include "SandboxServer.hpp"
#include "codec/RawDeflate.hpp"
#include "codec/ZlibStream.hpp"
#include "os/releaseFreedHeap.hpp"
#include "platform/profile/ProfilePlatform.hpp"
#include "service/TavrinServiceCore.hpp"

#include <tavrin/codec.hpp>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <libdeflate.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <chrono>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace tavrin {
namespace {

using bench::collectPhoneFlag;
using bench::PerformanceReport;
using bench::phoneOptions;
using bench::presetName;
using bench::presets;
using bench::StageTime;

// What one collection run measured, and what the sandbox made of its upload.
struct RunFigures {
  std::vector<StageTime> stages;  // in run order; each source is a stage of its own
  std::size_t baselineResident = 0, peakAboveBaseline = 0;
  std::size_t jsonBytes = 0, deflateBytes = 0, base64Bytes = 0;
  std::size_t uploadExtraHeap = 0;      // heap the upload added to what the run held
  std::string answer;                   // the sandbox's answer, or what went wrong
  bool stored = false;                  // the sandbox accepted and stored the upload
  sandbox::HandshakeCounts handshakes;  // of the run's connections, login included
  // The base64 encoding of the same compressed bytes timed on its own, to
  // split the run's "DEFLATE and base64" stage.
  double base64Wall = 0, base64Cpu = 0;
};

// Marks the stages of a run as the service reports its progress: each
// boundary ends a stage with its time and its peak memory and starts the next.
class StageRecorder final : public CollectionObserver {
 public:
  void begin() {
    os::releaseFreedHeap();
    baselineResident = sandbox::ResidentMemory::current();
    _baselineHeap = bench::AllocationCounter::current();
    sandbox::ResidentMemory::resetPeak();
    bench::AllocationCounter::resetPeak();
    _clock.restart();
  }
  void endStage(std::string name) {
    auto stage = _clock.lap(std::move(name));
    stage.peakResident = sandbox::ResidentMemory::peak() - baselineResident;
    stage.peakHeap = bench::AllocationCounter::peak() - _baselineHeap;
    stage.heldHeap = bench::AllocationCounter::current() - _baselineHeap;
    stages.push_back(std::move(stage));
    sandbox::ResidentMemory::resetPeak();
    bench::AllocationCounter::resetPeak();
    _clock.restart();
  }

  void sourceFinished(std::string_view name, std::size_t, std::chrono::nanoseconds) override {
    endStage(std::string(name));
  }
  void exchangeStarted(std::string_view name) override {
    if (name == "check") endStage("permissions");
    if (name == "upload") endStage("DEFLATE and base64");
  }
  void exchangeFinished(std::string_view name, const ExchangeOutcome&) override {
    if (name != "login") endStage(std::string(name));
  }

  std::vector<StageTime> stages;
  std::size_t baselineResident = 0;

 private:
  bench::StageClock _clock;
  std::size_t _baselineHeap = 0;
};

// The runs of one preset, and its JSON made offline in this process for the
// references.
struct PresetData {
  RunFigures run;     // now: libdeflate, one kept connection
  RunFigures oldRun;  // as before: zlib level 6, a connection per request
  std::vector<std::uint8_t> json;
};

constexpr RunEngines oldEngines{DeflateEngine::zlib, CurlTransport::Connections::perRequest};

std::map<tool::Preset, PresetData>& presetData() {
  static std::map<tool::Preset, PresetData> all;
  return all;
}

// The sandbox every run uploads to, started once.
sandbox::SandboxServer& sandboxServer() {
  static sandbox::SandboxServer& server = []() -> sandbox::SandboxServer& {
    sandbox::SandboxOptions options;
    options.limits.maxUploadBody = std::size_t{256} << 20;
    static sandbox::SandboxServer started(std::move(options));
    started.start();
    return started;
  }();
  return server;
}

// The engines of a configuration by name, for the child's command line.
constexpr RunEngines enginesNamed(std::string_view name) {
  return name == "before" ? oldEngines : RunEngines{};
}

}  // namespace

// The child: collects one generated phone against the sandbox and writes its
// figures to standard output, one "stage" line per stage and "key value" lines.
int bench::collectPhoneChild(int argc, char** argv) {
  if (argc != 8 || std::string_view(argv[1]) != collectPhoneFlag) return -1;
  const auto preset = tool::presetNamed(argv[2]);
  if (!preset) return 2;
  const auto profile = tool::ProfileGenerator(phoneOptions(*preset)).generate();
  std::cout.precision(17);
  try {
    auto recorder = std::make_shared<StageRecorder>();
    ServiceOptions options;
    options.platform = std::make_shared<platform::ProfilePlatform>(profile);
    options.resolve = {argv[5]};
    options.caFile = argv[6];
    options.observer = recorder;
    TavrinServiceCore core(argv[4], "sandbox-key", options, enginesNamed(argv[3]));
    recorder->begin();
    const std::string answer =
        core.collectData(argv[7], [&](std::string_view) { recorder->endStage("JSON"); });
    recorder->endStage("end");
    recorder->stages.pop_back();  // returning the answer: nothing to measure
    std::cout << "answer\t" << answer << "\nbaseline\t" << recorder->baselineResident << '\n';
    for (const auto& s : recorder->stages) {
      std::cout << "stage\t" << s.name << '\t' << s.wallSeconds << '\t' << s.cpuSeconds << '\t'
                << s.pageFaults << '\t' << s.peakResident << '\t' << s.peakHeap << '\t'
                << s.heldHeap << '\n';
    }
  } catch (const std::exception& error) {
    std::cout << "answer\tfailed: " << error.what() << '\n';
  }
  return 0;
}

namespace {

// Runs one collection of the phone in a fresh process, this program started
// again, so that its heap and its memory are its own, and reads its figures
// back through a pipe.
RunFigures collectInChild(tool::Preset preset, const std::string& record,
                          std::string_view configuration) {
  auto& server = sandboxServer();
  const auto handshakesBefore = server.handshakes();
  int channel[2];
  if (pipe2(channel, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, channel[1], STDOUT_FILENO);
  std::vector<std::string> arguments = {"/proc/self/exe",
                                        std::string(collectPhoneFlag),
                                        presetName(preset),
                                        std::string(configuration),
                                        server.url(),
                                        server.resolve(),
                                        server.tlsFiles().authority.string(),
                                        record};
  std::vector<char*> argv;
  for (auto& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  pid_t child = 0;
  const int spawned = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(channel[1]);
  std::string text;
  char buffer[4096];
  for (ssize_t n; spawned == 0 && (n = read(channel[0], buffer, sizeof buffer)) > 0;) {
    text.append(buffer, static_cast<std::size_t>(n));
  }
  close(channel[0]);
  if (spawned == 0) waitpid(child, nullptr, 0);

  RunFigures run;
  const auto handshakesAfter = server.handshakes();
  run.handshakes = {handshakesAfter.connections - handshakesBefore.connections,
                    handshakesAfter.full - handshakesBefore.full,
                    handshakesAfter.resumed - handshakesBefore.resumed};
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    std::string key;
    std::getline(fields, key, '\t');
    if (key == "answer") {
      std::getline(fields, run.answer);
    } else if (key == "baseline") {
      fields >> run.baselineResident;
    } else if (key == "stage") {
      StageTime stage;
      std::getline(fields, stage.name, '\t');
      fields >> stage.wallSeconds >> stage.cpuSeconds >> stage.pageFaults >> stage.peakResident >>
          stage.peakHeap >> stage.heldHeap;
      run.peakAboveBaseline = std::max(run.peakAboveBaseline, stage.peakResident);
      if (stage.name == "upload" && !run.stages.empty()) {
        run.uploadExtraHeap = stage.peakHeap - run.stages.back().heldHeap;
      }
      run.stages.push_back(std::move(stage));
    }
  }
  if (const auto upload = server.store().find(record)) {
    run.stored = upload->accepted;
    run.jsonBytes = upload->decoded.jsonSize;
    run.deflateBytes = upload->decoded.deflateSize;
    run.base64Bytes = upload->decoded.base64Size;
  }
  return run;
}

// One reference's fastest timed iteration, on the wall and on the thread's
// processor (the fairer of the two on a machine shared with other work), and
// the size of its output.
struct Timing {
  double wall = 0, cpu = 0;
  std::size_t bytes = 0;
};

// The references, on the JSON of the same preset.
struct ReferenceFigures {
  Timing ours, zlibEngine, compress2, libdeflateAlone, memcpy;
  std::map<int, Timing> libdeflateLevels;  // by level
};

std::map<tool::Preset, ReferenceFigures>& references() {
  static std::map<tool::Preset, ReferenceFigures> all;
  return all;
}

double megabytes(std::size_t bytes) { return static_cast<double>(bytes) / 1e6; }

double ratio(double part, double whole) { return whole > 0 ? part / whole : 0; }

std::string sizes(tool::Preset preset) {
  const auto o = tool::presetOptions(preset);
  std::ostringstream out;
  out << o.contacts << " contacts, " << o.groups << " groups, " << o.calendars << " calendars, "
      << o.events << " event rows, " << o.reminders << " reminders, " << o.assets << " assets, "
      << o.albums << " albums, " << o.devices << " capture devices";
  return out.str();
}

// The run's CPU on the calling thread, and DEFLATE's part of it: the
// "DEFLATE and base64" stage less base64 timed on its own.
std::pair<double, double> runCpu(const RunFigures& run) {
  double cpu = 0, deflateCpu = 0;
  for (const auto& stage : run.stages) {
    cpu += stage.cpuSeconds;
    if (stage.name == "DEFLATE and base64") deflateCpu = stage.cpuSeconds - run.base64Cpu;
  }
  return {cpu, deflateCpu};
}

double wallOf(const RunFigures& run, std::string_view name) {
  double wall = 0;
  for (const auto& stage : run.stages) {
    if (name.empty() || stage.name == name) wall += stage.wallSeconds;
  }
  return wall;
}

// The stage table of one run, and what it kept and sent.
void writeRun(std::ostream& out, const RunFigures& run) {
  const auto [cpu, deflateCpu] = runCpu(run);
  out << "| stage | wall ms | thread CPU ms | share of run CPU | page faults | peak resident MB "
         "|\n"
      << "|---|---:|---:|---:|---:|---:|\n";
  long faults = 0;
  for (const auto& stage : run.stages) {
    faults += stage.pageFaults;
    out << "| " << stage.name << " | " << stage.wallSeconds * 1e3 << " | " << stage.cpuSeconds * 1e3
        << " | " << 100 * stage.cpuSeconds / cpu << " % | " << stage.pageFaults << " | "
        << megabytes(stage.peakResident) << " |\n";
  }
  const double json = static_cast<double>(std::max<std::size_t>(run.jsonBytes, 1));
  out << "| **whole run** | " << wallOf(run, {}) * 1e3 << " | " << cpu * 1e3 << " | 100 % | "
      << faults << " | " << megabytes(run.peakAboveBaseline) << " |\n\n"
      << std::setprecision(2)
      << "Base64 alone, on the same compressed bytes: " << run.base64Wall * 1e3 << " ms wall, "
      << run.base64Cpu * 1e3
      << " ms CPU; the rest of \"DEFLATE and base64\" is DEFLATE. Sizes: JSON "
      << megabytes(run.jsonBytes) << " MB, DEFLATE " << megabytes(run.deflateBytes) << " MB (ratio "
      << ratio(json, static_cast<double>(run.deflateBytes)) << "), base64 "
      << megabytes(run.base64Bytes) << " MB. Peak resident memory above the client's baseline of "
      << megabytes(run.baselineResident) << " MB: " << megabytes(run.peakAboveBaseline) << " MB, "
      << static_cast<double>(run.peakAboveBaseline) / json << " times the JSON. The upload added "
      << megabytes(run.uploadExtraHeap) << " MB of heap to what the run held, "
      << ratio(static_cast<double>(run.uploadExtraHeap), static_cast<double>(run.base64Bytes))
      << " times the base64 text. The sandbox answered: " << run.answer << ".\n\n"
      << std::setprecision(1);
}

// The two runs of a preset side by side.
void writeComparison(std::ostream& out, const PresetData& data) {
  const auto& now = data.run;
  const auto& old = data.oldRun;
  out << "| the same phone, collected | as before: zlib level 6, a connection per request | "
         "now: libdeflate level "
      << libdeflateLevel << ", one kept connection | now / before |\n"
      << "|---|---:|---:|---:|\n";
  const auto row = [&](const char* figure, double before, double after) {
    out << "| " << figure << " | " << before << " | " << after << " | " << std::setprecision(2)
        << ratio(after, before) << std::setprecision(1) << " |\n";
  };
  row("whole run, wall ms", wallOf(old, {}) * 1e3, wallOf(now, {}) * 1e3);
  row("whole run, thread CPU ms", runCpu(old).first * 1e3, runCpu(now).first * 1e3);
  row("DEFLATE, thread CPU ms", runCpu(old).second * 1e3, runCpu(now).second * 1e3);
  row("check, wall ms", wallOf(old, "check") * 1e3, wallOf(now, "check") * 1e3);
  row("upload, wall ms", wallOf(old, "upload") * 1e3, wallOf(now, "upload") * 1e3);
  out << std::setprecision(3);
  row("DEFLATE MB (uploaded as base64)", megabytes(old.deflateBytes), megabytes(now.deflateBytes));
  out << std::setprecision(1);
  row("peak resident MB", megabytes(old.peakAboveBaseline), megabytes(now.peakAboveBaseline));
  out << "| TLS connections, login included: full handshakes / resumed | " << old.handshakes.full
      << " / " << old.handshakes.resumed << " | " << now.handshakes.full << " / "
      << now.handshakes.resumed << " | |\n\n";
}

void writeReferences(std::ostream& out, const PresetData& data, const ReferenceFigures& r) {
  const auto row = [&](const char* name, const Timing& timing) {
    out << "| " << name << " | " << timing.wall * 1e3 << " | " << timing.cpu * 1e3 << " | ";
    if (timing.bytes)
      out << std::setprecision(3) << megabytes(timing.bytes) << std::setprecision(1);
    out << " | " << 100 * ratio(timing.cpu, r.zlibEngine.cpu) << " % | ";
    if (timing.bytes) {
      out << std::setprecision(3)
          << ratio(static_cast<double>(timing.bytes), static_cast<double>(r.zlibEngine.bytes))
          << std::setprecision(1);
    }
    out << " |\n";
  };
  out << "| on the same " << std::setprecision(2) << megabytes(data.json.size())
      << std::setprecision(1)
      << " MB of JSON | fastest wall ms | fastest thread CPU ms | output MB | CPU of zlib's | "
         "bytes of zlib's |\n"
      << "|---|---:|---:|---:|---:|---:|\n";
  row(("compress (libdeflate, level " + std::to_string(libdeflateLevel) + "): now").c_str(),
      r.ours);
  row("zlib, level 6, through the driver: before", r.zlibEngine);
  row("zlib compress2, level 6", r.compress2);
  row("libdeflate alone, same level, no copy", r.libdeflateAlone);
  row("memcpy", r.memcpy);
  out << '\n';
  if (r.libdeflateLevels.empty()) return;
  out << "| libdeflate level, on the same JSON | CPU of zlib level 6's | bytes of zlib level 6's "
         "|\n"
      << "|---|---:|---:|\n"
      << std::setprecision(3);
  for (const auto& [level, timing] : r.libdeflateLevels) {
    out << "| " << level << (level == libdeflateLevel ? " (compress)" : "") << " | "
        << ratio(timing.cpu, r.zlibEngine.cpu) << " | "
        << ratio(static_cast<double>(timing.bytes), static_cast<double>(r.zlibEngine.bytes))
        << " |\n";
  }
  out << std::setprecision(1) << '\n';
}

// The targets, on the presets measured so far.
void writeTargets(std::ostream& out) {
  out << "Targets:\n\n| target | preset | measured | held |\n|---|---|---:|---|\n"
      << std::setprecision(2);
  const auto row = [&](const char* target, tool::Preset preset, double value, const char* unit,
                       bool held) {
    out << "| " << target << " | " << presetName(preset) << " | " << value << unit << " | "
        << (held ? "yes" : "**no**") << " |\n";
  };
  for (const auto& [preset, data] : presetData()) {
    if (preset == tool::Preset::small) continue;
    const auto bytes = ratio(static_cast<double>(data.run.deflateBytes),
                             static_cast<double>(data.oldRun.deflateBytes));
    out << std::setprecision(3);
    row("upload bytes at most 0.93 times zlib level 6's (both runs)", preset, bytes, " times",
        bytes <= 0.93);
    out << std::setprecision(2);
    if (const auto it = references().find(preset); it != references().end()) {
      const auto time = ratio(it->second.ours.cpu, it->second.zlibEngine.cpu);
      row("DEFLATE time at most 0.5 times zlib level 6's (same JSON, CPU)", preset, time, " times",
          time <= 0.5);
    }
  }
  if (const auto it = presetData().find(tool::Preset::large); it != presetData().end()) {
    const auto& run = it->second.run;
    const auto cpu = ratio(runCpu(run).first, runCpu(it->second.oldRun).first);
    row("whole-run CPU at most 0.5 times the run as before", tool::Preset::large, cpu, " times",
        cpu <= 0.5);
    const auto json = static_cast<double>(std::max<std::size_t>(run.jsonBytes, 1));
    const auto resident = static_cast<double>(run.peakAboveBaseline) / json;
    row("peak resident memory at most 1.5 times the JSON", tool::Preset::large, resident, " times",
        resident <= 1.5);
    const auto copies =
        ratio(static_cast<double>(run.uploadExtraHeap), static_cast<double>(run.base64Bytes));
    row("the upload body copies the base64 text at most once", tool::Preset::large, copies,
        " copies", copies < 1.5);
  }
  out << std::setprecision(1) << '\n';
}

// Rewrites the report's "pipeline" region from everything measured so far.
void publish() {
  std::ostringstream out;
  out << std::fixed << std::setprecision(1);
  out << PerformanceReport::machine() << "\n";
  for (const auto& [preset, data] : presetData()) {
    out << "### " << presetName(preset) << ": " << sizes(preset) << "\n\n";
    for (const auto* run : {&data.oldRun, &data.run}) {
      if (!run->stored)
        out << "**The sandbox did not store an upload of this phone: " << run->answer << "**\n\n";
    }
    writeRun(out, data.run);
    writeComparison(out, data);
    if (const auto it = references().find(preset); it != references().end()) {
      writeReferences(out, data, it->second);
    }
  }
  writeTargets(out);
  PerformanceReport::get().set("pipeline", out.str());
}

// The fastest of the timed iterations of `work`, which returns its output size.
template <typename Work>
Timing fastest(benchmark::State& state, Work work) {
  Timing best{1e300, 1e300, 0};
  for (auto _ : state) {
    bench::StageClock clock;
    best.bytes = work();
    const auto lap = clock.lap("");
    best.wall = std::min(best.wall, lap.wallSeconds);
    best.cpu = std::min(best.cpu, lap.cpuSeconds);
  }
  return best;
}

// Times base64 alone on the bytes a run compressed, to split its "DEFLATE and
// base64" stage.
void timeBase64(RunFigures& run, const std::vector<std::uint8_t>& json, DeflateEngine engine) {
  withRawDeflate(json, engine, [&](std::span<const std::uint8_t> compressed) {
    bench::StageClock clock;
    benchmark::DoNotOptimize(base64Encode(compressed));
    const auto base64 = clock.lap("base64");
    run.base64Wall = base64.wallSeconds;
    run.base64Cpu = base64.cpuSeconds;
  });
}

void BM_WholeRun(benchmark::State& state) {
  const auto preset = presets[state.range(0)];
  const auto profile = tool::ProfileGenerator(phoneOptions(preset)).generate();
  PresetData data;
  int runs = 0;
  const auto record = [&] {
    return std::string("bench-") + presetName(preset) + "-" + std::to_string(getpid()) + "-" +
           std::to_string(++runs);
  };
  // Each configuration three times, in turns, keeping the run of least CPU: on
  // a machine shared with other work one run alone can be slowed by a fifth.
  const auto keepLeastCpu = [](RunFigures& kept, RunFigures run) {
    if (kept.stages.empty() || runCpu(run).first < runCpu(kept).first) kept = std::move(run);
  };
  for (auto _ : state) {
    for (int round = 0; round < 3; ++round) {
      keepLeastCpu(data.oldRun, collectInChild(preset, record(), "before"));
      keepLeastCpu(data.run, collectInChild(preset, record(), "now"));
    }
  }
  for (const auto* run : {&data.oldRun, &data.run}) {
    if (!run->stored) state.SkipWithError(("upload not stored: " + run->answer).c_str());
  }

  // The JSON once more, made here, for base64 alone and the references.
  const auto offline = tool::collectOffline(profile);
  data.json.assign(offline.json.begin(), offline.json.end());
  timeBase64(data.oldRun, data.json, oldEngines.deflate);
  timeBase64(data.run, data.json, DeflateEngine::libdeflate);

  const auto [cpu, deflateCpu] = runCpu(data.run);
  state.counters["json_MB"] = megabytes(data.run.jsonBytes);
  state.counters["base64_MB"] = megabytes(data.run.base64Bytes);
  state.counters["peak/json"] = static_cast<double>(data.run.peakAboveBaseline) /
                                static_cast<double>(std::max<std::size_t>(data.run.jsonBytes, 1));
  state.counters["cpu/before"] = ratio(cpu, runCpu(data.oldRun).first);
  state.SetLabel(presetName(preset));
  presetData()[preset] = std::move(data);
  publish();
}
BENCHMARK(BM_WholeRun)->DenseRange(0, 2)->Iterations(1)->Unit(benchmark::kMillisecond);

const std::vector<std::uint8_t>& presetJson(benchmark::State& state) {
  const auto preset = presets[state.range(0)];
  auto& data = presetData()[preset];
  if (data.json.empty()) {
    const auto offline =
        tool::collectOffline(tool::ProfileGenerator(phoneOptions(preset)).generate());
    data.json.assign(offline.json.begin(), offline.json.end());
  }
  state.SetLabel(presetName(preset));
  return data.json;
}

void reportReference(benchmark::State& state, Timing timing, Timing ReferenceFigures::*figure) {
  const auto preset = presets[state.range(0)];
  references()[preset].*figure = timing;
  state.SetBytesProcessed(
      static_cast<std::int64_t>(presetData()[preset].json.size() * state.iterations()));
  publish();
}

void BM_Compress(benchmark::State& state) {
  const auto& json = presetJson(state);
  const auto result =
      fastest(state, [&] { return compress(json, CompressionAlgorithm::zlib)->size(); });
  reportReference(state, result, &ReferenceFigures::ours);
}

void BM_ZlibEngine(benchmark::State& state) {
  const auto& json = presetJson(state);
  const auto result = fastest(state, [&] {
    std::size_t size = 0;
    withRawDeflate(json, DeflateEngine::zlib, [&](auto compressed) { size = compressed.size(); });
    return size;
  });
  reportReference(state, result, &ReferenceFigures::zlibEngine);
}

void BM_ZlibCompress2(benchmark::State& state) {
  const auto& json = presetJson(state);
  std::vector<std::uint8_t> out(compressBound(static_cast<uLong>(json.size())));
  const auto result = fastest(state, [&] {
    uLongf size = static_cast<uLongf>(out.size());
    compress2(out.data(), &size, json.data(), static_cast<uLong>(json.size()),
              ZlibStream::compressionLevel);
    return static_cast<std::size_t>(size);
  });
  reportReference(state, result, &ReferenceFigures::compress2);
}

// libdeflate alone at `level`: one compressor and room for the worst case
// made before timing, no copy of the output.
Timing libdeflateAlone(benchmark::State& state, const std::vector<std::uint8_t>& json, int level) {
  std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> compressor(
      libdeflate_alloc_compressor(level), libdeflate_free_compressor);
  std::vector<std::uint8_t> out(libdeflate_deflate_compress_bound(compressor.get(), json.size()));
  return fastest(state, [&] {
    return libdeflate_deflate_compress(compressor.get(), json.data(), json.size(), out.data(),
                                       out.size());
  });
}

void BM_LibdeflateAlone(benchmark::State& state) {
  reportReference(state, libdeflateAlone(state, presetJson(state), libdeflateLevel),
                  &ReferenceFigures::libdeflateAlone);
}

void BM_Memcpy(benchmark::State& state) {
  const auto& json = presetJson(state);
  std::vector<std::uint8_t> out(json.size(), 1);  // pages touched before timing
  auto result = fastest(state, [&] {
    std::memcpy(out.data(), json.data(), json.size());
    benchmark::ClobberMemory();
    return json.size();
  });
  result.bytes = 0;  // a copy, not an encoding
  reportReference(state, result, &ReferenceFigures::memcpy);
}

// libdeflate at the levels around the one compress() uses, for choosing it.
void BM_LibdeflateLevel(benchmark::State& state) {
  const int level = static_cast<int>(state.range(1));
  const auto result = libdeflateAlone(state, presetJson(state), level);
  references()[presets[state.range(0)]].libdeflateLevels[level] = result;
  publish();
}

BENCHMARK(BM_Compress)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZlibEngine)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZlibCompress2)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LibdeflateAlone)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Memcpy)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LibdeflateLevel)
    ->ArgsProduct({{1, 2}, {4, 5, 6, 7}})
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tavrin

// The whole run on generated phones of three sizes: collectData against a
// sandbox in this process over real TLS on loopback, with each stage's time,
// the peak resident memory above the client's baseline, and the sizes of the
// JSON, DEFLATE and base64 forms; beside it, on the same JSON, zlib's one-shot
// compress2 at our level, libdeflate at level 6 and memcpy. The figures go to
// docs/performance.md (see PerformanceReport).
//
// The collection runs in a child forked from this process, so that its memory
// is measured alone: the sandbox that receives, inflates, checks and stores
// the upload stays here, in the parent, serving on its own threads.
#include "AllocationCounter.hpp"
#include "PerformanceReport.hpp"
#include "StageClock.hpp"

#include "generator/OfflineCollection.hpp"
#include "generator/ProfileGenerator.hpp"

#include "ResidentMemory.hpp"
#include "SandboxServer.hpp"
#include "codec/ZlibStream.hpp"
#include "os/releaseFreedHeap.hpp"
#include "platform/profile/ProfilePlatform.hpp"
#include "service/TavrinServiceCore.hpp"

#include <tavrin/codec.hpp>

#include <benchmark/benchmark.h>
#include <libdeflate.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <chrono>
#include <cstring>
#include <iomanip>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace tavrin {
namespace {

using bench::PerformanceReport;
using bench::StageTime;

constexpr tool::Preset presets[] = {tool::Preset::small, tool::Preset::typical,
                                    tool::Preset::large};
const char* presetName(tool::Preset preset) {
  return preset == tool::Preset::small     ? "small"
         : preset == tool::Preset::typical ? "typical"
                                           : "large";
}

tool::GeneratorOptions phoneOptions(tool::Preset preset) {
  auto options = tool::presetOptions(preset);
  options.seed = 11;
  return options;
}

// What one collection run measured, and what the sandbox made of its upload.
struct RunFigures {
  std::vector<StageTime> stages;  // in run order; each source is a stage of its own
  std::size_t baselineResident = 0, peakAboveBaseline = 0;
  std::size_t peakLive = 0;  // the most bytes in use at once: heap, and the JSON's own mapping
  std::size_t jsonBytes = 0, deflateBytes = 0, base64Bytes = 0;
  std::size_t uploadExtraHeap = 0;  // heap the upload added to what the run held
  std::string answer;               // the sandbox's answer, or what went wrong
  bool stored = false;              // the sandbox accepted and stored the upload
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
  void datasetReady(std::string_view) override { endStage("JSON"); }
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

// The same preset's JSON, made offline in this process for the references.
struct PresetData {
  RunFigures run;
  std::vector<std::uint8_t> json;
};

// The JSON text lives in a memory mapping of its own, not on the heap, from
// the moment it is written until it is compressed.
bool holdsJson(const StageTime& stage) {
  return stage.name == "JSON" || stage.name == "DEFLATE and base64";
}

std::size_t liveBytes(const RunFigures& run, const StageTime& stage) {
  return stage.peakHeap + (holdsJson(stage) ? run.jsonBytes : 0);
}

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

// Runs one collection of the phone in a child process and reads its figures
// back through a pipe, one "stage" line per stage and "key value" lines.
RunFigures collectInChild(const platform::DeviceProfile& profile, const std::string& record) {
  auto& server = sandboxServer();
  int channel[2];
  if (pipe(channel) != 0) throw std::runtime_error("no pipe");
  const pid_t child = fork();
  if (child == 0) {
    close(channel[0]);
    std::ostringstream out;
    out.precision(17);
    try {
      auto recorder = std::make_shared<StageRecorder>();
      ServiceOptions options;
      options.setPlatform(std::make_shared<platform::ProfilePlatform>(profile))
          .setCaFile(server.tlsFiles().authority.string())
          .setResolve({server.resolve()})
          .setObserver(recorder);
      TavrinServiceCore core(server.url(), "sandbox-key", options);
      recorder->begin();
      const std::string answer = core.collectData(record);
      recorder->endStage("end");
      recorder->stages.pop_back();  // returning the answer: nothing to measure
      out << "answer\t" << answer << "\nbaseline\t" << recorder->baselineResident << '\n';
      for (const auto& s : recorder->stages) {
        out << "stage\t" << s.name << '\t' << s.wallSeconds << '\t' << s.cpuSeconds << '\t'
            << s.peakResident << '\t' << s.peakHeap << '\t' << s.heldHeap << '\n';
      }
    } catch (const std::exception& error) {
      out << "answer\tfailed: " << error.what() << '\n';
    }
    const std::string text = out.str();
    [[maybe_unused]] const auto written = write(channel[1], text.data(), text.size());
    _exit(0);  // no static destructors: they belong to the parent
  }
  close(channel[1]);
  std::string text;
  char buffer[4096];
  for (ssize_t n; (n = read(channel[0], buffer, sizeof buffer)) > 0;) {
    text.append(buffer, static_cast<std::size_t>(n));
  }
  close(channel[0]);
  waitpid(child, nullptr, 0);

  RunFigures run;
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
      fields >> stage.wallSeconds >> stage.cpuSeconds >> stage.peakResident >> stage.peakHeap >>
          stage.heldHeap;
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
  for (const auto& stage : run.stages) run.peakLive = std::max(run.peakLive, liveBytes(run, stage));
  return run;
}

// The references, on the JSON of the same preset.
struct ReferenceFigures {
  double ourDeflate = 0, compress2 = 0, libdeflate = 0, memcpy = 0;  // fastest, seconds
  std::size_t ourDeflateBytes = 0, compress2Bytes = 0, libdeflateBytes = 0;
};

std::map<tool::Preset, ReferenceFigures>& references() {
  static std::map<tool::Preset, ReferenceFigures> all;
  return all;
}

double megabytes(std::size_t bytes) { return static_cast<double>(bytes) / 1e6; }

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

// Rewrites the report's "pipeline" region from everything measured so far.
void publish() {
  std::ostringstream out;
  out << std::fixed << std::setprecision(1);
  out << PerformanceReport::machine() << "\n";
  for (const auto& [preset, data] : presetData()) {
    const auto& run = data.run;
    const auto [cpu, deflateCpu] = runCpu(run);
    out << "### " << presetName(preset) << ": " << sizes(preset) << "\n\n";
    if (!run.stored)
      out << "**The sandbox did not store this run's upload: " << run.answer << "**\n\n";
    out << "| stage | wall ms | thread CPU ms | share of run CPU | peak resident MB | peak live MB "
           "|\n"
        << "|---|---:|---:|---:|---:|---:|\n";
    double wall = 0;
    for (const auto& stage : run.stages) {
      wall += stage.wallSeconds;
      out << "| " << stage.name << " | " << stage.wallSeconds * 1e3 << " | "
          << stage.cpuSeconds * 1e3 << " | " << 100 * stage.cpuSeconds / cpu << " % | "
          << megabytes(stage.peakResident) << " | " << megabytes(liveBytes(run, stage)) << " |\n";
    }
    out << "| **whole run** | " << wall * 1e3 << " | " << cpu * 1e3 << " | 100 % | "
        << megabytes(run.peakAboveBaseline) << " | " << megabytes(run.peakLive) << " |\n\n"
        << "Base64 alone, on the same compressed bytes: " << std::setprecision(2)
        << run.base64Wall * 1e3 << " ms wall, " << run.base64Cpu * 1e3
        << " ms CPU; the rest of \"DEFLATE and base64\" is DEFLATE. Sizes: JSON "
        << megabytes(run.jsonBytes) << " MB, DEFLATE " << megabytes(run.deflateBytes)
        << " MB (ratio "
        << static_cast<double>(run.jsonBytes) /
               static_cast<double>(std::max<std::size_t>(run.deflateBytes, 1))
        << "), base64 " << megabytes(run.base64Bytes)
        << " MB. Peak resident memory above the client's baseline of "
        << megabytes(run.baselineResident) << " MB: " << megabytes(run.peakAboveBaseline) << " MB, "
        << static_cast<double>(run.peakAboveBaseline) /
               static_cast<double>(std::max<std::size_t>(run.jsonBytes, 1))
        << " times the JSON; peak live memory " << megabytes(run.peakLive) << " MB, "
        << static_cast<double>(run.peakLive) /
               static_cast<double>(std::max<std::size_t>(run.jsonBytes, 1))
        << " times. The upload added " << megabytes(run.uploadExtraHeap)
        << " MB of heap to what the run held, "
        << static_cast<double>(run.uploadExtraHeap) /
               static_cast<double>(std::max<std::size_t>(run.base64Bytes, 1))
        << " times the base64 text. The sandbox answered: " << run.answer << ".\n\n"
        << std::setprecision(1);
    if (const auto it = references().find(preset); it != references().end()) {
      const auto& r = it->second;
      const auto row = [&](const char* name, double seconds, std::size_t bytes) {
        out << "| " << name << " | " << seconds * 1e3 << " | ";
        if (bytes) out << std::setprecision(2) << megabytes(bytes) << std::setprecision(1);
        out << " | " << 100 * seconds / r.ourDeflate << " % |\n";
      };
      out << "| on the same " << std::setprecision(2) << megabytes(data.json.size())
          << std::setprecision(1)
          << " MB of JSON | fastest wall ms | output MB | of our DEFLATE |\n"
          << "|---|---:|---:|---:|\n";
      row("our DEFLATE (compress, zlib, level 6)", r.ourDeflate, r.ourDeflateBytes);
      row("zlib compress2, level 6", r.compress2, r.compress2Bytes);
      row("libdeflate, level 6", r.libdeflate, r.libdeflateBytes);
      row("memcpy", r.memcpy, 0);
      out << "\n";
    }
    if (preset == tool::Preset::large) {
      const double ratio =
          static_cast<double>(run.peakAboveBaseline) / static_cast<double>(run.jsonBytes);
      const double share = 100 * (cpu - deflateCpu) / cpu;
      const double copies =
          static_cast<double>(run.uploadExtraHeap) / static_cast<double>(run.base64Bytes);
      const double liveRatio =
          static_cast<double>(run.peakLive) / static_cast<double>(run.jsonBytes);
      out << "Targets on this preset:\n\n| target | measured | held |\n|---|---:|---|\n"
          << std::setprecision(2) << "| peak memory at most 2.5 times the JSON: resident | "
          << ratio << " times | " << (ratio <= 2.5 ? "yes" : "**no**") << " |\n"
          << "| peak memory at most 2.5 times the JSON: live (heap and JSON mapping) | "
          << liveRatio << " times | " << (liveRatio <= 2.5 ? "yes" : "**no**") << " |\n"
          << std::setprecision(1) << "| everything but DEFLATE at most 25 % of the CPU | " << share
          << " % | " << (share <= 25 ? "yes" : "**no**") << " |\n"
          << std::setprecision(2) << "| the upload body copies the base64 text at most once | "
          << copies << " copies | " << (copies < 1.5 ? "yes" : "**no**") << " |\n\n";
    }
  }
  PerformanceReport::get().set("pipeline", out.str());
}

// The fastest of the timed iterations of `work`, which returns its output size.
template <typename Work>
std::pair<double, std::size_t> fastest(benchmark::State& state, Work work) {
  double best = 1e300;
  std::size_t bytes = 0;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    bytes = work();
    best = std::min(
        best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return {best, bytes};
}

void BM_WholeRun(benchmark::State& state) {
  const auto preset = presets[state.range(0)];
  const auto profile = tool::ProfileGenerator(phoneOptions(preset)).generate();
  PresetData data;
  int runs = 0;
  for (auto _ : state) {
    data.run = collectInChild(profile, std::string("bench-") + presetName(preset) + "-" +
                                           std::to_string(getpid()) + "-" + std::to_string(++runs));
  }
  if (!data.run.stored) state.SkipWithError(("upload not stored: " + data.run.answer).c_str());

  // The JSON once more, made here, for base64 alone and the references.
  const auto offline = tool::collectOffline(profile);
  data.json.assign(offline.json.begin(), offline.json.end());
  const auto compressed = compress(data.json, CompressionAlgorithm::zlib);
  bench::StageClock clock;
  benchmark::DoNotOptimize(base64Encode(*compressed));
  const auto base64 = clock.lap("base64");
  data.run.base64Wall = base64.wallSeconds;
  data.run.base64Cpu = base64.cpuSeconds;

  const auto [cpu, deflateCpu] = runCpu(data.run);
  state.counters["json_MB"] = megabytes(data.run.jsonBytes);
  state.counters["base64_MB"] = megabytes(data.run.base64Bytes);
  state.counters["peak/json"] = static_cast<double>(data.run.peakAboveBaseline) /
                                static_cast<double>(std::max<std::size_t>(data.run.jsonBytes, 1));
  state.counters["notDeflateCpu%"] = 100 * (cpu - deflateCpu) / cpu;
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

void reportReference(benchmark::State& state, std::pair<double, std::size_t> result,
                     double ReferenceFigures::*seconds, std::size_t ReferenceFigures::*bytes) {
  const auto preset = presets[state.range(0)];
  auto& r = references()[preset];
  r.*seconds = result.first;
  if (bytes != nullptr) r.*bytes = result.second;
  state.SetBytesProcessed(
      static_cast<std::int64_t>(presetData()[preset].json.size() * state.iterations()));
  publish();
}

void BM_OurDeflate(benchmark::State& state) {
  const auto& json = presetJson(state);
  const auto result =
      fastest(state, [&] { return compress(json, CompressionAlgorithm::zlib)->size(); });
  reportReference(state, result, &ReferenceFigures::ourDeflate, &ReferenceFigures::ourDeflateBytes);
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
  reportReference(state, result, &ReferenceFigures::compress2, &ReferenceFigures::compress2Bytes);
}

void BM_Libdeflate6(benchmark::State& state) {
  const auto& json = presetJson(state);
  std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> compressor(
      libdeflate_alloc_compressor(6), libdeflate_free_compressor);
  std::vector<std::uint8_t> out(libdeflate_deflate_compress_bound(compressor.get(), json.size()));
  const auto result = fastest(state, [&] {
    return libdeflate_deflate_compress(compressor.get(), json.data(), json.size(), out.data(),
                                       out.size());
  });
  reportReference(state, result, &ReferenceFigures::libdeflate, &ReferenceFigures::libdeflateBytes);
}

void BM_Memcpy(benchmark::State& state) {
  const auto& json = presetJson(state);
  std::vector<std::uint8_t> out(json.size(), 1);  // pages touched before timing
  const auto result = fastest(state, [&] {
    std::memcpy(out.data(), json.data(), json.size());
    benchmark::ClobberMemory();
    return json.size();
  });
  reportReference(state, result, &ReferenceFigures::memcpy, nullptr);
}

BENCHMARK(BM_OurDeflate)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZlibCompress2)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Libdeflate6)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Memcpy)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tavrin

// The whole run on generated phones of three sizes: each stage's time, the
// peak resident memory above the process's baseline, and the sizes of the
// JSON, DEFLATE and base64 forms; beside them, in the same run, zlib's one-shot
// compress2 at our level, libdeflate at level 6 and memcpy on the same JSON.
// The figures go to docs/performance.md (see PerformanceReport).
#include "AllocationCounter.hpp"
#include "PerformanceReport.hpp"
#include "ResidentMemory.hpp"
#include "StageClock.hpp"

#include "generator/ProfileGenerator.hpp"

#include "codec/ZlibStream.hpp"
#include "dataset/DataExtractorManager.hpp"
#include "dataset/JsonWriter.hpp"
#include "dataset/PermissionHeplper.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <tavrin/codec.hpp>

#include <benchmark/benchmark.h>
#include <libdeflate.h>
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

// What one run measured.
struct RunFigures {
  std::vector<StageTime> stages;   // the run's own stages, in order
  std::vector<StageTime> sources;  // each source, from a second pass
  std::size_t jsonBytes = 0, deflateBytes = 0, base64Bytes = 0;
  std::size_t baselineResident = 0, peakAboveBaseline = 0;
  bool peakIsExact = false;        // false: the kernel would not reset the peak
  std::vector<std::uint8_t> json;  // kept for the references
};

std::map<tool::Preset, RunFigures>& figures() {
  static std::map<tool::Preset, RunFigures> all;
  return all;
}

// A generated phone of the preset's size, made before any measurement.
std::shared_ptr<platform::ProfilePlatform> phone(tool::Preset preset) {
  auto options = tool::presetOptions(preset);
  options.seed = 11;
  return std::make_shared<platform::ProfilePlatform>(tool::ProfileGenerator(options).generate());
}

RunFigures run(tool::Preset preset) {
  auto device = phone(preset);
  DataExtractorManager manager(device);

  RunFigures result;
  bench::ResidentMemory::releaseFreeHeap();
  result.baselineResident = bench::ResidentMemory::current();
  result.peakIsExact = bench::ResidentMemory::resetPeak();
  bench::StageClock clock;
  // Each stage ends with the peak it reached; the next starts a new one.
  const std::size_t baselineHeap = bench::AllocationCounter::current();
  bench::AllocationCounter::resetPeak();
  const auto endStage = [&](const char* name) {
    auto stage = clock.lap(name);
    stage.peakResident = bench::ResidentMemory::peak() - result.baselineResident;
    stage.peakHeap = bench::AllocationCounter::peak() - baselineHeap;
    bench::AllocationCounter::resetPeak();
    result.peakAboveBaseline = std::max(result.peakAboveBaseline, stage.peakResident);
    result.stages.push_back(std::move(stage));
    bench::ResidentMemory::resetPeak();
    clock.restart();
  };
  {
    PermissionHeplper::requestPermissions(*device);
    endStage("permissions");
    std::optional<DatasetDocument> document = manager.extractData();
    endStage("sources");
    const MappedBuffer json = writeJson(*document);
    document.reset();  // the run drops the tree once it is text
    result.jsonBytes = json.size();
    endStage("JSON");
    auto deflated = compress(json.bytes(), CompressionAlgorithm::zlib);
    result.deflateBytes = deflated->size();
    endStage("DEFLATE");
    const std::string text = base64Encode(*deflated);
    deflated.reset();
    result.base64Bytes = text.size();
    endStage("base64");
  }

  // The sources once more, one at a time, for their share of the extraction;
  // and the JSON of this second pass for the references (the same size, only
  // the header's times differ).
  DatasetDocument document;
  for (const auto& source : manager.extractors()) {
    clock.restart();
    document.push_back(source->extract());
    result.sources.push_back(clock.lap(source->dataSourceNameKey()));
  }
  const MappedBuffer json = writeJson(document);
  result.json.assign(json.bytes().begin(), json.bytes().end());
  return result;
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

// The CPU the run's own stages took on the calling thread, and DEFLATE's part.
std::pair<double, double> runCpu(const RunFigures& run) {
  double cpu = 0, deflateCpu = 0;
  for (const auto& stage : run.stages) {
    cpu += stage.cpuSeconds;
    if (stage.name == "DEFLATE") deflateCpu += stage.cpuSeconds;
  }
  return {cpu, deflateCpu};
}

// Rewrites the report's "pipeline" region from everything measured so far.
void publish() {
  std::ostringstream out;
  out << std::fixed << std::setprecision(1);
  out << PerformanceReport::machine() << "\n";
  for (const auto& [preset, run] : figures()) {
    const auto [cpu, deflateCpu] = runCpu(run);
    out << "### " << presetName(preset) << ": " << sizes(preset) << "\n\n"
        << "| stage | wall ms | thread CPU ms | share of run CPU | peak resident MB | peak heap MB "
           "|\n"
        << "|---|---:|---:|---:|---:|---:|\n";
    double wall = 0;
    for (const auto& stage : run.stages) {
      wall += stage.wallSeconds;
      out << "| " << stage.name << " | " << stage.wallSeconds * 1e3 << " | "
          << stage.cpuSeconds * 1e3 << " | " << 100 * stage.cpuSeconds / cpu << " % | "
          << megabytes(stage.peakResident) << " | " << megabytes(stage.peakHeap) << " |\n";
    }
    out << "| **whole run** | " << wall * 1e3 << " | " << cpu * 1e3 << " | 100 % | "
        << megabytes(run.peakAboveBaseline) << " | |\n\n";
    out << "Sources one at a time (a second pass; wall ms / CPU ms): ";
    for (std::size_t i = 0; i < run.sources.size(); ++i) {
      out << (i ? ", " : "") << run.sources[i].name << " " << run.sources[i].wallSeconds * 1e3
          << " / " << run.sources[i].cpuSeconds * 1e3;
    }
    out << ".\n\n"
        << std::setprecision(2) << "Sizes: JSON " << megabytes(run.jsonBytes) << " MB, DEFLATE "
        << megabytes(run.deflateBytes) << " MB (ratio "
        << static_cast<double>(run.jsonBytes) / static_cast<double>(run.deflateBytes)
        << "), base64 " << megabytes(run.base64Bytes) << " MB. Peak resident memory above the "
        << "baseline of " << megabytes(run.baselineResident)
        << " MB: " << megabytes(run.peakAboveBaseline) << " MB, "
        << static_cast<double>(run.peakAboveBaseline) / static_cast<double>(run.jsonBytes)
        << " times the JSON" << (run.peakIsExact ? "" : " (peak not resettable here: upper bound)")
        << ".\n\n"
        << std::setprecision(1);
    if (const auto it = references().find(preset); it != references().end()) {
      const auto& r = it->second;
      const auto row = [&](const char* name, double seconds, std::size_t bytes) {
        out << "| " << name << " | " << seconds * 1e3 << " | ";
        if (bytes) out << std::setprecision(2) << megabytes(bytes) << std::setprecision(1);
        out << " | " << 100 * seconds / r.ourDeflate << " % |\n";
      };
      out << "| on the same " << std::setprecision(2) << megabytes(run.jsonBytes)
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
      out << "Targets on this preset:\n\n| target | measured | held |\n|---|---:|---|\n"
          << std::setprecision(2) << "| peak memory at most 2.5 times the JSON | " << ratio
          << " times | " << (ratio <= 2.5 ? "yes" : "**no**") << " |\n"
          << std::setprecision(1) << "| everything but DEFLATE at most 25 % of the CPU | " << share
          << " % | " << (share <= 25 ? "yes" : "**no**") << " |\n\n";
    }
  }
  PerformanceReport::get().set("pipeline", out.str());
}

void BM_WholeRun(benchmark::State& state) {
  const auto preset = presets[state.range(0)];
  RunFigures result;
  for (auto _ : state) result = run(preset);
  const auto [cpu, deflateCpu] = runCpu(result);
  state.counters["json_MB"] = megabytes(result.jsonBytes);
  state.counters["deflate_MB"] = megabytes(result.deflateBytes);
  state.counters["base64_MB"] = megabytes(result.base64Bytes);
  state.counters["peak_MB"] = megabytes(result.peakAboveBaseline);
  state.counters["peak/json"] =
      static_cast<double>(result.peakAboveBaseline) / static_cast<double>(result.jsonBytes);
  state.counters["notDeflateCpu%"] = 100 * (cpu - deflateCpu) / cpu;
  state.SetLabel(presetName(preset));
  figures()[preset] = std::move(result);
  publish();
}
BENCHMARK(BM_WholeRun)->DenseRange(0, 2)->Iterations(1)->Unit(benchmark::kMillisecond);

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

const std::vector<std::uint8_t>& presetJson(benchmark::State& state) {
  const auto preset = presets[state.range(0)];
  if (!figures().count(preset)) figures()[preset] = run(preset);
  state.SetLabel(presetName(preset));
  state.SetBytesProcessed(0);
  return figures()[preset].json;
}

void reportReference(benchmark::State& state, std::pair<double, std::size_t> result,
                     double ReferenceFigures::*seconds, std::size_t ReferenceFigures::*bytes) {
  const auto& json = figures()[presets[state.range(0)]].json;
  auto& r = references()[presets[state.range(0)]];
  r.*seconds = result.first;
  if (bytes != nullptr) r.*bytes = result.second;
  state.SetBytesProcessed(static_cast<std::int64_t>(json.size() * state.iterations()));
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

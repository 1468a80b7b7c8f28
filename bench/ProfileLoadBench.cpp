// Loading a device profile: the same small phone with 50,000, 100,000 and
// 200,000 contacts (tavrin profile generate --preset small --contacts N),
// read from its text into a profile. The time per contact and per byte stays
// the same as the phone grows, and the fitted complexity is O(N); the parse
// the reader replaced took 11 s for the largest. For scale, the same text
// read into a JSON document by nlohmann's plain parser in the same run.

#include "generator/DeviceProfileWriter.hpp"
#include "generator/ProfileGenerator.hpp"
#include "platform/profile/DeviceProfileReader.hpp"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <map>
#include <sstream>

namespace tavrin {
namespace {

// The profile text of the phone with `contacts` contacts, made once.
const std::string& profileText(std::int64_t contacts) {
  static std::map<std::int64_t, std::string> texts;
  auto& text = texts[contacts];
  if (text.empty()) {
    auto options = tool::presetOptions(tool::Preset::small);
    options.contacts = static_cast<std::size_t>(contacts);
    std::ostringstream out;
    tool::writeDeviceProfile(tool::ProfileGenerator(options).generate(), out);
    text = out.str();
  }
  return text;
}

template <typename Read>
void measureLoad(benchmark::State& state, Read read) {
  const std::string& text = profileText(state.range(0));
  for (auto _ : state) read(text);
  state.SetComplexityN(state.range(0));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.counters["MB"] = static_cast<double>(text.size()) / 1e6;
}

void BM_ProfileLoad(benchmark::State& state) {
  measureLoad(state, [](const std::string& text) {
    benchmark::DoNotOptimize(platform::readDeviceProfile(text, "phone.json"));
  });
}

void BM_ProfileLoad_JsonDocumentForScale(benchmark::State& state) {
  measureLoad(state, [](const std::string& text) {
    benchmark::DoNotOptimize(nlohmann::json::parse(text));
  });
}

// Both at the same sizes, fitted to O(N).
void phoneSizes(benchmark::internal::Benchmark* run) {
  run->Arg(50'000)->Arg(100'000)->Arg(200'000);
  run->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);
}

BENCHMARK(BM_ProfileLoad)->Apply(phoneSizes);
BENCHMARK(BM_ProfileLoad_JsonDocumentForScale)->Apply(phoneSizes);

}  // namespace
}  // namespace tavrin

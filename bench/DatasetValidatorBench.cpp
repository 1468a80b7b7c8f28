// The sandbox's validation of an upload, step by step, on a large valid
// dataset: the whole decoding against nlohmann's parse alone, and the
// structure check of an already parsed document.
#include "DatasetValidator.hpp"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <tavrin/codec.hpp>

#include <fstream>

namespace tavrin::bench {
namespace {

using nlohmann::json;

// The test data's valid dataset grown to a large phone's size: 20,000
// contacts, 100,000 images and 5,000 events. About 30 MB of JSON.
const std::string& largeDatasetJson() {
  static const std::string text = [] {
    std::ifstream file(TAVRIN_TEST_DATA_DIR "/sandbox/valid-dataset.json");
    json document = json::parse(file);
    const auto grow = [&document](std::size_t section, json row, int count) {
      json& entries = document[section].begin().value();
      entries = json::array();
      for (int i = 0; i < count; ++i) entries.push_back(row);
    };
    const json contact = document[1]["Contacts"][0];
    json image = document[4]["Video"][0];
    image[1] = 1;
    image[8] = 48.8566;
    image[9] = 2.3522;
    grow(1, contact, 20000);
    grow(5, image, 100000);
    grow(8, document[8]["CalendarEvents"][0], 5000);
    return document.dump();
  }();
  return text;
}

std::string encode(const std::string& text) {
  return base64Encode(*deflate(std::vector<std::uint8_t>(text.begin(), text.end())));
}

void DecodeAndValidate(benchmark::State& state) {
  const std::string payload = encode(largeDatasetJson());
  const sandbox::DatasetValidator validator;
  for (auto _ : state) {
    auto decoded = validator.decode(payload);
    if (!decoded.valid()) state.SkipWithError(decoded.problem->c_str());
    benchmark::DoNotOptimize(decoded);
  }
  state.SetBytesProcessed(
      static_cast<std::int64_t>(state.iterations() * largeDatasetJson().size()));
}
BENCHMARK(DecodeAndValidate)->Unit(benchmark::kMillisecond);

void NlohmannParseOnly(benchmark::State& state) {
  const std::string& text = largeDatasetJson();
  for (auto _ : state) benchmark::DoNotOptimize(json::parse(text));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(NlohmannParseOnly)->Unit(benchmark::kMillisecond);

void ValidateParsedDocument(benchmark::State& state) {
  const json document = json::parse(largeDatasetJson());
  for (auto _ : state) benchmark::DoNotOptimize(sandbox::DatasetValidator::validate(document));
  state.SetBytesProcessed(
      static_cast<std::int64_t>(state.iterations() * largeDatasetJson().size()));
}
BENCHMARK(ValidateParsedDocument)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tavrin::bench

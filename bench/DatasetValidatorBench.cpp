// The sandbox's validation of an upload on a large valid dataset: the whole
// decoding, and its JSON steps (simdjson's parse and the structure check)
// against nlohmann's parse alone. And hostile uploads of 60 KB, which inflate
// to 30 to 50 MB of JSON and must each be refused within milliseconds, beside
// a valid upload of the same size.
#include "DatasetValidator.hpp"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <tavrin/codec.hpp>

#include <fstream>
#include <functional>
#include <random>

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

void CheckJsonOnly(benchmark::State& state) {
  const sandbox::DatasetValidator validator;
  for (auto _ : state) benchmark::DoNotOptimize(validator.check(largeDatasetJson()));
  state.SetBytesProcessed(
      static_cast<std::int64_t>(state.iterations() * largeDatasetJson().size()));
}
BENCHMARK(CheckJsonOnly)->Unit(benchmark::kMillisecond);

// A payload of 30 to 60 KB of base64: a unit repeated as often as fits, in
// shapes that once took the parser quadratic time or that push its limits
// (a thousandfold inflation), or the test data's valid dataset with as many
// contacts as fit.
std::string sixtyKilobytePayload(std::int64_t shape) {
  const auto payloadOf = [](const std::function<std::string(std::size_t)>& text) {
    std::string payload = encode(text(1));
    for (std::size_t count = 2;; count *= 2) {
      std::string larger = encode(text(count));
      if (larger.size() > 60 * 1024) return payload;
      payload = std::move(larger);
    }
  };
  const auto repeated = [](std::string open, std::string_view unit, std::string_view close) {
    return [=](std::size_t count) {
      std::string text = open;
      for (std::size_t i = 0; i < count; ++i) text += unit;
      return text + std::string(close);
    };
  };
  switch (shape) {
    case 0: return payloadOf(repeated("[", R"({"":0},)", "0]"));  // many small objects
    case 1: return payloadOf(repeated("[", "[],", "0]"));         // many empty lists
    case 2: return payloadOf(repeated("[", "0,", "0]"));          // many numbers
    case 3: return payloadOf(repeated(R"([")", "x", "\xff\"]"));  // a long string, not UTF-8
    default: {
      std::ifstream file(TAVRIN_TEST_DATA_DIR "/sandbox/valid-dataset.json");
      const json document = json::parse(file);
      return payloadOf([&document](std::size_t count) {
        json grown = document;
        json& contacts = grown[1]["Contacts"];
        contacts = json::array();
        // Each contact with an identifier of its own, as a phone's store
        // gives them: identical rows would compress like hostile ones.
        std::mt19937_64 random(count);
        for (std::size_t i = 0; i < count; ++i) {
          contacts.push_back(document[1]["Contacts"][0]);
          contacts.back()[0] = std::to_string(random()) + ":ABPerson";
        }
        return grown.dump();
      });
    }
  }
}

// The second argument is the ratio of inflation allowed: the default, or 2^30,
// which leaves only the limit on the inflated size, as before the ratio.
void DecodeSixtyKilobytePayload(benchmark::State& state) {
  const std::string payload = sixtyKilobytePayload(state.range(0));
  const sandbox::DatasetValidator validator(sandbox::DatasetValidator::defaultMaxJsonSize,
                                            sandbox::DatasetValidator::defaultMaxJsonValues,
                                            static_cast<std::size_t>(state.range(1)));
  const bool hostile = state.range(0) < 4;
  std::size_t jsonSize = 0;
  for (auto _ : state) {
    auto decoded = validator.decode(payload);
    if (decoded.valid() == hostile) state.SkipWithError(decoded.problem.value_or("valid").c_str());
    jsonSize = decoded.jsonSize;
    benchmark::DoNotOptimize(decoded);
  }
  state.SetLabel((hostile ? "hostile, " : "valid (reference), ") +
                 (jsonSize == 0 ? "refused while inflating"
                                : std::to_string(jsonSize >> 10) + " KiB of JSON"));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * jsonSize));
}
BENCHMARK(DecodeSixtyKilobytePayload)
    ->ArgsProduct({benchmark::CreateDenseRange(0, 4, 1),
                   {sandbox::DatasetValidator::defaultMaxInflationRatio, std::int64_t{1} << 30}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tavrin::bench

// The four photo-library sources and the JSON writer on a phone with 100,000
// photos and 2,000 albums: time and memory per asset.
#include "AllocationCounter.hpp"

#include "dataset/JsonWriter.hpp"
#include "extractors/ImageExtractor.hpp"
#include "extractors/MediaAlbumExtractor.hpp"
#include "extractors/UnknownFileExtractor.hpp"
#include "extractors/VideoExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

#include <benchmark/benchmark.h>

#include <unistd.h>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>

namespace tavrin {
namespace {

constexpr int assetCount = 100'000;
constexpr int albumCount = 1'200, smartAlbumCount = 300, momentCount = 500;

class ProfileText {
 public:
  void raw(std::string_view text) { _text.append(text); }
  void number(double value) {
    char digits[32];
    _text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
  }
  void identifier(const char* kind, int index) {
    char text[64];
    // The shape of a photo library's local identifiers.
    const int length =
        std::snprintf(text, sizeof text, "\"%08X-%04X-4C4E-9B7A-%012X/L0/%s\"",
                      static_cast<unsigned>(index) * 2654435761u,
                      static_cast<unsigned>(index) & 0xFFFF, static_cast<unsigned>(index), kind);
    _text.append(text, static_cast<std::size_t>(length));
  }
  std::string take() { return std::move(_text); }

 private:
  std::string _text;
};

// A library in the proportions of a phone's: mostly photos, some videos, a few
// audio and unknown assets; most taken with a position; albums that list a few
// dozen assets, smart albums more, moments that partition the library.
std::string generateProfile() {
  std::mt19937_64 random(20240101);
  std::uniform_real_distribution<double> unit(0, 1);
  ProfileText out;
  out.raw(R"({"device":{"systemVersion":"14.2"},"permissions":{"photoLibrary":{"status":3}},)");
  out.raw(R"("photos":{"assets":[)");
  for (int i = 0; i < assetCount; ++i) {
    const double draw = unit(random);
    const int mediaType = draw < 0.85 ? 1 : draw < 0.95 ? 2 : draw < 0.98 ? 0 : 3;
    out.raw(i == 0 ? "{" : ",{");
    out.raw(R"("localIdentifier":)");
    out.identifier("001", i);
    out.raw(R"(,"mediaType":)");
    out.number(mediaType);
    out.raw(mediaType == 1 ? R"(,"mediaSubtypes":8,"pixelWidth":4032,"pixelHeight":3024)"
                           : R"(,"pixelWidth":1920,"pixelHeight":1080)");
    out.raw(R"(,"sourceType":1,"creationDate":)");
    const double created = 1.4e9 + unit(random) * 2.5e8;
    out.number(created);
    out.raw(R"(,"modificationDate":)");
    out.number(created + unit(random) * 1e6);
    if (unit(random) < 0.6) {
      out.raw(R"(,"location":{"latitude":)");
      out.number(unit(random) * 180 - 90);
      out.raw(R"(,"longitude":)");
      out.number(unit(random) * 360 - 180);
      out.raw("}");
    }
    out.raw(R"(,"duration":)");
    out.number(mediaType == 1 ? 0 : unit(random) * 600);
    out.raw(unit(random) < 0.05 ? R"(,"isFavorite":true})" : "}");
  }
  out.raw(R"(],"collections":[)");
  int next = 0;
  const auto collection = [&](int type, int subtype, int size) {
    out.raw(next == 0 ? "{" : ",{");
    out.raw(R"("localIdentifier":)");
    out.identifier("002", next);
    out.raw(R"(,"assetCollectionType":)");
    out.number(type);
    out.raw(R"(,"assetCollectionSubtype":)");
    out.number(subtype);
    if (type == 3) {
      out.raw(R"(,"startDate":1500000000,"endDate":1500086400,)"
              R"("approximateLocation":{"latitude":48.8566,"longitude":2.3522},)"
              R"("localizedLocationNames":["Paris","Ile-de-France"])");
    }
    out.raw(R"(,"assetIdentifiers":[)");
    for (int k = 0; k < size; ++k) {
      if (k > 0) out.raw(",");
      out.identifier("001", (next * 97 + k) % assetCount);
    }
    out.raw("]}");
    ++next;
  };
  for (int i = 0; i < albumCount; ++i) collection(1, 2, 20);
  for (int i = 0; i < smartAlbumCount; ++i) collection(2, 200 + i % 18, 100);
  for (int i = 0; i < momentCount; ++i) collection(3, 0, assetCount / momentCount);
  out.raw("]}}");
  return out.take();
}

// The generated phone, loaded once; and what holding it costs.
struct Phone {
  std::shared_ptr<platform::Platform> platform;
  std::size_t profileBytes = 0;

  static Phone& get() {
    static Phone phone = load();
    return phone;
  }

 private:
  static Phone load() {
    const auto path = std::filesystem::temp_directory_path() /
                      ("tavrin-media-bench-" + std::to_string(getpid()) + ".json");
    std::ofstream(path, std::ios::binary) << generateProfile();
    const std::size_t before = bench::AllocationCounter::current();
    Phone phone;
    phone.platform = platform::loadDeviceProfile(path.string());
    phone.profileBytes = bench::AllocationCounter::current() - before;
    std::filesystem::remove(path);
    return phone;
  }
};

DatasetDocument extractPhotoSections(platform::Platform& platform) {
  const auto rotation = std::make_shared<const LocationUtil>(137);
  MediaAlbumExtractor albums("MediaAlbums", rotation, platform);
  VideoExtractor videos("Video", rotation, platform);
  ImageExtractor images("Images", rotation, platform);
  UnknownFileExtractor unknownFiles("UnknownFiles", rotation, platform);
  DatasetDocument document;
  for (IDataExtractor* source :
       std::initializer_list<IDataExtractor*>{&albums, &videos, &images, &unknownFiles}) {
    // As the manager keeps a finished section.
    Element section = source->extract();
    section.shrinkToFit();
    document.push_back(std::move(section));
  }
  return document;
}

void reportPerAsset(benchmark::State& state, std::size_t peakBytes, std::size_t documentBytes) {
  const auto perAsset = [](std::size_t bytes) {
    return benchmark::Counter(static_cast<double>(bytes) / assetCount);
  };
  state.counters["time/asset"] = benchmark::Counter(
      assetCount, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  state.counters["peakB/asset"] = perAsset(peakBytes);
  state.counters["docB/asset"] = perAsset(documentBytes);
  state.counters["profileB/asset"] = perAsset(Phone::get().profileBytes);
}

std::size_t documentBytes(const DatasetDocument& document) {
  std::size_t bytes = 0;
  for (const Element& section : document) bytes += section.ChildElements().capacityBytes();
  return bytes;
}

// The four sections, as the manager collects them.
void BM_PhotoSources(benchmark::State& state) {
  platform::Platform& platform = *Phone::get().platform;
  std::size_t peak = 0, held = 0;
  for (auto _ : state) {
    bench::AllocationCounter::resetPeak();
    const std::size_t before = bench::AllocationCounter::current();
    DatasetDocument document = extractPhotoSections(platform);
    peak = bench::AllocationCounter::peak() - before;
    held = documentBytes(document);
    benchmark::DoNotOptimize(document.data());
  }
  reportPerAsset(state, peak, held);
}
BENCHMARK(BM_PhotoSources)->Unit(benchmark::kMillisecond);

// The four sections and their JSON text, which the run holds at once. The
// text lives in its own memory mapping, outside the counted heap; its written
// pages are added to the heap's peak.
void BM_PhotoSourcesToJson(benchmark::State& state) {
  platform::Platform& platform = *Phone::get().platform;
  std::size_t peak = 0, held = 0, jsonBytes = 0;
  for (auto _ : state) {
    bench::AllocationCounter::resetPeak();
    const std::size_t before = bench::AllocationCounter::current();
    DatasetDocument document = extractPhotoSections(platform);
    const MappedBuffer json = writeJson(document);
    jsonBytes = json.size();
    peak = bench::AllocationCounter::peak() - before + jsonBytes;
    held = documentBytes(document);
    benchmark::DoNotOptimize(json.data());
  }
  reportPerAsset(state, peak, held);
  state.counters["jsonB/asset"] = benchmark::Counter(static_cast<double>(jsonBytes) / assetCount);
}
BENCHMARK(BM_PhotoSourcesToJson)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tavrin

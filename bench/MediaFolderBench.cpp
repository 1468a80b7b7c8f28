// The Linux photo library over 10,000 generated media files of headers only:
// the first scan, which reads every file's headers, and a later scan, which
// reads only the folders, beside a bare walk of the same folders.
#include "PerformanceReport.hpp"

#include "platform/linux/FolderPhotoLibrary.hpp"

#include <tavrin/platform/PhotoLibrary.hpp>

#include <benchmark/benchmark.h>
#include <gst/gst.h>
#include <sys/stat.h>
#include <unistd.h>
#include <exiv2/exiv2.hpp>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

namespace tavrin {
namespace {

namespace fs = std::filesystem;

constexpr int albumCount = 100;
constexpr int jpegCount = 8'500, videoCount = 1'000, recordingCount = 500;

// A JPEG of headers only: start of image, the frame header of a 4032 × 3024
// picture and end of image, with Exif (date, offset, position) added by exiv2.
void writeJpegHeaders(const fs::path& file) {
  const unsigned char bytes[] = {0xFF, 0xD8, 0xFF, 0xC0, 0x00, 0x11, 0x08, 0x0B,
                                 0xD0, 0x0F, 0xC0, 0x03, 0x01, 0x22, 0x00, 0x02,
                                 0x11, 0x01, 0x03, 0x11, 0x01, 0xFF, 0xD9};
  std::ofstream(file, std::ios::binary).write(reinterpret_cast<const char*>(bytes), sizeof bytes);
  const auto image = Exiv2::ImageFactory::open(file.string());
  image->readMetadata();
  image->exifData()["Exif.Photo.DateTimeOriginal"] = "2021:06:15 14:30:00";
  image->exifData()["Exif.Photo.OffsetTimeOriginal"] = "+02:00";
  image->exifData()["Exif.GPSInfo.GPSLatitude"] = "48/1 51/1 2376/100";
  image->exifData()["Exif.GPSInfo.GPSLatitudeRef"] = "N";
  image->exifData()["Exif.GPSInfo.GPSLongitude"] = "2/1 21/1 792/100";
  image->exifData()["Exif.GPSInfo.GPSLongitudeRef"] = "E";
  image->writeMetadata();
}

bool record(const std::string& pipeline, const fs::path& file) {
  GstElement* run =
      gst_parse_launch((pipeline + " ! filesink location=" + file.string()).c_str(), nullptr);
  if (run == nullptr) return false;
  gst_element_set_state(run, GST_STATE_PLAYING);
  GstBus* bus = gst_element_get_bus(run);
  GstMessage* end = gst_bus_timed_pop_filtered(
      bus, 20 * GST_SECOND, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
  const bool written = end != nullptr && GST_MESSAGE_TYPE(end) == GST_MESSAGE_EOS;
  if (end != nullptr) gst_message_unref(end);
  gst_object_unref(bus);
  gst_element_set_state(run, GST_STATE_NULL);
  gst_object_unref(run);
  return written;
}

// The library's folders, made once: one file of each kind made, then copied
// into albums of a hundred files.
struct MediaTree {
  fs::path root = fs::temp_directory_path() / ("tavrin-media-folders-" + std::to_string(getpid()));
  bool ready = false;

  static MediaTree& get() {
    static MediaTree tree;
    return tree;
  }
  ~MediaTree() { fs::remove_all(root); }

 private:
  MediaTree() {
    gst_init(nullptr, nullptr);
    fs::create_directories(root);
    const fs::path jpeg = root / "template.jpg", video = root / "template.mkv",
                   recording = root / "template.wav";
    writeJpegHeaders(jpeg);
    if (!record("videotestsrc num-buffers=10 ! video/x-raw,width=64,height=48,framerate=10/1 ! "
                "jpegenc ! matroskamux",
                video) ||
        !record("audiotestsrc num-buffers=10 ! wavenc", recording)) {
      return;
    }
    int index = 0;
    for (const auto& [from, count] :
         {std::pair{jpeg, jpegCount}, {video, videoCount}, {recording, recordingCount}}) {
      for (int i = 0; i < count; ++i, ++index) {
        const fs::path album = root / ("album-" + std::to_string(index % albumCount));
        fs::create_directories(album);
        fs::copy_file(from, album / ("file-" + std::to_string(index) + from.extension().string()));
      }
    }
    for (const fs::path& made : {jpeg, video, recording}) fs::remove(made);
    ready = true;
  }
};

// The library as the photo sources read it in one run: each media type, then
// the albums.
std::int64_t readAsTheSourcesDo(platform::PhotoLibrary& library) {
  std::int64_t visited = 0;
  for (const std::int64_t type : {1, 2, 0, 3}) {
    library.enumerateAssets(type, [&](const platform::Asset&) { ++visited; });
  }
  library.enumerateCollections(1, platform::PhotoLibrary::anySubtype,
                               [&](const platform::AssetCollection&) { ++visited; });
  return visited;
}

std::unique_ptr<platform::PhotoLibrary> makeLibrary() {
  auto library = std::make_unique<platform::FolderPhotoLibrary>(
      platform::StoreConsent("photos", std::make_shared<platform::HostConsent>(
                                           [](const std::string&) { return true; }, fs::path())),
      [] { return std::vector<fs::path>{MediaTree::get().root}; });
  library->requestAuthorization([](std::int64_t) {});
  return library;
}

// Seconds per iteration of the three benchmarks, for docs/performance.md.
struct Figures {
  double firstScan = 0, rescan = 0, bareWalk = 0;

  static Figures& get() {
    static Figures figures;
    return figures;
  }
  void report() const {
    std::ostringstream out;
    out << "| 10,000 media files of headers only (8,500 JPEG, 1,000 Matroska, 500 WAV) | seconds "
           "|\n"
        << "|---|---|\n"
        << "| first scan: every header read (`BM_MediaFoldersFirstScan`) | " << firstScan << " |\n"
        << "| later scan, no file changed (`BM_MediaFoldersRescan`) | " << rescan << " |\n"
        << "| reference: one bare walk with a stat per file (`BM_MediaFoldersBareWalk`) | "
        << bareWalk << " |\n\n"
        << bench::PerformanceReport::machine();
    bench::PerformanceReport::get().set("media-folders", out.str());
  }
};

// Runs `body` once per iteration and keeps its mean time in `figure`.
template <typename Body>
void timed(benchmark::State& state, double& figure, Body body) {
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) body();
  figure = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() /
           static_cast<double>(state.iterations());
  Figures::get().report();
}

void report(benchmark::State& state, std::int64_t visited) {
  state.counters["files"] = jpegCount + videoCount + recordingCount;
  state.counters["rows"] = static_cast<double>(visited);
  if (visited != jpegCount + videoCount + recordingCount + albumCount) {
    state.SkipWithError("the library did not list every file and album");
  }
}

// Every file's headers read: a library made afresh for each iteration.
void BM_MediaFoldersFirstScan(benchmark::State& state) {
  if (!MediaTree::get().ready) return state.SkipWithError("GStreamer could not write the files");
  std::int64_t visited = 0;
  timed(state, Figures::get().firstScan, [&] { visited = readAsTheSourcesDo(*makeLibrary()); });
  report(state, visited);
}
BENCHMARK(BM_MediaFoldersFirstScan)->Unit(benchmark::kSecond)->Iterations(1);

// A later run: the folders walked again, no file changed.
void BM_MediaFoldersRescan(benchmark::State& state) {
  if (!MediaTree::get().ready) return state.SkipWithError("GStreamer could not write the files");
  const auto library = makeLibrary();
  readAsTheSourcesDo(*library);
  std::int64_t visited = 0;
  timed(state, Figures::get().rescan, [&] { visited = readAsTheSourcesDo(*library); });
  report(state, visited);
}
BENCHMARK(BM_MediaFoldersRescan)->Unit(benchmark::kMillisecond);

// The reference: one bare walk of the same folders, a stat of every file.
void BM_MediaFoldersBareWalk(benchmark::State& state) {
  if (!MediaTree::get().ready) return state.SkipWithError("GStreamer could not write the files");
  timed(state, Figures::get().bareWalk, [] {
    std::int64_t files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(MediaTree::get().root)) {
      struct stat status {};
      files += stat(entry.path().c_str(), &status) == 0 && S_ISREG(status.st_mode) ? 1 : 0;
    }
    benchmark::DoNotOptimize(files);
  });
}
BENCHMARK(BM_MediaFoldersBareWalk)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tavrin

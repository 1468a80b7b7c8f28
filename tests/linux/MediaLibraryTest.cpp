// The Linux platform reads a photo library made of real files in the user's
// media folders (written here with GStreamer and exiv2) into the same rows as a
// device profile that describes the same pictures, videos and recordings.

#include "extractors/ImageExtractor.hpp"
#include "extractors/MediaAlbumExtractor.hpp"
#include "extractors/UnknownFileExtractor.hpp"
#include "extractors/VideoExtractor.hpp"
#include "platform/linux/FolderPhotoLibrary.hpp"
#include "platform/linux/LinuxPlatform.hpp"

#include "SectionJson.hpp"

#include <fcntl.h>
#include <gst/gst.h>
#include <sys/stat.h>
#include <exiv2/exiv2.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tavrin {
namespace {

namespace fs = std::filesystem;

const fs::path home = std::getenv("HOME");

// Runs a GStreamer pipeline that writes `file` to its end; a Matroska muxer
// named "mux" dates the recording at `created` (seconds since 1970).
void record(const std::string& pipeline, const fs::path& file, double created = 0) {
  fs::create_directories(file.parent_path());
  GError* error = nullptr;
  GstElement* run =
      gst_parse_launch((pipeline + " ! filesink location=" + file.string()).c_str(), &error);
  ASSERT_NE(run, nullptr) << error->message;
  if (GstElement* mux = gst_bin_get_by_name(GST_BIN(run), "mux")) {
    GDateTime* date = g_date_time_new_from_unix_utc(static_cast<gint64>(created));
    GDateTime* exact =
        g_date_time_add(date, static_cast<GTimeSpan>((created - std::floor(created)) * 1e6));
    g_object_set(mux, "creation-time", exact, nullptr);
    g_date_time_unref(exact);
    g_date_time_unref(date);
    gst_object_unref(mux);
  }
  gst_element_set_state(run, GST_STATE_PLAYING);
  GstBus* bus = gst_element_get_bus(run);
  GstMessage* end = gst_bus_timed_pop_filtered(
      bus, 20 * GST_SECOND, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
  ASSERT_NE(end, nullptr);
  EXPECT_EQ(GST_MESSAGE_TYPE(end), GST_MESSAGE_EOS) << pipeline;
  gst_message_unref(end);
  gst_object_unref(bus);
  gst_element_set_state(run, GST_STATE_NULL);
  gst_object_unref(run);
}

void tag(const fs::path& file, const std::vector<std::pair<std::string, std::string>>& values) {
  const auto image = Exiv2::ImageFactory::open(file.string());
  image->readMetadata();
  for (const auto& [key, value] : values) {
    if (key.rfind("Xmp.", 0) == 0) {
      image->xmpData()[key] = value;
    } else {
      image->exifData()[key] = value;
    }
  }
  image->writeMetadata();
}

void touch(const fs::path& file, std::time_t modified) {
  const timespec times[2] = {{modified, 0}, {modified, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
}

constexpr const char* picture = "videotestsrc num-buffers=1 ! video/x-raw,width=80,height=60";

// The files of linux-media-library.json: by path below the home directory.
void makeLibrary() {
  const fs::path beach = home / "Pictures/Holiday/beach.jpg";
  record(std::string(picture) + " ! jpegenc", beach);
  tag(beach, {{"Exif.Photo.DateTimeOriginal", "2021:06:15 14:30:00"},
              {"Exif.Photo.OffsetTimeOriginal", "+02:00"},
              {"Exif.Photo.SubSecTimeOriginal", "25"},
              {"Exif.GPSInfo.GPSLatitude", "48/1 51/1 2376/100"},
              {"Exif.GPSInfo.GPSLatitudeRef", "N"},
              {"Exif.GPSInfo.GPSLongitude", "2/1 21/1 792/100"},
              {"Exif.GPSInfo.GPSLongitudeRef", "W"},
              {"Xmp.xmp.Rating", "5"}});
  touch(beach, 1623800000);
  const fs::path screenshot = home / "Pictures/.screenshot.png";
  record(std::string(picture) + " ! pngenc", screenshot);
  touch(screenshot, 1600000000);
  const fs::path clip = home / "Videos/Holiday/clip.mkv";
  record(
      "videotestsrc num-buffers=10 ! video/x-raw,width=64,height=48,framerate=10/1 ! jpegenc "
      "! matroskamux name=mux",
      clip, 1623931200.5);
  touch(clip, 1623900000);
  const fs::path memo = home / "Videos/memo.wav";
  record("audiotestsrc num-buffers=10 samplesperbuffer=4410 ! audio/x-raw,rate=44100 ! wavenc",
         memo);
  touch(memo, 1624000000);
  std::ofstream(home / "Pictures/Holiday/notes.txt") << "not a picture";
  // Damaged files are listed with the facts the file system gives: a JPEG
  // whose Exif block ends early, and a video of that text.
  static constexpr char damagedBytes[] =
      "\xFF\xD8\xFF\xE1\x7F\xFF"
      "Exif\0\0MM\0*\0\0\0\x08\xFF\xFF";
  for (const char* damaged : {"Pictures/broken.jpg", "Videos/broken.mkv"}) {
    std::ofstream(home / damaged, std::ios::binary).write(damagedBytes, sizeof damagedBytes - 1);
    touch(home / damaged, 1500000000);
  }
}

// The profile, its identifiers (paths below the home directory) turned into
// those the library gives the same files and folders.
std::shared_ptr<platform::Platform> profileOfTheSameFiles() {
  auto profile = nlohmann::json::parse(
      std::ifstream(TAVRIN_TEST_DATA_DIR "/profiles/linux-media-library.json"));
  const auto identify = [](nlohmann::json& path) {
    path = platform::mediaIdentifier(home / path.get<std::string>());
  };
  for (auto& asset : profile["photos"]["assets"]) identify(asset["localIdentifier"]);
  for (auto& album : profile["photos"]["collections"]) {
    identify(album["localIdentifier"]);
    for (auto& asset : album["assetIdentifiers"]) identify(asset);
  }
  const fs::path copy = home / "profile.json";
  std::ofstream(copy) << profile;
  return platform::loadDeviceProfile(copy);
}

std::vector<nlohmann::json> photoSections(platform::Platform& phone) {
  const auto rotation = std::make_shared<const LocationUtil>(135);
  return {sectionValues(ImageExtractor("Images", rotation, phone).extract()),
          sectionValues(VideoExtractor("Video", rotation, phone).extract()),
          sectionValues(UnknownFileExtractor("UnknownFiles", rotation, phone).extract()),
          sectionValues(MediaAlbumExtractor("MediaAlbums", rotation, phone).extract())};
}

TEST(MediaLibrary, RowsMatchTheProfileOfTheSameFiles) {
  gst_init(nullptr, nullptr);
  ASSERT_NO_FATAL_FAILURE(makeLibrary());
  platform::LinuxPlatform phone("media-test", {},
                                [](const std::string& store) { return store == "photos"; });
  std::int64_t status = 0;
  phone.photos().requestAuthorization([&](std::int64_t answer) { status = answer; });
  ASSERT_EQ(status, platform::AuthorizationStatus::authorized);
  const auto sections = photoSections(phone);
  EXPECT_EQ(sections, photoSections(*profileOfTheSameFiles()));
  // Every read walks the folders afresh.
  fs::remove(home / "Videos/memo.wav");
  EXPECT_EQ(photoSections(phone).at(2), nlohmann::json::array());
}

// The folders user-dirs.dirs names (linux/user-dirs.json, for the home
// /home/user), the defaults where it names none or something that is neither
// below $HOME nor absolute, without the home itself or a folder twice.
TEST(MediaLibrary, FoldersAreTheUsersPictureAndVideoDirectories) {
  const fs::path config = home / "config-case";
  for (const auto& c :
       nlohmann::json::parse(std::ifstream(TAVRIN_TEST_DATA_DIR "/linux/user-dirs.json"))) {
    fs::remove_all(config);
    fs::create_directories(config);
    if (!c.at("userDirs").is_null())
      std::ofstream(config / "user-dirs.dirs") << c.at("userDirs").get<std::string>();
    const std::vector<fs::path> folders(c.at("folders").begin(), c.at("folders").end());
    EXPECT_EQ(platform::mediaFolders("/home/user", config), folders) << c.at("userDirs");
  }
}

}  // namespace
}  // namespace tavrin

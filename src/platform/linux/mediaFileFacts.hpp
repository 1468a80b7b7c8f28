#pragma once

#include <tavrin/platform/PhotoLibrary.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tavrin::platform {

// What a media file's headers say about it. Values its headers do not hold
// keep their defaults.
struct MediaFileFacts {
  std::int64_t pixelWidth = 0;
  std::int64_t pixelHeight = 0;
  std::optional<double> creationDate;  // Seconds since 1970.
  std::optional<Coordinate> location;
  double duration = 0;  // Seconds.
  bool isFavorite = false;
};

// An image's facts from its Exif and XMP metadata (exiv2): pixel size, the
// original date (in its recorded offset, else in the local time zone), the GPS
// position, and a favourite when it is rated five stars. A file exiv2 cannot
// read gives the defaults.
MediaFileFacts imageFacts(const std::string& path);

// Reads the container headers of videos and sound recordings (GStreamer's
// discoverer): duration, the first video stream's size, the recorded date and
// position. One reader serves many files, one after another.
class MediaHeaderReader {
 public:
  MediaHeaderReader();
  ~MediaHeaderReader();
  MediaHeaderReader(const MediaHeaderReader&) = delete;
  MediaHeaderReader& operator=(const MediaHeaderReader&) = delete;

  // The facts of one file; the defaults when it cannot be read.
  MediaFileFacts read(const std::string& path);

 private:
  struct Discoverer;
  std::unique_ptr<Discoverer> _discoverer;
};

}  // namespace tavrin::platform

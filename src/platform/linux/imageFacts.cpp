#include "platform/linux/mediaFileFacts.hpp"

#include <exiv2/exiv2.hpp>

#include <cmath>
#include <ctime>
#include <mutex>

namespace tavrin::platform {
namespace {

const Exiv2::Value* exifValue(const Exiv2::ExifData& exif, const char* key) {
  const auto found = exif.findKey(Exiv2::ExifKey(key));
  return found == exif.end() ? nullptr : &found->value();
}

std::string exifText(const Exiv2::ExifData& exif, const char* key) {
  const auto* value = exifValue(exif, key);
  return value != nullptr ? value->toString() : std::string();
}

// "+02:00" or "-05:30" as seconds east of UTC.
std::optional<long> utcOffset(const std::string& text) {
  int hours = 0, minutes = 0;
  char sign = 0;
  if (std::sscanf(text.c_str(), "%c%2d:%2d", &sign, &hours, &minutes) != 3) return std::nullopt;
  if ((sign != '+' && sign != '-') || hours > 14 || minutes > 59) return std::nullopt;
  const long seconds = hours * 3600L + minutes * 60L;
  return sign == '-' ? -seconds : seconds;
}

// The moment the picture was taken. Exif writes it as local wall time
// ("2021:06:15 14:30:00"); the offset tag, where the camera wrote one, places
// it, and otherwise the machine's own time zone does, as photo viewers do.
std::optional<double> originalDate(const Exiv2::ExifData& exif) {
  std::tm wall{};
  const std::string text = exifText(exif, "Exif.Photo.DateTimeOriginal");
  if (std::sscanf(text.c_str(), "%4d:%2d:%2d %2d:%2d:%2d", &wall.tm_year, &wall.tm_mon,
                  &wall.tm_mday, &wall.tm_hour, &wall.tm_min, &wall.tm_sec) != 6 ||
      wall.tm_year < 1900 || wall.tm_mon < 1 || wall.tm_mon > 12 || wall.tm_mday < 1 ||
      wall.tm_mday > 31 || wall.tm_hour > 23 || wall.tm_min > 59 || wall.tm_sec > 60) {
    return std::nullopt;
  }
  wall.tm_year -= 1900;
  wall.tm_mon -= 1;
  double seconds = 0;
  if (const auto offset = utcOffset(exifText(exif, "Exif.Photo.OffsetTimeOriginal"))) {
    seconds = static_cast<double>(timegm(&wall) - *offset);
  } else {
    wall.tm_isdst = -1;
    const std::time_t local = std::mktime(&wall);
    if (local == -1) return std::nullopt;
    seconds = static_cast<double>(local);
  }
  // Hundredths or thousandths of a second, as digits after an implied point.
  const std::string fraction = exifText(exif, "Exif.Photo.SubSecTimeOriginal");
  if (!fraction.empty() && fraction.size() <= 9 &&
      fraction.find_first_not_of("0123456789") == std::string::npos) {
    seconds += std::stod("0." + fraction);
  }
  return seconds;
}

// Degrees, minutes and seconds as three rationals, negative towards `negative`.
std::optional<double> gpsDegrees(const Exiv2::ExifData& exif, const char* key, const char* refKey,
                                 char negative) {
  const auto* value = exifValue(exif, key);
  if (value == nullptr || value->count() != 3) return std::nullopt;
  const auto part = [value](long i) {
    const auto [numerator, denominator] = value->toRational(i);
    return static_cast<double>(numerator) / denominator;
  };
  const double degrees = part(0) + part(1) / 60 + part(2) / 3600;
  if (!std::isfinite(degrees)) return std::nullopt;
  const std::string ref = exifText(exif, refKey);
  return !ref.empty() && ref.front() == negative ? -degrees : degrees;
}

std::optional<Coordinate> gpsPosition(const Exiv2::ExifData& exif) {
  const auto latitude =
      gpsDegrees(exif, "Exif.GPSInfo.GPSLatitude", "Exif.GPSInfo.GPSLatitudeRef", 'S');
  const auto longitude =
      gpsDegrees(exif, "Exif.GPSInfo.GPSLongitude", "Exif.GPSInfo.GPSLongitudeRef", 'W');
  if (!latitude || !longitude || std::abs(*latitude) > 90 || std::abs(*longitude) > 180) {
    return std::nullopt;
  }
  return Coordinate{*latitude, *longitude};
}

// Five stars, the rating photo managers (Shotwell, digiKam, darktable) write
// to XMP and Windows to Exif, is what such programs call a favourite.
bool ratedFavourite(const Exiv2::Image& image) {
  const auto& xmp = image.xmpData();
  const auto rating = xmp.findKey(Exiv2::XmpKey("Xmp.xmp.Rating"));
  if (rating != xmp.end()) return rating->toLong() >= 5;
  const auto* exifRating = exifValue(image.exifData(), "Exif.Image.Rating");
  return exifRating != nullptr && exifRating->toLong() >= 5;
}

}  // namespace

MediaFileFacts imageFacts(const std::string& path) {
  // exiv2 reports damaged files on stderr unless told not to; the library
  // writes no log.
  static std::once_flag quiet;
  std::call_once(quiet, [] { Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute); });
  MediaFileFacts facts;
  try {
    const auto image = Exiv2::ImageFactory::open(path, false);
    image->readMetadata();
    facts.pixelWidth = image->pixelWidth();
    facts.pixelHeight = image->pixelHeight();
    facts.creationDate = originalDate(image->exifData());
    facts.location = gpsPosition(image->exifData());
    facts.isFavorite = ratedFavourite(*image);
  } catch (const std::exception&) {
    // Not an image exiv2 knows, or a damaged one: it is listed without facts.
  }
  return facts;
}

}  // namespace tavrin::platform

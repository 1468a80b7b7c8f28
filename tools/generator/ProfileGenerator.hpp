#pragma once

#include "GeneratorRandom.hpp"

#include "platform/profile/DeviceProfile.hpp"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tavrin::tool {

// What a generated phone holds. Every permission is granted, so that a
// collection visits all of it.
struct GeneratorOptions {
  std::uint64_t seed = 1;     // one seed, one phone, byte for byte
  std::size_t contacts = 0;   // address-book contacts
  std::size_t groups = 0;     // contact groups
  std::size_t calendars = 0;  // event calendars (and half as many reminder lists)
  std::size_t events = 0;     // event rows of a collection: each occurrence counts
  std::size_t reminders = 0;  // reminders
  std::size_t assets = 0;     // photo-library assets
  std::size_t albums = 0;     // albums, smart albums and moments
  std::size_t devices = 0;    // capture devices
  bool markers = false;       // every personal text a unique marker (see markerPrefix)
};

// The sizes of three phones: a new one, an everyday one, and the largest a
// host should expect.
enum class Preset { small, typical, large };
GeneratorOptions presetOptions(Preset preset);
std::optional<Preset> presetNamed(std::string_view name);

// With markers, every personal text is "PII-" KIND "-" NUMBER, unique in the
// profile (KIND names the field, for example "givenName" or "country"), except
// custom labels: each distinct label is one marker "PII-label-N", used wherever
// the label is, so labels still repeat as on a phone. Texts that hold only
// whitespace stay as they are: they carry nothing personal.
inline constexpr std::string_view markerPrefix = "PII-";

// The instant every generated phone's clock starts at: 2024-05-01 10:00 UTC.
inline constexpr double generatedClockStart = 1714557600.0;

// Builds a device profile of a phone of the given size, deterministic for the
// seed: realistic proportions of media types and label kinds, names in many
// scripts, empty and blank texts, absent dates and locations, recurring events
// and organizers. Events and occurrences all fall inside the window a
// collection at the profile's clock reads, so the "CalendarEvents" section has
// exactly `events` rows.
class ProfileGenerator {
 public:
  explicit ProfileGenerator(const GeneratorOptions& options);
  platform::DeviceProfile generate();

 private:
  void device(platform::DeviceProfile& profile);
  void contacts(platform::DeviceProfile& profile);
  platform::Contact contact(GeneratorRandom& random);
  void calendars(platform::DeviceProfile& profile);
  void events(platform::DeviceProfile& profile);
  void reminders(platform::DeviceProfile& profile);
  void assets(platform::DeviceProfile& profile);
  void collections(platform::DeviceProfile& profile);
  void captureDevices(platform::DeviceProfile& profile);

  // A personal text: the marker of `kind` when markers are asked for and the
  // text has content, else the text itself.
  std::string personal(std::string_view kind, std::string_view text);
  // With probability `p`, a personal text from `pool`, now and then blank;
  // otherwise empty.
  template <std::size_t N>
  std::string maybeText(GeneratorRandom& random, std::string_view kind, double p,
                        const std::string_view (&pool)[N]);
  // A label: predefined from `predefined` (kept as it is), custom (a marker
  // when markers are asked for) or absent, in the given proportions.
  template <std::size_t N>
  std::optional<std::string> label(GeneratorRandom& random, const std::string_view (&predefined)[N],
                                   double customShare, double absentShare);

  GeneratorOptions _options;
  std::uint64_t _markerCount = 0;
  std::map<std::string, std::string, std::less<>> _labelMarkers;
};

}  // namespace tavrin::tool

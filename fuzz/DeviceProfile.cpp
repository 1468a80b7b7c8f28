// Device profiles are read from files people write: any bytes must give a
// platform or a DeviceProfileError, never a crash or a hang, and a profile
// that loads must answer its event queries (recurrences included) in bounded
// time.

#include "platform/profile/DeviceProfileReader.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tavrin::platform;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  try {
    const auto profile = readDeviceProfile(text, "fuzz.json");
    // Every event's calendar is authorized, so the whole expansion runs.
    auto granted = profile;
    granted.permissions[static_cast<std::size_t>(Permission::calendarEvents)].status =
        AuthorizationStatus::authorized;
    ProfilePlatform platform(granted);
    std::vector<std::string> calendars;
    for (const auto& c : granted.eventCalendars) calendars.push_back(c.calendarIdentifier);
    for (const double start : {-1e12, 0.0, 1.6e9, 1e15}) {
      platform.events().events(start, start + 4 * 366 * 86400.0, calendars);
    }
  } catch (const DeviceProfileError&) {
  }
  return 0;
}

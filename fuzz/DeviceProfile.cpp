// Device profiles are read from files people write: any bytes must give a
// platform or a DeviceProfileError, never a crash, a hang or a runaway use of
// memory. The first three bytes choose small limits for the rest, so that
// every limit is reached; a first byte of 255 keeps the parse's default
// limits, so that large profiles are read whole. A refusal must print as one
// short, printable line, and a profile that loads must answer each event
// query within its rows.

#include "platform/profile/DeviceProfileReader.hpp"
#include "platform/profile/ProfilePlatform.hpp"
#include "platform/profile/printableExcerpt.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tavrin::platform;
  if (size < 3) return 0;
  ProfileLimits limits;
  if (data[0] != 255) {
    limits.depth = 1 + data[0] % 16;
    limits.values = 1 + std::size_t{data[1]} * 16;
    limits.containers = 1 + std::size_t{data[1]} * 4;
  }
  limits.eventRows = 1 + std::uint64_t{data[2]} * 40;
  const std::string_view text(reinterpret_cast<const char*>(data) + 3, size - 3);
  try {
    auto profile = readDeviceProfile(text, "fuzz.json", limits);
    // Every event's calendar is authorized, so the whole expansion runs.
    profile.permissions[static_cast<std::size_t>(Permission::calendarEvents)].status =
        AuthorizationStatus::authorized;
    std::vector<std::string> calendars;
    for (const auto& c : profile.calendars.events) calendars.push_back(c.calendarIdentifier);
    ProfilePlatform platform(std::move(profile));
    for (const double start : {-1e12, 0.0, 1.6e9, 1e15}) {
      const auto events = platform.events().events(start, start + 1e9, calendars);
      if (events.size() > limits.eventRows) std::abort();
    }
  } catch (const DeviceProfileError& error) {
    const std::string_view printed = error.what();
    if (printed.size() > 2048 || printableExcerpt(printed, printed.size()) != printed) std::abort();
  }
  return 0;
}

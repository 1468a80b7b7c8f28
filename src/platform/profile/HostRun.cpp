#include "platform/profile/HostRun.hpp"

#include "platform/profile/DeviceProfileReader.hpp"
#include "platform/profile/ProfileFields.hpp"

namespace tavrin::platform {

namespace {

// The name a host's description goes by in errors, in place of a file's.
const std::string hostName = "host platform";

// The store in `slot`, made by `make` on first use.
template <typename Store, typename Make>
Store& once(std::optional<Store>& slot, Make&& make) {
  if (!slot) make();
  return *slot;
}

}  // namespace

HostRun::HostRun(HostDescription& host, Permissions& permissions, CompletionThreads& threads,
                 std::function<void(const DeviceProfileError&)> failed)
    : _host(host), _permissions(permissions), _threads(threads), _failed(std::move(failed)) {}

void HostRun::ask(std::initializer_list<const char*> sections) {
  std::set<std::string, std::less<>> asked;
  try {
    for (const char* section : sections) {
      if (_asked.count(section)) continue;
      _asked.emplace(section);
      asked.emplace(section);
      if (const auto json = _host.describe(section)) {
        readDeviceProfileMember(section, *json, _profile, hostName);
      }
    }
    checkDeviceProfile(_profile, hostName);
  } catch (const DeviceProfileError& error) {
    // The members just read go back to empty, so that no store holds a value
    // the checks refused.
    DeviceProfile empty;
    describe(
        [&](Member member, auto& field, auto& fallback) {
          if (asked.count(member.name)) field = std::move(fallback);
        },
        _profile, empty);
    _failed(error);
  }
}

ProfileDeviceInfo& HostRun::device() {
  return once(_device, [&] {
    ask({"device"});
    _device.emplace(_profile.device);
  });
}

ProfileContactStore& HostRun::contacts() {
  return once(_contacts, [&] {
    ask({"contacts"});
    _contacts.emplace(std::move(_profile.contacts), _permissions);
  });
}

ProfileEventStore& HostRun::events() {
  return once(_events, [&] {
    // Recurring events are expanded in the device's time zone.
    ask({"device", "calendars", "events", "reminders"});
    _events.emplace(std::move(_profile.calendars), std::move(_profile.events),
                    std::move(_profile.reminders), _profile.device.timeZone.identifier,
                    _permissions, _threads);
  });
}

ProfilePhotoLibrary& HostRun::photos() {
  return once(_photos, [&] {
    ask({"photos"});
    _photos.emplace(std::move(_profile.photos), _permissions);
  });
}

ProfileCaptureDeviceSource& HostRun::captureDevices() {
  return once(_captureDevices, [&] {
    ask({"captureDevices"});
    _captureDevices.emplace(std::move(_profile.captureDevices));
  });
}

ProfileLocationServices& HostRun::location() {
  return once(_location, [&] {
    ask({"location"});
    _location.emplace(_profile.location);
  });
}

ProfileClock& HostRun::clock() {
  return once(_clock, [&] {
    ask({"clock"});
    _clock.emplace(_profile.clock);
  });
}

ProfileRandomSource& HostRun::random() {
  return once(_random, [&] {
    ask({"random"});
    _random.emplace(std::move(_profile.random));
  });
}

}  // namespace tavrin::platform

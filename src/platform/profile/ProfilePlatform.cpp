#include "platform/profile/ProfilePlatform.hpp"

#include "platform/profile/DeviceProfileReader.hpp"

namespace tavrin::platform {

// The profile's parts move into the stores: a large phone is held once.
ProfilePlatform::ProfilePlatform(DeviceProfile profile)
    : _permissions(profile.permissions, _threads),
      _device(std::move(profile.device)),
      _contacts(std::move(profile.contacts), _permissions),
      _events(std::move(profile.calendars), std::move(profile.events), std::move(profile.reminders),
              _device.timeZoneIdentifier(), _permissions, _threads),
      _photos(std::move(profile.photos), _permissions),
      _captureDevices(std::move(profile.captureDevices)),
      _location(profile.location),
      _clock(profile.clock),
      _random(std::move(profile.random)) {}

ProfilePlatform::~ProfilePlatform() {
  // The completions use the stores; they finish before any store goes.
  _threads.joinAll();
}

std::shared_ptr<ProfilePlatform> ProfilePlatform::fromText(std::string_view text,
                                                           const std::string& name) {
  return std::make_shared<ProfilePlatform>(readDeviceProfile(text, name));
}

std::shared_ptr<ProfilePlatform> ProfilePlatform::load(const std::string& path) {
  return std::make_shared<ProfilePlatform>(readDeviceProfileFile(path));
}

std::shared_ptr<Platform> loadDeviceProfile(const std::string& path) {
  return ProfilePlatform::load(path);
}

}  // namespace tavrin::platform

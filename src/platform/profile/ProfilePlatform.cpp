#include "platform/profile/ProfilePlatform.hpp"

#include "platform/profile/DeviceProfileReader.hpp"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tavrin::platform {

ProfilePlatform::ProfilePlatform(const DeviceProfile& profile)
    : _permissions(profile.permissions, _threads),
      _device(profile.device),
      _contacts(profile.contacts, _permissions),
      _events(profile, _permissions, _threads),
      _photos(profile, _permissions),
      _captureDevices(profile.captureDevices),
      _location(profile.location),
      _clock(profile.clock),
      _random(profile.draws) {}

ProfilePlatform::~ProfilePlatform() {
  // The completions use the stores; they finish before any store goes.
  _threads.joinAll();
}

std::shared_ptr<ProfilePlatform> ProfilePlatform::fromText(std::string_view text,
                                                           const std::string& name) {
  return std::make_shared<ProfilePlatform>(readDeviceProfile(text, name));
}

std::shared_ptr<ProfilePlatform> ProfilePlatform::load(const std::string& path) {
  const auto unreadable = [&path](const std::string& why) {
    return DeviceProfileError(path, "", "cannot read the file: " + why);
  };
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) throw unreadable("it is a directory");
  std::ifstream file(path, std::ios::binary);
  if (!file) throw unreadable(std::strerror(errno));
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (file.bad()) throw unreadable("read error");
  return fromText(text, path);
}

std::shared_ptr<Platform> loadDeviceProfile(const std::string& path) {
  return ProfilePlatform::load(path);
}

}  // namespace tavrin::platform

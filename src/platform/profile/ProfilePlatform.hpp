#pragma once

#include "platform/profile/CompletionThreads.hpp"
#include "platform/profile/DeviceProfile.hpp"
#include "platform/profile/PermissionState.hpp"
#include "platform/profile/ProfileCaptureDeviceSource.hpp"
#include "platform/profile/ProfileClock.hpp"
#include "platform/profile/ProfileContactStore.hpp"
#include "platform/profile/ProfileDeviceInfo.hpp"
#include "platform/profile/ProfileEventStore.hpp"
#include "platform/profile/ProfileLocationServices.hpp"
#include "platform/profile/ProfilePhotoLibrary.hpp"
#include "platform/profile/ProfileRandomSource.hpp"

#include <memory>
#include <string>
#include <string_view>

namespace tavrin::platform {

// A whole phone described by a device profile (docs/device-profile.md).
// Prompts and the reminder fetch complete on threads of the platform's own,
// which it joins before it is destroyed. Besides the ports it tells tests
// which prompts were made and what the last contact enumeration asked for.
class ProfilePlatform final : public Platform {
 public:
  explicit ProfilePlatform(DeviceProfile profile);
  // Waits for every completion still running. Must not be called from one.
  ~ProfilePlatform() override;

  // Reads the profile file at `path`. Throws DeviceProfileError.
  static std::shared_ptr<ProfilePlatform> load(const std::string& path);
  // Reads a profile from its text; `name` stands for the file in errors.
  // Throws DeviceProfileError.
  static std::shared_ptr<ProfilePlatform> fromText(std::string_view text, const std::string& name);

  DeviceInfo& device() override { return _device; }
  ContactStore& contacts() override { return _contacts; }
  EventStore& events() override { return _events; }
  PhotoLibrary& photos() override { return _photos; }
  CaptureDeviceSource& captureDevices() override { return _captureDevices; }
  LocationServices& location() override { return _location; }
  Clock& clock() override { return _clock; }
  RandomSource& random() override { return _random; }

  // The prompts made so far, in order, with the threads they completed on.
  std::vector<PromptRecord> promptLog() const { return _permissions.log(); }
  // The keys the last contact enumeration asked for.
  std::vector<std::string> lastKeysToFetch() const { return _contacts.lastKeysToFetch(); }

 private:
  CompletionThreads _threads;
  PermissionState _permissions;
  ProfileDeviceInfo _device;
  ProfileContactStore _contacts;
  ProfileEventStore _events;
  ProfilePhotoLibrary _photos;
  ProfileCaptureDeviceSource _captureDevices;
  ProfileLocationServices _location;
  ProfileClock _clock;
  ProfileRandomSource _random;
};

}  // namespace tavrin::platform

#pragma once

#include "platform/profile/DeviceProfile.hpp"
#include "platform/profile/Permissions.hpp"
#include "platform/profile/ProfileCaptureDeviceSource.hpp"
#include "platform/profile/ProfileClock.hpp"
#include "platform/profile/ProfileContactStore.hpp"
#include "platform/profile/ProfileDeviceInfo.hpp"
#include "platform/profile/ProfileEventStore.hpp"
#include "platform/profile/ProfileLocationServices.hpp"
#include "platform/profile/ProfilePhotoLibrary.hpp"
#include "platform/profile/ProfileRandomSource.hpp"

#include <functional>
#include <initializer_list>
#include <optional>
#include <set>
#include <string>

namespace tavrin::platform {

// What a host application tells about its phone. Called on the run's thread.
class HostDescription {
 public:
  virtual ~HostDescription() = default;
  // The raw status of a permission now.
  virtual std::int64_t status(Permission permission) = 0;
  // Shows the prompt; `deliver` runs once, from any thread, now or later.
  virtual void prompt(Permission permission, Permissions::Delivery deliver) = 0;
  // The JSON text of the device profile's member `section`; nothing when the
  // host does not describe it.
  virtual std::optional<std::string> describe(const std::string& section) = 0;
};

// The permissions as the host answers them.
class HostPermissions final : public Permissions {
 public:
  HostPermissions(HostDescription& host, CompletionThreads& threads)
      : Permissions(threads), _host(host) {}
  std::int64_t status(Permission permission) const override { return _host.status(permission); }
  void prompt(Permission permission, Delivery deliver) override {
    _host.prompt(permission, std::move(deliver));
  }

 private:
  HostDescription& _host;
};

// What the host said during one run: each member of the profile asked for at
// most once, when a store is first used, and the store made from it.
class HostRun {
 public:
  // `failed` learns of each malformed member, which then stays empty.
  HostRun(HostDescription& host, Permissions& permissions, CompletionThreads& threads,
          std::function<void(const DeviceProfileError&)> failed);

  ProfileDeviceInfo& device();
  ProfileContactStore& contacts();
  ProfileEventStore& events();
  ProfilePhotoLibrary& photos();
  ProfileCaptureDeviceSource& captureDevices();
  ProfileLocationServices& location();
  ProfileClock& clock();
  ProfileRandomSource& random();

 private:
  // Asks the host for the members not asked yet and reads them, checked
  // against the members read before.
  void ask(std::initializer_list<const char*> sections);

  HostDescription& _host;
  Permissions& _permissions;
  CompletionThreads& _threads;
  std::function<void(const DeviceProfileError&)> _failed;
  DeviceProfile _profile;
  std::set<std::string, std::less<>> _asked;
  std::optional<ProfileDeviceInfo> _device;
  std::optional<ProfileContactStore> _contacts;
  std::optional<ProfileEventStore> _events;
  std::optional<ProfilePhotoLibrary> _photos;
  std::optional<ProfileCaptureDeviceSource> _captureDevices;
  std::optional<ProfileLocationServices> _location;
  std::optional<ProfileClock> _clock;
  std::optional<ProfileRandomSource> _random;
};

}  // namespace tavrin::platform

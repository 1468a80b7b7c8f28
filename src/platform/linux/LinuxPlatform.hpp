#pragma once

#include "platform/linux/LinuxCaptureDeviceSource.hpp"
#include "platform/linux/LinuxContactStore.hpp"
#include "platform/linux/LinuxDeviceInfo.hpp"
#include "platform/linux/LinuxEventStore.hpp"
#include "platform/linux/LinuxLocationServices.hpp"
#include "platform/linux/LinuxPhotoLibrary.hpp"
#include "platform/linux/StoreConsent.hpp"
#include "platform/linux/SystemClock.hpp"
#include "platform/linux/SystemRandomSource.hpp"

#include <tavrin/platform/Platform.hpp>

#include <memory>

namespace tavrin::platform {

// The Linux machine the library runs on: its real device facts, the stores the
// build can read (access to them decided by the host's `consent`, whose answers
// are kept in the application's consent file under the state home), and the
// personal data stores it does not have reported as restricted.
class LinuxPlatform final : public Platform {
 public:
  explicit LinuxPlatform(std::string applicationIdentifier, const LinuxSystemFiles& files = {},
                         ConsentCallback consent = {});

  DeviceInfo& device() override { return _device; }
  ContactStore& contacts() override { return *_contacts; }
  EventStore& events() override { return *_events; }
  PhotoLibrary& photos() override { return *_photos; }
  CaptureDeviceSource& captureDevices() override { return *_captureDevices; }
  LocationServices& location() override { return *_location; }
  Clock& clock() override { return _clock; }
  RandomSource& random() override { return _random; }

 private:
  LinuxDeviceInfo _device;
  std::unique_ptr<ContactStore> _contacts;
  std::unique_ptr<EventStore> _events;
  std::unique_ptr<PhotoLibrary> _photos;
  std::unique_ptr<CaptureDeviceSource> _captureDevices;
  std::unique_ptr<LocationServices> _location;
  SystemClock _clock;
  SystemRandomSource _random;
};

}  // namespace tavrin::platform

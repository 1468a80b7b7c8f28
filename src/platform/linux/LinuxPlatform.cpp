#include "platform/linux/LinuxPlatform.hpp"

#include "platform/linux/hostApplication.hpp"
#include "platform/linux/userDirectories.hpp"

namespace tavrin::platform {

LinuxPlatform::LinuxPlatform(std::string applicationIdentifier, const LinuxSystemFiles& files,
                             ConsentCallback consent)
    : _device(applicationIdentifier, files),
      _captureDevices(makeLinuxCaptureDeviceSource()),
      _location(makeLinuxLocationServices()) {
  const auto host = std::make_shared<HostConsent>(
      std::move(consent),
      HostConsent::fileFor(stateHome(), hostApplication(std::move(applicationIdentifier))));
  _contacts = makeLinuxContactStore(host);
  _photos = makeLinuxPhotoLibrary(host);
  _events = makeLinuxEventStore(host);
}

std::shared_ptr<Platform> makeLinuxPlatform(std::string applicationIdentifier) {
  return std::make_shared<LinuxPlatform>(std::move(applicationIdentifier));
}

std::shared_ptr<Platform> makeLinuxPlatform(std::string applicationIdentifier,
                                            ConsentCallback consent) {
  return std::make_shared<LinuxPlatform>(std::move(applicationIdentifier), LinuxSystemFiles{},
                                         std::move(consent));
}

}  // namespace tavrin::platform

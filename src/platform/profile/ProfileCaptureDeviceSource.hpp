#pragma once

#include "platform/profile/DeviceProfile.hpp"

namespace tavrin::platform {

// The capture devices of a profile, in profile order; a null entry stands for
// something in the list that is not a capture device.
class ProfileCaptureDeviceSource final : public CaptureDeviceSource {
 public:
  explicit ProfileCaptureDeviceSource(
      std::optional<std::vector<std::optional<CaptureDevice>>> devices)
      : _devices(std::move(devices)) {}

  std::optional<std::vector<std::optional<CaptureDevice>>> devices() override { return _devices; }

 private:
  const std::optional<std::vector<std::optional<CaptureDevice>>> _devices;
};

}  // namespace tavrin::platform

#pragma once

#include <tavrin/platform/CaptureDeviceSource.hpp>

namespace tavrin::platform {

// Capture hardware is not described on Linux the way the data source reads it
// (formats, lenses, zoom), so the platform reports a list with no devices.
class LinuxCaptureDeviceSource final : public CaptureDeviceSource {
 public:
  std::optional<std::vector<std::optional<CaptureDevice>>> devices() override {
    return std::vector<std::optional<CaptureDevice>>{};
  }
};

}  // namespace tavrin::platform

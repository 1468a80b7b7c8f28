#include "platform/linux/LinuxCaptureDeviceSource.hpp"

namespace tavrin::platform {
namespace {

// Built without V4L2, the library knows no camera: a list with no devices.
class NoCaptureDevices final : public CaptureDeviceSource {
 public:
  std::optional<std::vector<std::optional<CaptureDevice>>> devices() override {
    return std::vector<std::optional<CaptureDevice>>{};
  }
};

}  // namespace

std::unique_ptr<CaptureDeviceSource> makeLinuxCaptureDeviceSource() {
  return std::make_unique<NoCaptureDevices>();
}

}  // namespace tavrin::platform

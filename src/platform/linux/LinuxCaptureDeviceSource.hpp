#pragma once

#include <tavrin/platform/CaptureDeviceSource.hpp>

#include <memory>

namespace tavrin::platform {

// The cameras of the Linux machine: its V4L2 capture devices when the library
// is built with V4L2, else a list with no devices.
std::unique_ptr<CaptureDeviceSource> makeLinuxCaptureDeviceSource();

}  // namespace tavrin::platform

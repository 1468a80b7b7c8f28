#pragma once

#include <tavrin/platform/LocationServices.hpp>

namespace tavrin::platform {

// Linux offers no system location service, compass or beacon ranging.
class LinuxLocationServices final : public LocationServices {
 public:
  bool significantLocationChangeMonitoringAvailable() override { return false; }
  bool headingAvailable() override { return false; }
  bool isRangingAvailable() override { return false; }
  bool locationServicesEnabled() override { return false; }
};

}  // namespace tavrin::platform

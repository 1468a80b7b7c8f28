#pragma once

#include "platform/profile/DeviceProfile.hpp"

namespace tavrin::platform {

// The location-service capabilities of a profile, as given.
class ProfileLocationServices final : public LocationServices {
 public:
  explicit ProfileLocationServices(const ProfileLocation& location) : _location(location) {}

  bool significantLocationChangeMonitoringAvailable() override {
    return _location.significantLocationChangeMonitoringAvailable;
  }
  bool headingAvailable() override { return _location.headingAvailable; }
  bool isRangingAvailable() override { return _location.isRangingAvailable; }
  bool locationServicesEnabled() override { return _location.locationServicesEnabled; }

 private:
  const ProfileLocation _location;
};

}  // namespace tavrin::platform

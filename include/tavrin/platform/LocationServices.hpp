#pragma once

namespace tavrin::platform {

/// Capabilities of the location services; none needs an authorization.
class LocationServices {
 public:
  virtual ~LocationServices() = default;

  virtual bool significantLocationChangeMonitoringAvailable() = 0;  ///< Significant-change monitoring.
  virtual bool headingAvailable() = 0;           ///< A compass heading can be reported.
  virtual bool isRangingAvailable() = 0;         ///< Beacons can be ranged.
  virtual bool locationServicesEnabled() = 0;   ///< Location services are on system-wide.
};

}  // namespace tavrin::platform

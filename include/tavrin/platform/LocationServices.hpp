#pragma once

namespace tavrin::platform {

/// Capabilities of the location services; none needs an authorization.
class LocationServices {
 public:
  virtual ~LocationServices() = default;

  /// Significant location changes can be monitored.
  virtual bool significantLocationChangeMonitoringAvailable() = 0;
  /// A compass heading can be reported.
  virtual bool headingAvailable() = 0;
  /// Beacons can be ranged.
  virtual bool isRangingAvailable() = 0;
  /// Location services are on system-wide.
  virtual bool locationServicesEnabled() = 0;
};

}  // namespace tavrin::platform

#pragma once

#include "dataset/PlatformExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

namespace tavrin {

// "GeoInfo": the four capability flags of the location services. Reads no
// position and needs no permission.
class GeoDataExtractor : public PlatformExtractor<IDataExtractor> {
 public:
  using PlatformExtractor::PlatformExtractor;

  Element extract() override {
    Element element(_dataSourceNameKey);
    platform::LocationServices& location = _platform.location();
    element.append(location.significantLocationChangeMonitoringAvailable());
    element.append(location.headingAvailable());
    element.append(location.isRangingAvailable());
    element.append(location.locationServicesEnabled());
    return element;
  }
};

}  // namespace tavrin

#pragma once

#include "dataset/IDataExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

namespace tavrin {

// "GeoInfo": the four capability flags of the location services. Reads no
// position and needs no permission.
class GeoDataExtractor : public IDataExtractor {
 public:
  GeoDataExtractor(std::string dataSourceNameKey, platform::Platform& platform)
      : _dataSourceNameKey(std::move(dataSourceNameKey)), _platform(platform) {}

  const std::string& dataSourceNameKey() const override { return _dataSourceNameKey; }
  Element extract() override {
    Element element(_dataSourceNameKey);
    platform::LocationServices& location = _platform.location();
    element.append(location.significantLocationChangeMonitoringAvailable());
    element.append(location.headingAvailable());
    element.append(location.isRangingAvailable());
    element.append(location.locationServicesEnabled());
    return element;
  }

 private:
  std::string _dataSourceNameKey;
  platform::Platform& _platform;
};

}  // namespace tavrin

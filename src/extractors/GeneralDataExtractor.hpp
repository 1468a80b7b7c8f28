#pragma once

#include "dataset/IDataExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

namespace tavrin {

// "GeneralData": 31 facts of the device, its system, storage, memory, locale,
// time zone and carrier. A fact the platform cannot give is null; the section
// never holds an error entry.
class GeneralDataExtractor : public IDataExtractor {
 public:
  GeneralDataExtractor(std::string dataSourceNameKey, platform::Platform& platform)
      : _dataSourceNameKey(std::move(dataSourceNameKey)), _platform(platform) {}

  const std::string& dataSourceNameKey() const override { return _dataSourceNameKey; }
  Element extract() override;

 private:
  std::string _dataSourceNameKey;
  platform::Platform& _platform;
};

}  // namespace tavrin

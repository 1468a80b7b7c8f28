#pragma once

#include "dataset/IDataExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

#include <cstddef>
#include <string>

namespace tavrin {

// The "CaptureDevice" source: one 49-value row per camera or microphone,
// describing it as capture hardware. It needs no permission and records no
// error.
class CaptureDeviceExtractor : public IDataExtractor {
 public:
  static constexpr std::size_t rowLength = 49;

  CaptureDeviceExtractor(std::string name, platform::Platform& platform);

  const std::string& dataSourceNameKey() const override { return _dataSourceNameKey; }
  Element extract() override;

  // The row of one device. A value the running system does not offer yet is
  // null and is not read; the row always has `rowLength` values.
  Row makeDeviceRow(const platform::CaptureDevice& device) const;

 private:
  const std::string _dataSourceNameKey;
  platform::Platform& _platform;
};

}  // namespace tavrin
